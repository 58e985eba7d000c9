// SPDX-License-Identifier: GPL-2.0-only
// Every section of the record, whole.
#include "tests/unit/config/Sections.h"

#include "tests/unit/Unit.h"

struct Section {
    Import import;
    std::string xml;
    std::string bytes; // two hexadecimal digits each, or `..`
};

// The last has neither importer nor element: what lies behind the others.
static std::vector<Section> ReadSections() {
    std::ifstream file(SECTIONS);
    std::vector<Section> sections;
    auto importer = kImporters.begin();
    for (std::string line; std::getline(file, line);)
        if (const size_t arrow = line.find("=> "); arrow != std::string::npos) { // no comment
            importer = std::find_if(importer, kImporters.end(), [](Import each) { return each; });
            sections.push_back({importer == kImporters.end() ? nullptr : *importer++,
                                line.substr(0, arrow), line.substr(arrow + 3)});
        }
    return sections;
}

// Imports into a record full of `pattern`, in which the three power flags are set: those an import
// keeps. Afterwards it must hold `bytes` at `offset`, and nothing else may have changed.
static void ExpectImport(Import import, const std::string& xml, int result, char pattern,
                         const std::string& bytes = "", size_t offset = 0) {
    const Element element(xml);
    DeviceParaRecord record;
    memset(&record, pattern, sizeof(record));
    EXPECT_EQ((Task().*import)(element.Get(), &record), result) << xml;
    std::string expected(sizeof(record), pattern);
    for (size_t i = 0; i < bytes.size(); i += 2)
        if (bytes[i] != '.')
            expected[offset + i / 2] =
                static_cast<char>(std::stoi(bytes.substr(i, 2), nullptr, 16));
    const std::string found(reinterpret_cast<const char*>(&record), sizeof(record));
    const auto wrong = std::mismatch(found.begin(), found.end(), expected.begin()).first;
    EXPECT_TRUE(wrong == found.end()) << "CBB/Config/: byte " << wrong - found.begin()
                                      << ", section at " << offset << ": " << xml;
}

TEST(Sections, EveryFieldAndNoOtherByte) {
    size_t offset = 0;
    for (const Section& section : ReadSections()) {
        if (section.import) {
            ExpectImport(section.import, section.xml, 0, '\xE1', section.bytes, offset);
            std::string otherCase = section.xml;
            for (size_t at = 0; (at = otherCase.find("FD_", at)) != std::string::npos;)
                otherCase.replace(at, 3, "fd_");
            ExpectImport(section.import, otherCase, 0, '\xFE', section.bytes, offset);
        }
        offset += section.bytes.size() / 2;
    }
    EXPECT_EQ(offset, sizeof(DeviceParaRecord))
        << "tests/unit/config/Sections.cpp or sections.txt describes another record";
}

TEST(Sections, ARowNeedsAnIndex) {
    int tables = 0;
    for (const Section& section : ReadSections()) {
        if (!section.import)
            break;
        ExpectImport(section.import, "", -1, '\xE1');
        ExpectImport(section.import, "<s><other><row_0/></other></s>", 0, '\xE1');
        const size_t row = section.xml.find("<row");
        if (row == std::string::npos)
            continue;
        ++tables;
        const size_t name = row + strlen("<row"), digits = section.xml.find(' ', name) - name;
        for (const std::string index : {"", "_", "_10", "_-1"}) {
            const Element element(std::string(section.xml).replace(name, digits, index));
            const bool refused = digits == 2 || (digits == 3 && index.size() < 2);
            EXPECT_EQ((Task().*section.import)(element.Get(), nullptr), refused ? -1 : 0)
                << index << " in " << section.xml;
        }
    }
    EXPECT_EQ(tables, 13);
}

// The rows of the IP cameras are printed; one beyond the one camera leaves the periods their turn,
// a malformed one does not.
TEST(Sections, IpcRowsArePrinted) {
    Task task;
    const auto import = [&task](const std::string& begin) {
        const Element element(begin + "<stFunTPeriod><p_-1 ucFD_Valid='1'/><p_06 other='y' "
                                      "strFD_Wday='x11111111' strFD_StartT='junk' strFD_EndT='7'/>"
                                      "</stFunTPeriod></s>");
        return Told([&] { return task.Import_Ipc(element.Get(), nullptr); });
    };
    EXPECT_EQ(import("<s><stChnIpc><c/></stChnIpc>"), "-1 ");
    EXPECT_EQ(import("<s a='u'><stChnIpc><c_0 uiFD_IP='a'/><c_1 uiFD_IP='b'/></stChnIpc>"),
              "0 Value: uiFD_IP=a\nValue: other=y\nValue: strFD_Wday=x11111111\n"
              "Value: strFD_StartT=junk\nValue: strFD_EndT=7\n");
    const FunTPeriodPara& read = task.m_stPara.stIpc.stFunTPeriod[6];
    EXPECT_EQ(std::tuple(read.strFD_Wday, read.strFD_StartT, read.strFD_EndT),
              std::tuple(0x7E, 0U, 7 * 3600U));
}

// SPDX-License-Identifier: GPL-2.0-only
// Every section of the record, whole.
#include "tests/unit/config/Sections.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>

namespace {

// Both have the three power flags set, which an import keeps.
constexpr unsigned char kPatterns[] = {0xE1, 0xFE};

struct Section {
    Import import;
    std::string xml;
    std::string bytes; // two hexadecimal digits each, or `..`
};

// The last has neither importer nor element: what lies behind the others.
std::vector<Section> ReadSections() {
    std::ifstream file(SECTIONS);
    std::vector<Section> sections;
    const auto next = [&] {
        std::string line;
        while (std::getline(file, line) && line[0] == '#')
            ;
        return line;
    };
    for (const Import& import : Importers())
        if (import) {
            const std::string xml = next();
            sections.push_back({import, xml, next()});
        }
    sections.push_back({nullptr, "", next()});
    return sections;
}

// Imports into a record full of `pattern`. Afterwards it must hold `bytes` at `offset`, and nothing
// else may have changed.
void ExpectImport(const Import& import, const std::string& xml, int result, unsigned char pattern,
                  const std::string& bytes = "", size_t offset = 0) {
    const Element element(xml);
    T task;
    DeviceParaRecord record;
    memset(&record, pattern, sizeof(record));
    EXPECT_EQ(import(task, element.Get(), &record), result) << xml;
    std::string expected(sizeof(record), static_cast<char>(pattern));
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
            ExpectImport(section.import, section.xml, 0, kPatterns[0], section.bytes, offset);
            std::string otherCase = section.xml;
            for (size_t at = 0; (at = otherCase.find("FD_", at)) != std::string::npos;)
                otherCase.replace(at, 3, "fd_");
            ExpectImport(section.import, otherCase, 0, kPatterns[1], section.bytes, offset);
        }
        offset += section.bytes.size() / 2;
    }
    EXPECT_EQ(offset, sizeof(DeviceParaRecord))
        << "tests/unit/config/Sections.cpp or sections.txt describes another record";
}

TEST(Sections, NothingIsRead) {
    // By the digits of an index in that table, without which there are 0.
    const struct {
        size_t digitsLeast, digitsMost;
        const char* row;
        int result;
    } cases[] = {{1, 2, "r", -1},
                 {1, 2, "r_", -1},
                 {1, 1, "r_10", -1},
                 {1, 1, "r_-1", -1},
                 {2, 2, "r_-1", 0}};
    int tables = 0;
    for (const Section& section : ReadSections()) {
        if (!section.import)
            break;
        ExpectImport(section.import, "", -1, kPatterns[0]);
        ExpectImport(section.import, "<s><other><row_0/></other></s>", 0, kPatterns[0]);
        const Element element(section.xml);
        const TiXmlElement* table = element.Get()->FirstChildElement();
        for (; table != nullptr; table = table->NextSiblingElement(), ++tables) {
            // The last row is one too many.
            const TiXmlElement* row = table->LastChild()->ToElement();
            const std::string name = table->ValueStr(), digits = row->ValueStr().substr(3);
            std::string attributes;
            for (auto at = row->FirstAttribute(); at != nullptr; at = at->Next())
                attributes += " " + std::string(at->Name()) + "=\"" + at->Value() + "\"";
            const auto expect = [&](const std::string& tableName, const char* first, int result) {
                ExpectImport(section.import,
                             "<s><" + tableName + "><" + first + attributes + "/><r" +
                                 (digits.empty() ? "_9" : digits) + attributes + "/></" +
                                 tableName + "></s>",
                             result, kPatterns[0]);
            };
            for (const auto& c : cases)
                if (digits.size() > c.digitsLeast && digits.size() <= c.digitsMost + 1)
                    expect(name, c.row, c.result);
            expect("S" + name.substr(1), "r_0", 0);
        }
    }
    EXPECT_EQ(tables, 14);
}

} // namespace

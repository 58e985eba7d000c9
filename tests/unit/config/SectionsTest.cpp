// SPDX-License-Identifier: GPL-2.0-only
// Every section of the record, whole.
#include "tests/unit/config/Sections.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace {

// Both have the three power flags set, which an import keeps.
constexpr unsigned char kPatterns[] = {0xE1, 0xFE};

// Imports into a record full of `pattern`. Afterwards it must hold `part` at `offset`, and nothing
// else may have changed.
void ExpectImport(const Section& section, const std::string& xml, int result, unsigned char pattern,
                  const Layout& part = {}, std::size_t offset = 0) {
    if (!section.import)
        return;
    const Element element(xml);
    T task;
    DeviceParaRecord record;
    std::memset(&record, pattern, sizeof record);
    EXPECT_EQ(section.import(task, element.Get(), &record), result) << xml;
    std::string expected(sizeof record, static_cast<char>(pattern));
    for (std::size_t i = 0; i < part.bytes.size(); ++i)
        if (part.bytes[i] != kUntouched)
            expected[offset + i] = static_cast<char>(part.bytes[i]);
    const std::string found(reinterpret_cast<const char*>(&record), sizeof record);
    const auto wrong = std::mismatch(found.begin(), found.end(), expected.begin()).first;
    EXPECT_TRUE(wrong == found.end())
        << "byte " << wrong - found.begin() << ", section at " << offset << ": " << xml;
}

TEST(Sections, EveryFieldAndNoOtherByte) {
    unsigned serial = 0;
    Layout whole;
    for (const Section& section : Sections()) {
        const Layout part = BuildLayout(section.schema, &serial);
        whole.Align(part.align);
        const std::size_t offset = whole.bytes.size();
        whole.Append(part);
        const std::string xml = "<s" + part.attributes + ">" + part.children + "</s>";
        std::string otherCase = xml;
        for (std::size_t at = 0; (at = otherCase.find("FD_", at)) != std::string::npos;)
            otherCase.replace(at, 3, "fd_");
        ExpectImport(section, xml, 0, kPatterns[0], part, offset);
        ExpectImport(section, otherCase, 0, kPatterns[1], part, offset);
    }
    whole.Align(whole.align);
    EXPECT_EQ(whole.bytes.size(), sizeof(DeviceParaRecord));
}

// With a row that ends the table after the one in question.
std::string OneTable(const Table& table, const std::string& name, const std::string& row) {
    return "<s><" + name + "><" + row + table.attributes + "/><r_" + std::to_string(table.count) +
           table.attributes + "/></" + name + "></s>";
}

TEST(Sections, NothingIsRead) {
    struct Case {
        const char* tables; // by their schema marks
        const char* row;
        int result;
    };
    constexpr Case cases[] = {
        {"({", "r", -1}, {"({", "r_", -1}, {"(", "r_10", -1}, {"(", "r_-1", -1}, {"{", "r_-1", 0}};
    unsigned serial = 0;
    std::size_t tables = 0;
    for (const Section& section : Sections()) {
        ExpectImport(section, "", -1, kPatterns[0]);
        ExpectImport(section, "<s><other><row_0/></other></s>", 0, kPatterns[0]);
        const Layout layout = BuildLayout(section.schema, &serial);
        tables += layout.tables.size();
        for (const Table& table : layout.tables) {
            for (const Case& c : cases)
                if (std::strchr(c.tables, table.mark))
                    ExpectImport(section, OneTable(table, table.name, c.row), c.result,
                                 kPatterns[0]);
            const std::string otherCase = "S" + table.name.substr(1);
            ExpectImport(section, OneTable(table, otherCase, "r_0"), 0, kPatterns[0]);
        }
    }
    EXPECT_EQ(tables, 14);
}

} // namespace

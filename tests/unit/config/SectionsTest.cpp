// SPDX-License-Identifier: GPL-2.0-only
// Every section of the record, whole.
#include "tests/unit/config/Sections.h"
#include "tests/unit/config/Layout.h"

#include <cctype>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>

namespace {

// Both have the three power flags set, which an import keeps.
constexpr int kPatterns[] = {0xE1, 0xFE};

std::string UpperCaseNames(std::string attributes) {
    bool quoted = false;
    for (char& c : attributes) {
        quoted ^= c == '"';
        if (!quoted)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return attributes;
}

// What an import left, against the pattern with `part` placed at `offset`. -1: equal.
int FirstDifference(const DeviceParaRecord& record, int pattern, const Layout& part,
                    std::size_t offset) {
    unsigned char bytes[sizeof record];
    std::memcpy(bytes, &record, sizeof record);
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        const bool inside = i >= offset && i < offset + part.bytes.size();
        const int expected =
            inside && part.bytes[i - offset] != kUntouched ? part.bytes[i - offset] : pattern;
        if (bytes[i] != expected)
            return static_cast<int>(i);
    }
    return -1;
}

DeviceParaRecord Filled(int pattern) {
    DeviceParaRecord record;
    std::memset(&record, pattern, sizeof record);
    return record;
}

// Everything named is stored, at its place and in its width; nothing else changes.
TEST(Sections, EveryFieldAndNoOtherByte) {
    int serial = 0;
    Layout whole;
    for (const Section& section : Sections()) {
        const Layout part = BuildLayout(section.schema, &serial);
        whole.Append({"", "", {}, part.align});
        const std::size_t offset = whole.bytes.size();
        whole.Append(part);
        for (const int pattern : kPatterns) {
            if (!section.import)
                continue;
            const bool upper = pattern == kPatterns[1];
            const Element element("<any" +
                                  (upper ? UpperCaseNames(part.attributes) : part.attributes) +
                                  ">" + part.children + "</any>");
            ASSERT_NE(element.Get(), nullptr) << section.schema;
            CConfig_Task task;
            DeviceParaRecord record = Filled(pattern);
            EXPECT_EQ(section.import(task, element.Get(), &record), 0) << section.schema;
            const int wrong = FirstDifference(record, pattern, part, offset);
            EXPECT_EQ(wrong, -1) << section.schema << ", byte " << wrong - static_cast<int>(offset)
                                 << " of the block";

            EXPECT_EQ(section.import(task, element.Get(), nullptr), 0);
            record = Filled(0);
            section.import(task, element.Get(), &record);
            EXPECT_EQ(std::memcmp(&task.m_stPara, &record, sizeof record), 0) << section.schema;
        }
    }
    whole.Finish();
    EXPECT_EQ(whole.bytes.size(), sizeof(DeviceParaRecord));
}

// Rows that a table refuses or passes over, before one that it would not.
TEST(Sections, RowNames) {
    struct Case {
        const char* tables; // of these schema marks
        const char* row;
        int result;
    };
    constexpr Case cases[] = {
        {"({", "r", -1}, {"({", "r_", -1}, {"(", "r_10", -1}, {"(", "r_-1", -1}, {"{", "r_-1", 0},
    };
    int tables = 0;
    for (const Section& section : Sections()) {
        std::istringstream tokens(section.schema);
        for (std::string table, count, field; tokens >> table;) {
            const char mark = table.back();
            if (std::strchr("({[", mark) == nullptr)
                continue;
            ++tables;
            tokens >> count >> field;
            table.pop_back();
            const std::string attribute = " " + field.substr(0, field.find('/')) + "='1'/>";
            const auto check = [&](const std::string& name, const std::string& rows, int result) {
                const Element element("<any><" + name + ">" + rows + "</" + name + "></any>");
                CConfig_Task task;
                DeviceParaRecord record = Filled(kPatterns[0]);
                EXPECT_EQ(section.import(task, element.Get(), &record), result) << rows;
                EXPECT_EQ(FirstDifference(record, kPatterns[0], {}, 0), -1) << name << rows;
            };
            for (const Case& c : cases)
                if (std::strchr(c.tables, mark))
                    check(table, "<" + std::string(c.row) + attribute + "<end_" + count + attribute,
                          c.result);
            table[0] = 'S';
            check(table, "<row_0" + attribute, 0);
        }
    }
    EXPECT_EQ(tables, 14);
}

// Nothing to read leaves all as it is.
TEST(Sections, EmptyAndMissingElements) {
    const Element empty("<any><other><row_0/></other></any>");
    for (const Section& section : Sections()) {
        if (!section.import)
            continue;
        CConfig_Task task;
        DeviceParaRecord record = Filled(kPatterns[0]);
        EXPECT_EQ(section.import(task, empty.Get(), &record), 0) << section.schema;
        EXPECT_EQ(section.import(task, nullptr, &record), -1) << section.schema;
        EXPECT_EQ(FirstDifference(record, kPatterns[0], {}, 0), -1) << section.schema;
    }
}

} // namespace

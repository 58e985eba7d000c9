// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// What the tests of the API paths share.

#include <sstream>

#include "tests/system/Daemon.h"
#include "tests/system/HttpClient.h"
#include "tests/system/Recorder.h"

using Texts = std::vector<std::string>;

class Api : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        if (!HasFatalFailure())
            Start();
    }
};

inline std::string Query(const std::string& element) {
    return "<VariCfgSec Action=\"DEVICE_QUERY\"><" + element + "></VariCfgSec>";
}

inline std::string Set(const std::string& element) {
    return "<VariCfgSec Action=\"DEVICE_SET\">" + element + "</VariCfgSec>";
}

// Lists in tables are written with '|' between their items.
inline Texts Split(const std::string& list) {
    Texts items;
    std::istringstream stream(list);
    for (std::string item; std::getline(stream, item, '|');)
        items.push_back(item);
    return items;
}

inline std::string PercentEncode(const std::string& value) {
    std::string encoded;
    for (const unsigned char byte : value) {
        char text[4];
        snprintf(text, sizeof(text), "%%%02X", byte);
        encoded += text;
    }
    return encoded;
}

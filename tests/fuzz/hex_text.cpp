// SPDX-License-Identifier: GPL-2.0-only
// The input is a text that may be hexadecimal: every reader of such texts must agree on it.
#include <algorithm>
#include <string>
#include <tinyxml.h>
#include <vector>

#include "CBB/Config/Config_Task.h"
#include "CBB/Util/HexText.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<char> text(data, std::find(data, data + size, '\0'));
    const int length = static_cast<int>(text.size());
    std::vector<uint8_t> bytes(text.size() / 2), pairs(text.size() / 2 + 1);
    int capacity = static_cast<int>(bytes.size());
    int number = 0;
    const bool isHex = HexTextToBytes(text.data(), length, bytes.data(), &capacity) == 0;
    const int pairCount = HexPairsToBytes(pairs.data(), text.data(), length);
    if (isHex != (HexTextToInt(text.data(), length, &number) == 0))
        __builtin_trap();
    if (isHex &&
        (pairCount != (length + 1) / 2 || !std::equal(bytes.begin(), bytes.end(), pairs.begin())))
        __builtin_trap();

    TiXmlElement section("s");
    section.SetAttribute("ucReserveData", std::string(text.begin(), text.end()).c_str());
    CConfig_Task task;
    task.Import_ReserveData(&section, nullptr);
    std::vector<uint8_t> block(std::begin(task.m_stPara.stReserveData.ucReserveData),
                               std::end(task.m_stPara.stReserveData.ucReserveData));
    pairs.resize(isHex && bytes.size() <= block.size() ? pairCount : 0);
    pairs.resize(block.size());
    if (block != pairs)
        __builtin_trap();
    return 0;
}

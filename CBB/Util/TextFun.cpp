// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/TextFun.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netdb.h>
#include <string>

#include "CBB/Util/NetText.h"

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool AllOf(const char* text, bool (*matches)(char)) {
    return std::all_of(text, text + strlen(text), matches);
}

} // namespace

int MyGetHostByName(const char* name, in_addr_t* addr) {
    const hostent* host = gethostbyname(name);
    if (host == nullptr || host->h_addrtype != AF_INET || host->h_addr_list[0] == nullptr) {
        printf("MyGetHostByName, Can't Get IP From Domain:%s./n", name);
        return -1;
    }
    in_addr first;
    memcpy(&first, host->h_addr_list[0], sizeof(first));
    printf("MyGetHostByName, HostName :%s/n", host->h_name);
    printf("MyGetHostByName, IP Address :%s/n", DottedText(first.s_addr).c_str());
    *addr = first.s_addr;
    return 0;
}

int IsIpv4Text(const char* text) {
    int dots = 0;
    int number = 0;
    for (; text != nullptr && *text != '\0'; ++text) {
        if (*text == '.') {
            ++dots;
            number = 0;
            continue;
        }
        number = number * 10 + (*text - '0');
        if (!IsDigit(*text) || number > 255)
            return 0;
    }
    return dots == 3 ? 1 : 0;
}

int IsHexText(const char* text) {
    if (text == nullptr || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
        return 0;
    return text[2] != '\0' && AllOf(text + 2, IsHexDigit) ? 1 : 0;
}

int IsIntegerText(const char* text) {
    if (text == nullptr)
        return 0;
    return AllOf(*text == '-' ? text + 1 : text, IsDigit) ? 1 : 0;
}

const char* SkipBlanks(const char* text) {
    if (text == nullptr)
        return nullptr;
    text += strspn(text, " \t\n\r");
    return *text != '\0' ? text : nullptr;
}

int ToInt(const char* text) {
    // Nearly every value is a few digits, which strtoll takes long for: it knows locales.
    constexpr int kSafeDigits = 9;
    int value = 0;
    int digits = 0;
    for (; digits < kSafeDigits && text[digits] >= '0' && text[digits] <= '9'; ++digits)
        value = value * 10 + (text[digits] - '0');
    if (digits > 0 && digits < kSafeDigits)
        return value;
    return static_cast<int>(static_cast<uint32_t>(strtoll(text, nullptr, 10)));
}

char* IntToText(long value, char* text) {
    constexpr size_t digits = 6;
    const std::string all = std::to_string(value);
    text[all.copy(text, digits)] = '\0';
    return text;
}

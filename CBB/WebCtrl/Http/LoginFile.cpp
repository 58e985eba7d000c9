// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/LoginFile.h"

#include <algorithm>
#include <cerrno>
#include <crypt.h>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "CBB/Util/Owner.h"

namespace {

constexpr size_t kMaxFileBytes = 64 * 1024;

// How many characters a whole hash has behind its last '$'. A hash that was cut by mistake would
// silently lock its name out, so it is refused.
struct HashMethod {
    std::string_view prefix;
    size_t tail;
};
constexpr HashMethod kMethods[] = {
    {"$y$", 43}, {"$6$", 86}, {"$2a$", 53}, {"$2b$", 53}, {"$2y$", 53},
};

bool IsHash(const std::string& text) {
    return crypt_checksalt(text.c_str()) == CRYPT_SALT_OK &&
           std::any_of(std::begin(kMethods), std::end(kMethods), [&](const HashMethod& method) {
               return text.compare(0, method.prefix.size(), method.prefix) == 0 &&
                      text.size() - text.rfind('$') - 1 == method.tail;
           });
}

// Removes the front of `*text` up to and with `end`, and returns it without `end`.
std::string_view Take(std::string_view* text, char end) {
    const std::string_view taken = text->substr(0, text->find(end));
    text->remove_prefix(std::min(taken.size() + 1, text->size()));
    return taken;
}

const char* ParseLine(std::string_view line, std::vector<Account>* accounts) {
    const bool hasRights = std::count(line.begin(), line.end(), ':') > 1;
    Account account{};
    account.name = Take(&line, ':');
    account.hash = Take(&line, ':');
    account.mayWrite = !hasRights;
    if (account.name.empty() || HasControl(account.name))
        return "no name";
    if (!IsHash(account.hash))
        return "no yescrypt, SHA-512 or bcrypt hash behind the name";
    if (hasRights && line != "read")
        return "'read' is all that may stand behind the hash";
    if (std::any_of(accounts->begin(), accounts->end(),
                    [&](const Account& other) { return other.name == account.name; }))
        return "a name that stands in a line before";
    accounts->push_back(std::move(account));
    return nullptr;
}

} // namespace

bool HasControl(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; });
}

std::string ParseLoginFile(std::string_view text, std::vector<Account>* accounts) {
    std::vector<Account> found;
    for (int number = 1; !text.empty(); ++number) {
        const std::string_view line = Take(&text, '\n');
        const char* fault = line.empty() ? nullptr : ParseLine(line, &found);
        if (fault != nullptr)
            return "line " + std::to_string(number) + ": " + fault;
    }
    if (found.empty())
        return "it names nobody";
    *accounts = std::move(found);
    return {};
}

std::string ReadLoginFile(const std::string& path, std::vector<Account>* accounts) {
    // Without O_NONBLOCK a named pipe would hold the start until somebody writes to it.
    const CDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status;
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0)
        return strerror(errno);
    if (!S_ISREG(status.st_mode))
        return "it is no regular file";
    if ((status.st_mode & (S_IROTH | S_IWOTH)) != 0)
        return "others may read or write it; chmod o= mends that";
    std::string text(kMaxFileBytes + 1, '\0');
    const ssize_t size = read(file.Get(), text.data(), text.size());
    if (size < 0)
        return strerror(errno);
    if (static_cast<size_t>(size) > kMaxFileBytes)
        return "it is larger than 64 KiB";
    text.resize(static_cast<size_t>(size));
    return ParseLoginFile(text, accounts);
}

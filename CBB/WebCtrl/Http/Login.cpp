// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/Login.h"

#include <algorithm>
#include <crypt.h>
#include <cstdlib>
#include <cstring>
#include <mongoose.h>
#include <strings.h>
#include <sys/random.h>

#include "CBB/Util/Thread.h"

namespace {

constexpr uint64_t kPauseMs = 1000;
// Somebody who only mistypes is wrong at most so often in a row.
constexpr int kMistakes = 3;
// The longest password that libcrypt takes.
constexpr size_t kMaxCredentials = CRYPT_MAX_PASSPHRASE_SIZE;

// Compares in constant time, wherever the two differ.
bool SameBytes(const void* a, const void* b, size_t size) {
    const auto* left = static_cast<const volatile uint8_t*>(a);
    const auto* right = static_cast<const volatile uint8_t*>(b);
    unsigned difference = 0;
    for (size_t at = 0; at < size; ++at)
        difference |= static_cast<unsigned>(left[at] ^ right[at]);
    return difference == 0;
}

// Whether crypt(3) makes `hash` of the password. Its scratch is too large for the web thread's
// stack.
bool Matches(const std::string& password, const std::string& hash) {
    auto* scratch = static_cast<crypt_data*>(calloc(1, sizeof(crypt_data)));
    if (scratch == nullptr)
        return false;
    const char* made = crypt_rn(password.c_str(), hash.c_str(), scratch, sizeof(*scratch));
    const bool same =
        made != nullptr && strlen(made) == hash.size() && SameBytes(made, hash.data(), hash.size());
    explicit_bzero(scratch, sizeof(*scratch));
    free(scratch);
    return same;
}

} // namespace

bool ReadBasic(std::string_view header, Credentials* credentials) {
    constexpr std::string_view kScheme = "Basic ";
    if (header.size() < kScheme.size() ||
        strncasecmp(header.data(), kScheme.data(), kScheme.size()) != 0)
        return false;
    header.remove_prefix(std::min(header.find_first_not_of(' ', kScheme.size()), header.size()));
    char text[kMaxCredentials * 4 / 3];
    if (header.size() >= sizeof(text))
        return false;
    const size_t size = mg_base64_decode(header.data(), header.size(), text, sizeof(text));
    credentials->text.assign(text, size);
    explicit_bzero(text, sizeof(text));
    // libcrypt would end the password at a NUL.
    return size < kMaxCredentials && credentials->text.find(':') != std::string::npos &&
           !HasControl(credentials->text);
}

// A hash in the making. Its thread touches it until `done`.
struct Login::Check {
    std::string password;
    std::string name;
    std::string hash;
    bool known; // false: nobody has this name, and the hash only takes its time
    Digest digest;
    uint32_t address;
    bool matches;
    std::atomic<bool> done{false};
    ThreadHandle* thread = nullptr;

    ~Check() {
        ThreadStopAndFree(thread);
        explicit_bzero(password.data(), password.size());
    }

    static void* Run(void* self) {
        auto* check = static_cast<Check*>(self);
        check->matches = Matches(check->password, check->hash);
        check->done = true;
        return nullptr;
    }
};

Login::Login(std::vector<Account> accounts) {
    // Early after the system's start this blocks until there are random bytes.
    while (getrandom(m_key, sizeof(m_key), 0) != sizeof(m_key)) {
    }
    Replace(std::move(accounts));
}

Login::~Login() = default;

Login::Answer Login::Ask(const Credentials& credentials, uint32_t address, uint64_t nowMs) {
    const Digest digest = DigestOf(credentials.text);
    if (const Entry* entry = Accepted(digest)) {
        if (address == m_wrongAddress)
            m_wrongInARow = 0;
        return entry->account.mayWrite ? Answer::Write : Answer::Read;
    }
    if (m_refused == digest)
        return Answer::Refused;
    if (m_check != nullptr)
        return m_check->digest == digest ? Answer::Wait : Answer::Later;
    if (nowMs < OpenFrom(address) || !StartHash(credentials, digest, address))
        return Answer::Later;
    return Answer::Wait;
}

bool Login::MayWrite(const Credentials& credentials) const {
    const Entry* entry = Accepted(DigestOf(credentials.text));
    return entry != nullptr && entry->account.mayWrite;
}

int Login::RetryAfter(uint32_t address, uint64_t nowMs) const {
    const uint64_t openFrom = OpenFrom(address);
    return openFrom > nowMs + 1000 ? 2 : 1;
}

bool Login::HashEnded(uint64_t nowMs) {
    if (m_check == nullptr || !m_check->done)
        return false;
    const std::unique_ptr<Check> check = std::move(m_check);
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& each) {
        return each.account.name == check->name && each.account.hash == check->hash;
    });
    if (check->known && check->matches && entry != m_entries.end()) {
        entry->accepted = check->digest;
    } else {
        m_refused = check->digest;
        m_openFromMs = nowMs + kPauseMs;
        m_wrongInARow = check->address == m_wrongAddress ? m_wrongInARow + 1 : 1;
        m_wrongAddress = check->address;
    }
    return true;
}

void Login::Replace(std::vector<Account> accounts) {
    std::vector<Entry> entries;
    for (Account& account : accounts) {
        const Entry* old = Find(account.name);
        Entry entry{std::move(account), {}};
        if (old != nullptr && old->account.hash == entry.account.hash)
            entry.accepted = old->accepted;
        entries.push_back(std::move(entry));
    }
    m_entries = std::move(entries);
}

Login::Digest Login::DigestOf(std::string_view text) const {
    Digest digest;
    // The library takes both as changeable and changes neither.
    mg_hmac_sha256(digest.data(), const_cast<uint8_t*>(m_key), sizeof(m_key),
                   reinterpret_cast<uint8_t*>(const_cast<char*>(text.data())), text.size());
    return digest;
}

const Login::Entry* Login::Accepted(const Digest& digest) const {
    const Entry* found = nullptr;
    for (const Entry& each : m_entries)
        if (SameBytes(each.accepted.data(), digest.data(), digest.size()))
            found = &each;
    return found;
}

const Login::Entry* Login::Find(std::string_view name) const {
    for (const Entry& each : m_entries)
        if (each.account.name == name)
            return &each;
    return nullptr;
}

bool Login::StartHash(const Credentials& credentials, const Digest& digest, uint32_t address) {
    const std::string_view name = credentials.Name();
    const Entry* entry = Find(name);
    const bool known = entry != nullptr;
    // A name that nobody has is hashed by the method of one that somebody has, always the same.
    if (!known)
        entry = &m_entries[DigestOf(name)[0] % m_entries.size()];
    auto check = std::make_unique<Check>();
    check->password = credentials.text.substr(name.size() + 1);
    check->name = entry->account.name;
    check->hash = entry->account.hash;
    check->known = known;
    check->digest = digest;
    check->address = address;
    if (ThreadCreate(Check::Run, check.get(), &check->thread, 0) != 0)
        return false;
    m_check = std::move(check);
    return true;
}

uint64_t Login::OpenFrom(uint32_t address) const {
    const bool keepsTrying = address == m_wrongAddress && m_wrongInARow >= kMistakes;
    return m_openFromMs + (keepsTrying ? kPauseMs : 0);
}

// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CBB/WebCtrl/Http/LoginFile.h"

struct ThreadHandle;

// The name and password of HTTP Basic (RFC 7617).
struct Credentials {
    std::string text; // NAME:PASSWORD
    // Empty without a colon: the text is then no login, but may be a password.
    std::string_view Name() const {
        const size_t colon = text.find(':');
        return {text.data(), colon == std::string::npos ? 0 : colon};
    }
};

// Reads an Authorization header's value. False unless it is of this scheme and holds a name and a
// password without control characters, of at most 512 bytes together.
bool ReadBasic(std::string_view header, Credentials* credentials);

// Decides who may do what. The first request of a login costs a hash, which another thread makes;
// later requests cost none.
//
// A hash takes tens to hundreds of milliseconds, so that nobody can try many passwords. Trying must
// not take the processor from other clients either: one hash is made at a time, and after a wrong
// login the next one follows a second later, whoever asks. An address that was wrong three times in
// a row waits two seconds: in the second between, another one's login is hashed.
//
// All calls are made by one thread.
class Login {
public:
    enum class Answer {
        Write,   // may do all
        Read,    // may do all but write
        Wait,    // its hash is being made: ask again when HashEnded
        Refused, // wrong
        Later,   // not looked at: another hash is being made, or was wrong just now
    };

    explicit Login(std::vector<Account> accounts);
    ~Login();
    Login(const Login&) = delete;
    Login& operator=(const Login&) = delete;

    // What these credentials, sent by `address`, may do at `nowMs` of a monotonic clock.
    Answer Ask(const Credentials& credentials, uint32_t address, uint64_t nowMs);

    // Whether these, accepted before, may do all.
    bool MayWrite(const Credentials& credentials) const;

    // After a Later: the seconds after which it is worth asking again.
    int RetryAfter(uint32_t address, uint64_t nowMs) const;

    // Whether a hash is being made.
    bool Hashing() const { return m_check != nullptr; }
    // Whether the hash that was being made is done. From then on, until ForgetRefused is called,
    // Ask answers the same credentials by that hash.
    bool HashEnded(uint64_t nowMs);
    void ForgetRefused() { m_refused = {}; }

    // Replaces the accounts. A login that was accepted by a line that stays needs no new hash.
    void Replace(std::vector<Account> accounts);

private:
    // Of credentials; zeros are none's.
    using Digest = std::array<uint8_t, 32>;
    struct Entry {
        Account account;
        Digest accepted; // those that were right
    };
    struct Check;

    Digest DigestOf(std::string_view text) const;
    const Entry* Accepted(const Digest& digest) const;
    const Entry* Find(std::string_view name) const;
    bool StartHash(const Credentials& credentials, const Digest& digest, uint32_t address);
    uint64_t OpenFrom(uint32_t address) const;

    uint8_t m_key[32];
    std::vector<Entry> m_entries;
    std::unique_ptr<Check> m_check;
    Digest m_refused{};
    uint64_t m_openFromMs = 0;
    uint32_t m_wrongAddress = 0;
    int m_wrongInARow = 0;
};

// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "XmlNode.h"

// The `Result` of an answer.
enum class Result {
    Ok = 0,
    BadMessage = 1, // no VariCfgSec with Action as its first attribute, or too long
    BadAction = 2,  // an Action other than DEVICE_QUERY and DEVICE_SET
    BadSection = 3, // no section element, or one that the state does not have
    BadName = 4,    // a set names an attribute or a row that the section does not have
    NotStored = 5   // the state file could not be written; nothing changed
};

// Longer requests are refused. The longest write fits, even with every byte as an entity.
constexpr size_t kMaxRequest = 8192;
// The longest answer: webctrl reads no more.
constexpr size_t kMaxAnswer = 1024;

// What a recorder can do wrong with an answer.
struct Faults {
    int result = 0;                  // not 0: every answer carries it and no set is applied
    int dropEvery = 0;               // N > 0: every Nth request is lost
    bool garbage = false;            // answers are no sound messages
    std::vector<std::string> silent; // sections whose requests get no answer
};

// The recorder's side of the control link: turns the text of a request into the text of its answer.
class Recorder {
public:
    // Stores the state that a set asks for; returning false refuses the set.
    using Store = std::function<bool(const XmlNode& state)>;

    Recorder(XmlNode state, Faults faults, Store store);

    // The answer, at most `kMaxAnswer` bytes: if a section does not fit, its last attributes are
    // left out. No answer when a fault asks for silence, or when the request is an answer itself
    // (its second attribute is Result).
    std::optional<std::string> Answer(const std::string& request);

    const XmlNode& State() const { return m_state; }

private:
    Result Set(const XmlNode& section);
    const char* Garbage();

    XmlNode m_state;
    Faults m_faults;
    Store m_store;
    unsigned m_requests = 0;
    size_t m_garbage = 0;
};

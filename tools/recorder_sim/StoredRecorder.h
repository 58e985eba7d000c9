// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <optional>
#include <string>

#include "Options.h"
#include "Recorder.h"

// A recorder whose state is kept in the file that its options name, or in memory.
class StoredRecorder {
public:
    explicit StoredRecorder(Options options) : m_options(std::move(options)) {}
    StoredRecorder(const StoredRecorder&) = delete; // the recorder points back

    // Makes the recorder from its file or from the sample. On failure returns false with a sentence
    // in `error`, and `badOption` says whether an override is to blame.
    bool Load(std::string& error, bool& badOption);

    // Makes the state file if it was missing. Call it only once the endpoint is bound: until then
    // another running simulator may own the file. On failure returns false with `error` set.
    bool MakeFile(std::string& error);

    // Stores what no set has stored yet. On failure returns false with `error` set.
    bool Save(std::string& error);

    const Options& GetOptions() const { return m_options; }
    Recorder& Get() { return *m_recorder; }

private:
    bool Store(const XmlNode& state, std::string& error);

    const Options m_options;
    std::optional<Recorder> m_recorder;
    bool m_missing = false; // there was no file
    bool m_unsaved = false;
};

// SPDX-License-Identifier: GPL-2.0-only
#include "StoredRecorder.h"

#include <cstdio>

#include "State.h"

bool StoredRecorder::Load(std::string& error, bool& badOption) {
    XmlNode state = SampleState();
    const std::string& file = m_options.stateFile;
    const Loaded loaded = file.empty() ? Loaded::Yes : LoadState(file, state, error);
    badOption = false;
    if (loaded == Loaded::Failed) {
        error += "; mend or remove it";
        return false;
    }
    for (const std::string& assignment : m_options.overrides) {
        badOption = !Override(state, assignment);
        if (badOption) {
            error = "the state has no place for --set " + assignment;
            return false;
        }
    }
    m_missing = loaded == Loaded::NoFile;
    m_unsaved = !file.empty() && (m_missing || !m_options.overrides.empty());
    m_recorder.emplace(std::move(state), m_options.faults, [this](const XmlNode& changed) {
        std::string reason;
        if (Store(changed, reason))
            return true;
        fprintf(stderr, "recorder_sim: %s\n", reason.c_str());
        return false;
    });
    return true;
}

bool StoredRecorder::MakeFile(std::string& error) {
    return !m_missing || Store(m_recorder->State(), error);
}

bool StoredRecorder::Save(std::string& error) {
    return !m_unsaved || Store(m_recorder->State(), error);
}

bool StoredRecorder::Store(const XmlNode& state, std::string& error) {
    if (!m_options.stateFile.empty() && !SaveState(m_options.stateFile, state, error))
        return false;
    m_unsaved = false;
    return true;
}

// SPDX-License-Identifier: GPL-2.0-only
#include <cstdio>

#include "Options.h"
#include "Recorder.h"
#include "Server.h"
#include "State.h"

namespace {

int Fail(int status, const std::string& error) {
    fprintf(stderr, "recorder_sim: %s\n", error.c_str());
    return status;
}

} // namespace

int main(int argc, char** argv) {
    constexpr int kFailed = 1;
    constexpr int kBadOption = 2;

    Options options;
    std::string error;
    if (!ParseOptions({argv + 1, argv + argc}, options, error)) {
        return Fail(kBadOption, error);
    }
    if (options.help) {
        fputs(HelpText().c_str(), stdout);
        return 0;
    }

    XmlNode state = SampleState();
    const std::string& file = options.stateFile;
    const Loaded loaded = file.empty() ? Loaded::Yes : LoadState(file, state, error);
    if (loaded == Loaded::Failed) {
        return Fail(kFailed, error + "; mend or remove it");
    }
    for (const std::string& assignment : options.overrides) {
        if (!Override(state, assignment)) {
            return Fail(kBadOption, "the state has no place for --set " + assignment);
        }
    }
    bool unsaved = !file.empty() && (loaded == Loaded::NoFile || !options.overrides.empty());
    Recorder recorder(state, options.faults, [&](const XmlNode& changed) {
        if (file.empty()) {
            return true;
        }
        std::string reason;
        if (!SaveState(file, changed, reason)) {
            Fail(kFailed, reason);
            return false;
        }
        unsaved = false;
        return true;
    });

    Server server(options, recorder);
    if (!server.Open(error)) {
        return Fail(kFailed, error);
    }
    // Only a simulator that owns the port may touch the file of another that runs.
    if (loaded == Loaded::NoFile) {
        if (!SaveState(file, state, error)) {
            return Fail(kFailed, error);
        }
        unsaved = false;
    }
    printf("recorder_sim: listening on %s\n", server.Endpoint().c_str());
    fflush(stdout);
    server.Run();
    if (unsaved && !SaveState(file, recorder.State(), error)) {
        return Fail(kFailed, error);
    }
    return 0;
}

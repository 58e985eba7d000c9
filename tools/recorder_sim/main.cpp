// SPDX-License-Identifier: GPL-2.0-only
#include <cstdio>
#include <deque>

#include "Options.h"
#include "Server.h"
#include "StoredRecorder.h"

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
    if (!ParseOptions({argv + 1, argv + argc}, options, error))
        return Fail(kBadOption, error);
    if (options.help) {
        fputs(HelpText().c_str(), stdout);
        return 0;
    }

    std::deque<StoredRecorder> recorders;
    for (int number = 0; number < options.count; ++number) {
        bool badOption;
        if (!recorders.emplace_back(OptionsOf(options, number)).Load(error, badOption))
            return Fail(badOption ? kBadOption : kFailed, error);
    }
    Server server(options);
    if (!server.Open(error))
        return Fail(kFailed, error);
    for (StoredRecorder& recorder : recorders) {
        const Options& own = recorder.GetOptions();
        if (!server.Add(recorder.Get(), own.listenIp, own.listenPort, error) ||
            !recorder.MakeFile(error))
            return Fail(kFailed, error);
        printf("recorder_sim: listening on %s\n", server.Endpoint().c_str());
    }
    fflush(stdout);
    server.Run();
    for (StoredRecorder& recorder : recorders)
        if (!recorder.Save(error))
            Fail(kFailed, error);
    return error.empty() ? 0 : kFailed;
}

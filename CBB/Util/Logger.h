// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "CBB/Util/Lock.h"

// The file logger: one log file a run in a directory that is pruned to a fixed number of files.
// Its own failures go to the console, as red lines of level 3.
class Logger {
public:
    // The process's logger, which is never destroyed.
    static Logger* getInstance();

    Logger() = default;
    // Does not close the file.
    ~Logger() = default;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    // Opens directory + "/" + prefix_YYYYMMDD_HHMMSS (local time) after pruning the directory to 30
    // older files, and starts counting lines at 0. An empty directory means "./log/", whose path
    // then has a doubled slash. A missing directory is made, one level deep. A file that was open
    // is closed. Returns 0, or -1: nothing is open then.
    int init(const std::string& directory, const std::string& prefix);

    // Appends "<L%d> [%d-%02d-%02d %02d:%02d:%02d]:" (line number, local time) and the text, cut at
    // 1023 bytes together; the newline is the caller's. Each 120000 lines the file is written from
    // its start again, over the old lines. Without an open file the line is lost, and
    // "CLogger not init." is printed.
    void log(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Removes the oldest files of the directory beyond keep: of the names that begin with the
    // prefix and are as long as the current file's, those that sort lowest. Returns 0, or -1 when
    // the directory can neither be read nor made. Takes no lock: init calls it.
    int clearLog(int keep);

    // Closes the file and returns the result of fclose(3), 0 when none is open. Takes no lock: it
    // must not meet log in another thread.
    int close();

private:
    int Open();
    std::string CurrentName() const;

    uint32_t m_uiLineNo = 0;
    FILE* m_pFile = nullptr;
    CMutex m_stLock;
    std::string m_strFileName;
    std::string m_strDir; // ends in "/"
    std::string m_strPrefix;
};

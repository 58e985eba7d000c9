// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/Util/Logger.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "CBB/Util/Clock.h"
#include "CBB/Util/DebugPrint.h"
#include "CBB/Util/Owner.h"
#include "CBB/Util/TimeFun.h"

namespace {

constexpr int kKeptFiles = 30;
constexpr uint32_t kRewindLines = 120000; // the only bound on a file's size
constexpr size_t kNameSize = 128;
constexpr size_t kHeaderSize = 64;
constexpr size_t kLineSize = 1024;

// The places that the error lines name. They are constants, so that a console text stays the same
// when the source changes.
constexpr int kLineClearFailed = 106;
constexpr int kLineOpenFailed = 114;
constexpr int kLineNotInit = 138;
constexpr int kLineReopenDir = 188;
constexpr int kLineOpenDir = 194;

tm LocalNow() {
    tm local = {};
    LocalTime(time(nullptr), &local);
    return local;
}

// Runs a shell command on one path. Whoever can make files in the log directory, which may lie on a
// card, chooses their names: in quotes, no character of a name means anything to the shell.
void RunOnPath(const std::string& command, const std::string& path) {
    std::string text = command + "'";
    for (const char c : path)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    text += "'";
    // A failure shows where the path is used next.
    [[maybe_unused]] const int rc = system(text.c_str());
}

DirPtr OpenOrMake(const std::string& path) {
    DirPtr dir(opendir(path.c_str()));
    if (dir != nullptr)
        return dir;
    if (errno != ENOENT) {
        DebugPrint(kDebugError, DEBUG_ERROR_FORMAT("open dir:[%s] error:%s."), "Logger", "clearLog",
                   kLineOpenDir, path.c_str(), strerror(errno));
        return dir;
    }
    RunOnPath("mkdir ", path);
    dir.reset(opendir(path.c_str()));
    if (dir == nullptr) {
        DebugPrint(kDebugError, DEBUG_ERROR_FORMAT("reopen dir:[%s] error:%s."), "Logger",
                   "clearLog", kLineReopenDir, path.c_str(), strerror(errno));
    }
    return dir;
}

} // namespace

Logger* Logger::getInstance() {
    static Logger* const instance = new Logger;
    return instance;
}

int Logger::init(const std::string& directory, const std::string& prefix) {
    AutoLock lock(m_stLock.Get());
    m_strDir = (directory.empty() ? std::string("./log/") : directory) + "/";
    m_strPrefix = prefix;
    m_strFileName = CurrentName();
    close();
    return Open();
}

std::string Logger::CurrentName() const {
    const tm now = LocalNow();
    char name[kNameSize];
    snprintf(name, sizeof(name), "%s_%d%02d%02d_%02d%02d%02d", m_strPrefix.c_str(),
             now.tm_year + 1900, now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec);
    return name;
}

int Logger::Open() {
    if (clearLog(kKeptFiles) == -1) {
        DebugPrint(kDebugError, DEBUG_ERROR_FORMAT("clear log failed."), "Logger", "init",
                   kLineClearFailed);
        return -1;
    }
    const std::string path = m_strDir + m_strFileName;
    m_pFile = fopen(path.c_str(), "w+");
    if (m_pFile == nullptr) {
        DebugPrint(kDebugError, DEBUG_ERROR_FORMAT("Can't open log file:%s."), "Logger", "init",
                   kLineOpenFailed, path.c_str());
        return -1;
    }
    m_uiLineNo = 0;
    return 0;
}

int Logger::clearLog(int keep) {
    std::vector<std::string> names;
    {
        const DirPtr dir = OpenOrMake(m_strDir);
        if (dir == nullptr)
            return -1;
        while (const dirent* entry = readdir(dir.get())) {
            const std::string name = entry->d_name;
            if (name != "." && name != ".." && name.size() == m_strFileName.size() &&
                name.compare(0, m_strPrefix.size(), m_strPrefix) == 0) {
                names.push_back(name);
            }
        }
    }
    // The names are time stamps of fixed width behind one prefix: the oldest sorts first.
    std::sort(names.begin(), names.end());
    const size_t kept = static_cast<size_t>(std::max(keep, 0));
    for (size_t i = 0; i + kept < names.size(); ++i) {
        const std::string path = m_strDir + names[i];
        RunOnPath("rm -rf ", path);
        DebugPrint(kDebugInfo, DEBUG_GREEN "Logger::clearLog, [%s]\n" DEBUG_RESET,
                   ("rm -rf " + path).c_str());
    }
    return 0;
}

void Logger::log(const char* format, ...) {
    AutoLock lock(m_stLock.Get());
    if (m_pFile == nullptr) {
        DebugPrint(kDebugError, DEBUG_ERROR_FORMAT("CLogger not init."), "Logger", "log",
                   kLineNotInit);
        return;
    }
    if (m_uiLineNo % kRewindLines == 0)
        fseek(m_pFile, 0, SEEK_SET);
    char now[kTimeTextSize];
    FormatTimeText(time(nullptr), now);
    char line[kLineSize] = {};
    const int header =
        snprintf(line, kHeaderSize, "<L%d> [%s]:", static_cast<int>(m_uiLineNo), now);
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line + header, sizeof(line) - static_cast<size_t>(header), format, arguments);
    va_end(arguments);
    fwrite(line, 1, strlen(line), m_pFile);
    fflush(m_pFile);
    ++m_uiLineNo;
}

int Logger::close() {
    if (m_pFile == nullptr)
        return 0;
    const int rc = fclose(m_pFile);
    m_pFile = nullptr;
    return rc;
}

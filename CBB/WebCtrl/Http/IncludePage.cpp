// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/IncludePage.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mongoose.h>
#include <sys/stat.h>

namespace {

constexpr int kMaxIncludeDepth = 5;
// A page that includes itself several times over would otherwise grow without end.
constexpr size_t kMaxPageBytes = 1024 * 1024;

struct Setting {
    const char* name;
    char value[100];
};

// What pages can print. Nothing changes them as yet.
Setting g_settings[] = {{"setting1", "value1"}, {"setting2", "value2"}};

bool EndsWith(const std::string& text, const char* ending) {
    const size_t length = strlen(ending);
    return text.size() >= length && text.compare(text.size() - length, length, ending) == 0;
}

std::string RealPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&free)> resolved(realpath(path.c_str(), nullptr), free);
    return resolved ? resolved.get() : "";
}

bool IsBelow(const std::string& path, const std::string& folder) {
    const std::string root = RealPath(folder);
    return !root.empty() && RealPath(path).compare(0, root.size() + 1, root + "/") == 0;
}

std::string EscapeHtml(const char* text) {
    std::string escaped;
    for (; *text != '\0'; ++text) {
        if (*text == '<')
            escaped += "&lt;";
        else if (*text == '>')
            escaped += "&gt;";
        else if (*text == '&')
            escaped += "&amp;";
        else if (*text == '"')
            escaped += "&quot;";
        else
            escaped += *text;
    }
    return escaped;
}

void Render(const std::string& path, const std::string& webRoot, int depth, std::string& page);

// `tag` is what stands between "<!--#" and "-->".
void RunTag(const std::string& tag, const std::string& path, const std::string& webRoot, int depth,
            std::string& page) {
    char argument[128];
    if (sscanf(tag.c_str(), "call %127s", argument) == 1) {
        for (const Setting& setting : g_settings) {
            if (strcmp(argument, setting.name) == 0)
                page += EscapeHtml(setting.value);
        }
    } else if (sscanf(tag.c_str(), "include file=\"%127[^\"]\"", argument) == 1) {
        const std::string included = path.substr(0, path.rfind('/') + 1) + argument;
        if (IsFile(included) && IsBelow(included, webRoot))
            Render(included, webRoot, depth + 1, page);
    }
}

void Render(const std::string& path, const std::string& webRoot, int depth, std::string& page) {
    if (depth > kMaxIncludeDepth)
        return;
    mg_str content = mg_file_read(&mg_fs_posix, path.c_str());
    const std::string text(content.buf != nullptr ? content.buf : "", content.len);
    mg_free(content.buf);
    size_t at = 0;
    while (IsIncludePage(path) && page.size() < kMaxPageBytes) {
        const size_t begin = text.find("<!--#", at);
        const size_t end = begin == std::string::npos ? begin : text.find("-->", begin);
        if (end == std::string::npos)
            break;
        page.append(text, at, begin - at);
        const size_t tag = begin + strlen("<!--#");
        RunTag(text.substr(tag, end - tag), path, webRoot, depth, page);
        at = end + strlen("-->");
    }
    page.append(text, at, std::string::npos);
}

} // namespace

bool IsIncludePage(const std::string& path) {
    return EndsWith(path, ".shtml") || EndsWith(path, ".shtm");
}

bool IsFile(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::string RenderIncludePage(const std::string& path, const std::string& webRoot) {
    std::string page;
    Render(path, webRoot, 0, page);
    return page;
}

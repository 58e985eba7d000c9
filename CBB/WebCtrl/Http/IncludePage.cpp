// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/IncludePage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <utility>

#include "CBB/Util/Owner.h"

namespace {

constexpr int kMaxIncludeDepth = 5;
// What one page may cost: it holds up all clients, lies in memory until its client has read it, and
// would grow without end where it includes itself several times.
constexpr size_t kMaxBytes = 256 * 1024;
constexpr int kMaxTags = 1000;

struct Setting {
    const char* name;
    char value[100];
};

// The values that pages can print. Nothing changes them yet.
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
    for (; *text != '\0'; ++text)
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
    return escaped;
}

// The first bytes of a file.
std::string ReadFile(const std::string& path, size_t limit) {
    std::string text;
    const FilePtr file(fopen(path.c_str(), "rb"));
    char block[4096];
    for (size_t count = 1; file != nullptr && count > 0 && text.size() < limit;) {
        count = fread(block, 1, std::min(sizeof(block), limit - text.size()), file.get());
        text.append(block, count);
    }
    return text;
}

class Renderer {
public:
    explicit Renderer(const std::string& webRoot) : m_webRoot(webRoot) {}

    void Render(const std::string& path, int depth);
    std::string& Page() { return m_page; }

private:
    void RunTag(const std::string& tag, const std::string& path, int depth);

    const std::string& m_webRoot;
    std::string m_page;
    size_t m_bytesLeft = kMaxBytes; // to be read
    int m_tagsLeft = kMaxTags;      // to be carried out
};

// `tag` is what stands between "<!--#" and "-->".
void Renderer::RunTag(const std::string& tag, const std::string& path, int depth) {
    char argument[128];
    if (sscanf(tag.c_str(), "call %127s", argument) == 1) {
        for (const Setting& setting : g_settings)
            if (strcmp(argument, setting.name) == 0)
                m_page += EscapeHtml(setting.value);
    } else if (sscanf(tag.c_str(), "include file=\"%127[^\"]\"", argument) == 1) {
        const std::string included = path.substr(0, path.rfind('/') + 1) + argument;
        if (depth < kMaxIncludeDepth && IsFile(included) && IsBelow(included, m_webRoot))
            Render(included, depth + 1);
    }
}

void Renderer::Render(const std::string& path, int depth) {
    const std::string text = ReadFile(path, m_bytesLeft);
    m_bytesLeft -= text.size();
    size_t at = 0;
    while (IsIncludePage(path)) {
        const size_t begin = text.find("<!--#", at);
        const size_t end = begin == std::string::npos ? begin : text.find("-->", begin);
        if (end == std::string::npos)
            break;
        m_page.append(text, at, begin - at);
        const size_t tag = begin + strlen("<!--#");
        if (m_tagsLeft > 0) {
            --m_tagsLeft;
            RunTag(text.substr(tag, end - tag), path, depth);
        }
        at = end + strlen("-->");
    }
    m_page.append(text, at, std::string::npos);
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
    Renderer renderer(webRoot);
    renderer.Render(path, 0);
    return std::move(renderer.Page());
}

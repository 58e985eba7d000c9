// SPDX-License-Identifier: GPL-2.0-only
#include "State.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

extern const char* const kSampleState; // generated from sample_state.xml

namespace {

// Ten times the size of the sample: a larger file is no state.
constexpr size_t kMaxFileSize = 65536;

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

std::string SystemError(const std::string& what, const std::string& path) {
    return what + ' ' + path + ": " + strerror(errno);
}

// The new name lasts through a power cut only once the folder itself is synchronised.
void SyncFolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const File handle(fopen(folder.c_str(), "re"));
    if (handle)
        fsync(fileno(handle.get()));
}

} // namespace

XmlNode SampleState() {
    XmlNode state;
    std::string error;
    if (!ParseState(kSampleState, state, error)) {
        fprintf(stderr, "recorder_sim: compiled-in state: %s\n", error.c_str());
        abort();
    }
    return state;
}

bool ParseState(const std::string& text, XmlNode& state, std::string& error) {
    auto root = ParseXml(text, error);
    if (!error.empty())
        return false;
    if (root->name != "RecorderState") {
        error = "the first element is not RecorderState";
        return false;
    }
    state = std::move(*root);
    return true;
}

Loaded LoadState(const std::string& path, XmlNode& state, std::string& error) {
    const File file(fopen(path.c_str(), "re"));
    if (!file) {
        if (errno == ENOENT)
            return Loaded::NoFile;
        error = SystemError("cannot read", path);
        return Loaded::Failed;
    }
    std::string text(kMaxFileSize + 1, '\0');
    text.resize(fread(text.data(), 1, text.size(), file.get()));
    if (ferror(file.get()) != 0) {
        error = SystemError("cannot read", path);
        return Loaded::Failed;
    }
    if (text.size() > kMaxFileSize) {
        error = path + " is larger than a state can be";
        return Loaded::Failed;
    }
    if (!ParseState(text, state, error)) {
        error = path + ": " + error;
        return Loaded::Failed;
    }
    return Loaded::Yes;
}

bool SaveState(const std::string& path, const XmlNode& state, std::string& error) {
    const std::string fresh = path + ".new";
    File file(fopen(fresh.c_str(), "we"));
    if (!file) {
        error = SystemError("cannot write", fresh);
        return false;
    }
    const std::string text = ToDocument(state);
    const bool written = fwrite(text.data(), 1, text.size(), file.get()) == text.size() &&
                         fflush(file.get()) == 0 && fsync(fileno(file.get())) == 0;
    file.reset();
    if (!written || rename(fresh.c_str(), path.c_str()) != 0) {
        error = SystemError("cannot write", path);
        unlink(fresh.c_str());
        return false;
    }
    SyncFolderOf(path);
    return true;
}

bool Merge(XmlNode& target, const XmlNode& change) {
    for (const auto& [name, value] : change.attributes) {
        std::string* known = target.FindAttribute(name);
        if (known == nullptr)
            return false;
        *known = value;
    }
    for (const XmlNode& row : change.children) {
        XmlNode* known = target.FindChild(row.name);
        if (known == nullptr || !Merge(*known, row))
            return false;
    }
    return true;
}

bool Override(XmlNode& state, const std::string& assignment) {
    const size_t equals = assignment.find('=');
    if (equals == std::string::npos)
        return false;
    XmlNode* node = &state;
    size_t start = 0;
    for (size_t dot; (dot = assignment.find('.', start)) < equals; start = dot + 1) {
        node = node->FindChild(assignment.substr(start, dot - start));
        if (node == nullptr)
            return false;
    }
    std::string* value = node->FindAttribute(assignment.substr(start, equals - start));
    if (value == nullptr)
        return false;
    *value = assignment.substr(equals + 1);
    return true;
}

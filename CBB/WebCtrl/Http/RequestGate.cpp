// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/RequestGate.h"

#include <algorithm>
#include <charconv>
#include <mongoose.h>
#include <optional>
#include <strings.h>

#include "CBB/Util/PlainText.h"
#include "CBB/WebCtrl/Http/ChunkedBody.h"

static_assert(MG_MAX_HTTP_HEADERS > kMaxHeaders, "the last one of the library's stays empty");

namespace {

using Verdict = RequestFrame::Verdict;

struct Refusal {
    int status;
    const char* reason;
};
using Finding = std::optional<Refusal>;

constexpr Refusal kBadLine{400, "The request line cannot be read"};
constexpr Refusal kBadHeader{400, "A header cannot be read"};
constexpr Refusal kControl{400, "Control characters are not allowed here"};
constexpr Refusal kBadLength{400, "Content-Length is no plain number"};
constexpr Refusal kTwoLengths{400, "Content-Length comes twice"};
constexpr Refusal kTwoFramings{400, "Content-Length and Transfer-Encoding exclude each other"};
constexpr Refusal kTwoCodings{400, "Transfer-Encoding comes twice"};
constexpr Refusal kOldCoding{400, "HTTP/1.0 has no Transfer-Encoding"};
constexpr Refusal kTwoHosts{400, "There can be one Host only"};
constexpr Refusal kEncodedNul{400, "The path has an encoded NUL"};
constexpr Refusal kBadChunks{400, "The chunks of the body cannot be read"};
constexpr Refusal kTooLarge{413, "The request is too large"};
constexpr Refusal kHeadTooLarge{431, "The head of the request is too large"};
constexpr Refusal kTooManyHeaders{431, "The request has too many headers"};
constexpr Refusal kUnknownCoding{501, "Only the transfer coding chunked is known"};
constexpr Refusal kUnknownVersion{505, "Only HTTP/1.0 and HTTP/1.1 are spoken here"};

bool Same(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

mg_str ToStr(std::string_view text) {
    return mg_str_n(text.data(), text.size());
}

bool IsControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

// The characters of a method or a header's name (RFC 9110, 5.6.2).
struct TokenCharacters {
    constexpr TokenCharacters() : has() {
        for (const char byte : std::string_view("0123456789abcdefghijklmnopqrstuvwxyz"
                                                "ABCDEFGHIJKLMNOPQRSTUVWXYZ!#$%&'*+-.^_`|~"))
            has[static_cast<unsigned char>(byte)] = true;
    }
    bool has[256];
};
constexpr TokenCharacters kToken;

bool IsToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char byte) {
        return kToken.has[static_cast<unsigned char>(byte)];
    });
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

// What the headers read so far say about the framing.
struct Framing {
    std::optional<size_t> length;
    bool chunked = false;
    bool closes = false;
    bool wantsContinue = false;
    std::optional<std::string_view> host;
};

Finding ReadLength(std::string_view value, Framing& framing) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(value.begin(), value.end(), number);
    if (value.empty() || error != std::errc() || end != value.end())
        return kBadLength;
    const auto length = static_cast<size_t>(std::min<uint64_t>(number, kMaxRequestBytes));
    if (framing.length.value_or(length) != length)
        return kTwoLengths;
    framing.length = length;
    return {};
}

Finding ReadCoding(std::string_view value, Framing& framing) {
    if (framing.chunked)
        return kTwoCodings;
    if (!Same(value, "chunked"))
        return kUnknownCoding;
    framing.chunked = true;
    return {};
}

Finding ReadHost(std::string_view value, Framing& framing) {
    if (framing.host)
        return kTwoHosts;
    framing.host = value;
    return {};
}

Finding ReadConnection(std::string_view value, Framing& framing) {
    for (;;) {
        const size_t comma = value.find(',');
        framing.closes = framing.closes || Same(Trim(value.substr(0, comma)), "close");
        if (comma == std::string_view::npos)
            return {};
        value.remove_prefix(comma + 1);
    }
}

Finding ReadExpect(std::string_view value, Framing& framing) {
    framing.wantsContinue = Same(value, "100-continue");
    return {};
}

struct FramingHeader {
    std::string_view name;
    Finding (*read)(std::string_view value, Framing& framing);
};
constexpr FramingHeader kFramingHeaders[] = {
    {"Content-Length", ReadLength},
    {"Transfer-Encoding", ReadCoding},
    {"Host", ReadHost},
    {"Connection", ReadConnection},
    {"Expect", ReadExpect},
};

Finding ReadHeader(std::string_view line, mg_http_header& header, Framing& framing) {
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos || !IsToken(line.substr(0, colon)))
        return kBadHeader; // a folded line is one too: it begins with a space
    const std::string_view name = line.substr(0, colon);
    const std::string_view value = Trim(line.substr(colon + 1));
    if (!IsPlainText(value) && std::any_of(value.begin(), value.end(), [](char byte) {
            return IsControl(byte) && byte != '\t';
        }))
        return kControl;
    header.name = ToStr(name);
    header.value = ToStr(value);
    for (const FramingHeader& known : kFramingHeaders)
        if (Same(name, known.name))
            return known.read(value, framing);
    return {};
}

// A target in absolute form is cut to its path; `authority` is what it names.
std::string_view PathOf(std::string_view target, std::string_view& authority) {
    for (const std::string_view scheme : {"http://", "https://"}) {
        if (!Same(target.substr(0, scheme.size()), scheme))
            continue;
        target.remove_prefix(scheme.size());
        const size_t slash = std::min(target.find_first_of("/?"), target.size());
        authority = target.substr(0, slash);
        return slash == target.size() ? std::string_view("/") : target.substr(slash);
    }
    return target;
}

Finding ReadRequestLine(std::string_view line, mg_http_message& message,
                        std::string_view& authority) {
    if (!IsPlainText(line) && std::any_of(line.begin(), line.end(), IsControl))
        return kControl;
    const size_t first = line.find(' ');
    const size_t last = line.rfind(' ');
    if (first == last) // one word or two: no version
        return kBadLine;
    const std::string_view method = line.substr(0, first);
    const std::string_view target = line.substr(first + 1, last - first - 1);
    const std::string_view version = line.substr(last + 1);
    if (!IsToken(method) || target.empty() || target.find(' ') != std::string_view::npos ||
        version.size() != 8 || version.substr(0, 5) != "HTTP/" || version[6] != '.')
        return kBadLine;
    if (version != "HTTP/1.1" && version != "HTTP/1.0")
        return kUnknownVersion;
    std::string_view path = PathOf(target, authority);
    const size_t query = path.find('?');
    if (query != std::string_view::npos)
        message.query = ToStr(path.substr(query + 1));
    path = path.substr(0, query);
    if (path.empty() || (path[0] != '/' && path != "*"))
        return kBadLine;
    if (path.find("%00") != std::string_view::npos)
        return kEncodedNul;
    message.method = ToStr(method);
    message.uri = ToStr(path);
    message.proto = ToStr(version);
    return {};
}

// The line at `at`, without its end; `at` moves behind it. The head has one, as it is whole.
std::string_view NextLine(std::string_view head, size_t& at) {
    const size_t end = head.find('\n', at);
    std::string_view line = head.substr(at, end - at);
    at = end + 1;
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return line;
}

Finding ReadHead(std::string_view head, mg_http_message& message, Framing& framing) {
    size_t at = 0;
    std::string_view authority;
    if (Finding found = ReadRequestLine(NextLine(head, at), message, authority))
        return found;
    size_t headers = 0;
    for (std::string_view line = NextLine(head, at); !line.empty(); line = NextLine(head, at)) {
        if (headers == kMaxHeaders)
            return kTooManyHeaders;
        if (Finding found = ReadHeader(line, message.headers[headers++], framing))
            return found;
    }
    const bool old = mg_strcmp(message.proto, mg_str("HTTP/1.0")) == 0;
    framing.closes = framing.closes || old;
    framing.wantsContinue = framing.wantsContinue && !old;
    if (!authority.empty() && framing.host && !Same(authority, *framing.host))
        return kTwoHosts;
    if (framing.chunked && framing.length)
        return kTwoFramings;
    if (framing.chunked && old)
        return kOldCoding;
    return {};
}

// The length of the head with its empty line; 0 when it has not come whole.
size_t HeadLength(std::string_view received) {
    for (size_t at = received.find('\n'); at != std::string_view::npos;
         at = received.find('\n', at + 1)) {
        const std::string_view next = received.substr(at + 1, 2);
        if (!next.empty() && next[0] == '\n')
            return at + 2;
        if (next == "\r\n")
            return at + 3;
    }
    return 0;
}

size_t EmptyLinesBefore(std::string_view received) {
    size_t at = 0;
    while (at < received.size() && (received[at] == '\n' || received.substr(at, 2) == "\r\n"))
        at += received[at] == '\n' ? 1 : 2;
    return at;
}

RequestFrame Refuse(RequestFrame frame, const Refusal& refusal) {
    frame.verdict = Verdict::Refuse;
    frame.status = refusal.status;
    frame.reason = refusal.reason;
    return frame;
}

// Looks at a head that is not whole. What can never become a request is refused now instead of
// after the timeout.
RequestFrame LookAtPartOfHead(std::string_view head, RequestFrame frame) {
    if (head.size() > kMaxHeadBytes)
        return Refuse(frame, kHeadTooLarge);
    if (std::any_of(head.begin(), head.end(), [](char byte) {
            return IsControl(byte) && byte != '\t' && byte != '\r' && byte != '\n';
        }))
        return Refuse(frame, kControl);
    return frame;
}

} // namespace

RequestFrame LookAtRequest(std::string_view received, mg_http_message& message) {
    const size_t begin = EmptyLinesBefore(received);
    const std::string_view request = received.substr(begin);
    RequestFrame frame;
    frame.isHead = Same(request.substr(0, 5), "HEAD ");
    const size_t headBytes = HeadLength(request);
    if (headBytes == 0)
        return LookAtPartOfHead(received, frame);
    if (headBytes > kMaxHeadBytes)
        return Refuse(frame, kHeadTooLarge);

    message = {};
    Framing framing;
    if (Finding found = ReadHead(request.substr(0, headBytes), message, framing))
        return Refuse(frame, *found);
    const std::string_view rest = request.substr(headBytes);
    size_t bodyBytes = framing.length.value_or(0);
    if (framing.chunked) {
        const ChunkedBody body = MeasureChunks(rest);
        if (body.state == ChunkedBody::State::Malformed)
            return Refuse(frame, kBadChunks);
        const bool whole = body.state == ChunkedBody::State::Whole;
        bodyBytes = whole ? body.wireBytes : std::max(rest.size(), body.dataBytes) + 1;
    }
    frame.bytes = begin + headBytes + bodyBytes;
    if (frame.bytes > kMaxRequestBytes)
        return Refuse(frame, kTooLarge);
    frame.wantsContinue = framing.wantsContinue && rest.empty();
    if (frame.bytes > received.size())
        return frame;
    frame.verdict = Verdict::Go;
    frame.chunked = framing.chunked;
    frame.closes = framing.closes;
    message.body = ToStr(rest.substr(0, bodyBytes));
    return frame;
}

// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/ChunkedBody.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace {

constexpr size_t kMaxSizeDigits = 8;
// More than is ever received. A larger size counts as this one, which can be added to in 32 bits.
constexpr size_t kTooLarge = 1 << 28;

bool IsControl(char byte) {
    return (static_cast<unsigned char>(byte) < 0x20 && byte != '\t') || byte == 0x7F;
}

// Walks the chunks and hands the data of each to `take`.
template <typename Take>
ChunkedBody Walk(std::string_view received, Take take) {
    using State = ChunkedBody::State;
    ChunkedBody body;
    size_t at = 0;
    // The line at `at`, past which it moves; only CRLF ends one.
    const auto nextLine = [&](std::string_view& line) {
        size_t end = at;
        while (end < received.size() && !IsControl(received[end]))
            ++end;
        if (end < received.size() && received[end] != '\r')
            return State::Malformed;
        if (end + 1 >= received.size())
            return State::Partial;
        if (received[end + 1] != '\n')
            return State::Malformed;
        line = received.substr(at, end - at);
        at = end + 2;
        return State::Whole;
    };
    std::string_view line;
    for (;;) {
        body.state = nextLine(line);
        if (body.state != State::Whole)
            return body;
        size_t size = 0;
        const auto [end, error] = std::from_chars(line.begin(), line.end(), size, 16);
        const auto digits = static_cast<size_t>(end - line.begin());
        // What stands behind the size is an extension, before which spaces are tolerated.
        const size_t behind = line.find_first_not_of(" \t", digits);
        if (error != std::errc() || digits > kMaxSizeDigits ||
            (behind != std::string_view::npos && line[behind] != ';')) {
            body.state = State::Malformed;
            return body;
        }
        if (size == 0)
            break;
        size = std::min(size, kTooLarge);
        body.dataBytes += size;
        const size_t left = received.size() - at;
        if (left < size + 2) {
            body.state = State::Partial;
            if ((left > size && received[at + size] != '\r'))
                body.state = State::Malformed;
            return body;
        }
        if (received[at + size] != '\r' || received[at + size + 1] != '\n') {
            body.state = State::Malformed;
            return body;
        }
        take(at, size);
        at += size + 2;
    }
    do
        body.state = nextLine(line);
    while (body.state == State::Whole && !line.empty()); // trailers
    body.wireBytes = at;
    return body;
}

} // namespace

ChunkedBody MeasureChunks(std::string_view received) {
    return Walk(received, [](size_t, size_t) {});
}

size_t JoinChunks(char* body, size_t wireBytes) {
    size_t joined = 0;
    Walk({body, wireBytes}, [&](size_t at, size_t size) {
        memmove(body + joined, body + at, size);
        joined += size;
    });
    return joined;
}

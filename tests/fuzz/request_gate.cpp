// SPDX-License-Identifier: GPL-2.0-only
// The input is what a connection has received. However it is cut, a request has one meaning.
#include <algorithm>
#include <mongoose.h>
#include <string>

#include "CBB/WebCtrl/Http/ChunkedBody.h"
#include "CBB/WebCtrl/Http/RequestGate.h"
#include "tests/fuzz/Recorder.h"

using Verdict = RequestFrame::Verdict;

// The text is a block of exactly its size, so that a sanitizer sees the first byte read beyond.
static RequestFrame Look(const std::string& text, mg_http_message&& message = {}) {
    return LookAtRequest(text, message);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    mg_http_message message;
    const RequestFrame frame = LookAtRequest(text, message);
    Require(Look(text + "GET / HTTP/1.1\r\n\r\n").verdict != Verdict::Wait ||
            frame.verdict == Verdict::Wait);
    if (frame.verdict != Verdict::Go) {
        Require(frame.verdict == Verdict::Wait || frame.status >= 400);
        return 0;
    }
    Require(frame.bytes <= size && message.uri.len > 0);
    const size_t step = std::max<size_t>(1, frame.bytes / 64);
    for (size_t cut = 0; cut < frame.bytes; cut += step)
        Require(Look(text.substr(0, cut)).verdict == Verdict::Wait);
    const RequestFrame again = Look(text.substr(0, frame.bytes) + "x");
    Require(again.verdict == Verdict::Go && again.bytes == frame.bytes);
    if (frame.chunked)
        Require(JoinChunks(message.body.buf, message.body.len) <= message.body.len);
    return 0;
}

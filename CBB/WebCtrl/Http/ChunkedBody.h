// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstddef>
#include <string_view>

// A body in chunks (RFC 9112, 7.1). Extensions and trailers are legal and ignored.
struct ChunkedBody {
    enum class State { Partial, Whole, Malformed };
    State state = State::Partial;
    size_t wireBytes = 0; // Whole: including the empty line that ends the body
    size_t dataBytes = 0; // of the chunks found so far
};

// Where the body at the start of `received` ends.
ChunkedBody MeasureChunks(std::string_view received);

// Moves the data of a whole body to its start. Returns how many bytes that are.
size_t JoinChunks(char* body, size_t wireBytes);

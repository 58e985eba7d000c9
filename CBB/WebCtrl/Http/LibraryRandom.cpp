// SPDX-License-Identifier: GPL-2.0-only
// The HTTP library lets its user define this function. The library's own reads 4 KiB of
// /dev/urandom for every few bytes, and without that device draws from rand(3).
#include <mongoose.h>
#include <sys/random.h>

bool mg_random(void* buffer, size_t size) {
    return getrandom(buffer, size, 0) == static_cast<ssize_t>(size);
}

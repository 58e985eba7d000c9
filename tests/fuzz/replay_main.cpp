// SPDX-License-Identifier: GPL-2.0-only
// Runs every file of one corpus folder through the target that it is linked with.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    int inputs = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : "", error)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        // A block of exactly its size, so that a sanitizer sees the first byte read beyond.
        const std::vector<uint8_t> input(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++inputs;
    }
    printf("%d inputs replayed from %s\n", inputs, argc > 1 ? argv[1] : "nowhere");
    return inputs > 0 ? 0 : 1;
}

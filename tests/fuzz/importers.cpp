// SPDX-License-Identifier: GPL-2.0-only
// The first byte picks a block of the record ('A' the first), the rest is its section's XML text.
#include "tests/fuzz/Recorder.h"
#include "tests/unit/config/Sections.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const Import import = kImporters[static_cast<uint8_t>(data[0] - 'A') % kImporters.size()];
    const Element element(std::string(data + 1, data + size));
    const auto record = std::make_unique<DeviceParaRecord>();
    const int result = import ? (Task().*import)(element.Get(), record.get()) : 0;
    Require(result >= -1 && result <= 1);
    return 0;
}

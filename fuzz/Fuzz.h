#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <fuzzer/FuzzedDataProvider.h>

// What the fuzz targets share. Those that need more than a text take their input apart with the FuzzedDataProvider:
// numbers come from the input's end and the text from its beginning, so that the seeds can be read.

/// The fuzzer's entry to a target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Stops the process, by which the fuzzer takes notice of the input, if a property does not hold.
inline void require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "This does not hold: %s\n", property);
    std::abort();
}

/// All bytes that are left.
inline QByteArray restOf(FuzzedDataProvider& input)
{
    return QByteArray::fromStdString(input.ConsumeRemainingBytesAsString());
}

#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <fuzzer/FuzzedDataProvider.h>

// Shared by the fuzz targets. A FuzzedDataProvider reads numbers from the end of the input and strings from its
// beginning, so the seeds are readable.

/// The entry point of a fuzz target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Aborts the process, so that the fuzzer reports the input, unless the property holds.
inline void require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "violated: %s\n", property);
    std::abort();
}

/// Returns the remaining input.
inline QByteArray restOf(FuzzedDataProvider& input)
{
    return QByteArray::fromStdString(input.ConsumeRemainingBytesAsString());
}

#pragma once

#include <cryptopp/filters.h>

#include <memory>

namespace Orv::Core::Encryption {

/// The cipher library's objects behind an encryptor: the keyed mode, and the padding filter around it.
class StreamTransformation {
public:
    /// Replaces the mode. The filter refers to the old one and goes with it.
    void setMode(std::unique_ptr<CryptoPP::StreamTransformation> newMode)
    {
        filter.reset();
        mode = std::move(newMode);
    }

    std::unique_ptr<CryptoPP::StreamTransformation> mode; // outlives the filter, being declared before it
    std::unique_ptr<CryptoPP::StreamTransformationFilter> filter;
};

} // namespace Orv::Core::Encryption

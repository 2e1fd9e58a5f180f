#pragma once

#include <Orv/Export.h>

#include <QByteArray>

namespace Orv::Utitlity {

/// Base64 (RFC 4648) for file names and URLs: "-" replaces "+", "~" replaces "/", and "_" replaces the padding "=".
///
/// Does not log. Throws only `std::bad_alloc`.
///
/// @warning A view: the array passed to the constructor has to outlive it. Use a temporary only within the expression:
/// `SafeBase64(file.readAll()).to()` is correct, `SafeBase64 text(file.readAll())` dangles.
class ORV_EXPORT SafeBase64 {
public:
    /// A view of `data`: raw bytes for `to()`, safe Base64 for `from()`.
    explicit SafeBase64(const QByteArray& data) : m_data(data) { }

    /// Encodes the bytes as safe Base64.
    QByteArray to() const;
    /// Decodes safe Base64. "/" is decoded like "~"; all other characters outside the alphabet, including "+", are
    /// skipped.
    QByteArray from() const;

private:
    const QByteArray& m_data;
};

} // namespace Orv::Utitlity

#pragma once

#include <Orv/Export.h>

#include <QByteArray>

namespace Orv::Utitlity {

/// Base64 (RFC 4648) for file names and URLs: "-" stands for "+", "~" for "/" and "_" for the padding "=".
///
/// Nothing is logged, or thrown but for lack of memory.
///
/// @warning A view: it refers to the array it is constructed from, which has to outlive it. With a temporary, use it
/// within the expression: `SafeBase64(file.readAll()).to()` is right, `SafeBase64 text(file.readAll())` dangles.
class ORV_EXPORT SafeBase64 {
public:
    /// A view of `data`: bytes for `to()`, safe text for `from()`.
    explicit SafeBase64(const QByteArray& data) : m_data(data) { }

    /// The safe text of the bytes.
    QByteArray to() const;
    /// The bytes of the safe text. A "/" is read as "~"; other characters that safe text does not have are skipped, a
    /// "+" among them.
    QByteArray from() const;

private:
    const QByteArray& m_data;
};

} // namespace Orv::Utitlity

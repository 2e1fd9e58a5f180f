#pragma once

#include <QByteArray>

namespace Orv::Utility {

/// An encoded path for a system call. A path with a zero in it would end there and name something else: an empty one
/// stands for it, which names nothing.
inline QByteArray nativePath(const QByteArray& encoded)
{
    return encoded.contains('\0') ? QByteArray("") : encoded;
}

} // namespace Orv::Utility

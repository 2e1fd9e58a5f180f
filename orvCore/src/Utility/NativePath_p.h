#pragma once

#include <QByteArray>

namespace Orv::Utility {

/// Returns an encoded path for system calls; empty if it contains NUL, which would truncate it to another path.
inline QByteArray nativePath(const QByteArray& encoded)
{
    return encoded.contains('\0') ? QByteArray("") : encoded;
}

} // namespace Orv::Utility

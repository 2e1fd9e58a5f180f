#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utitlity {

/// Short random strings for names. Not for secrets: the generator is `qrand()`, which the library does not seed. With
/// Qt 6, which has no `qrand()`, it is `QRandomGenerator::global()`, so results are not reproducible with a seed.
class ORV_EXPORT RandomString {
public:
    /// Returns `length` characters from A-Z, a-z and 0-9; empty if `length` is 0 or negative.
    static QString generateSimple(int length);
};

} // namespace Orv::Utitlity

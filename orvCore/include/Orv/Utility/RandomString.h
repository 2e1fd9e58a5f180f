#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utitlity {

/// Short random texts for names. Not for secrets: the generator is `qrand()`, which the library does not seed. Qt 6 has
/// no `qrand()`: with it, the generator is `QRandomGenerator::global()`, and no seed repeats a text.
class ORV_EXPORT RandomString {
public:
    /// `length` characters out of A-Z, a-z and 0-9; empty for a length of 0 or less.
    static QString generateSimple(int length);
};

} // namespace Orv::Utitlity

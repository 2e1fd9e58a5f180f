#pragma once

#include <Orv/Core/Encryption/Algorithm.h>
#include <Orv/Export.h>

#include <QByteArray>
#include <QString>

namespace Orv::Core::Encryption {

/// Names and lengths of the algorithms, keys from passwords, random keys and salts.
///
/// Keys, salts and passwords are raw bytes, never hex or text: how a password's characters become bytes is the
/// caller's choice, and has to be the same on every client. Derivation gives the same key on every platform.
///
/// Everything here is reentrant. Failures of the cipher library, such as no random source, come as its exceptions.
class ORV_EXPORT Key {
public:
    /// The iteration count that `generateSimple` uses.
    static constexpr int ITERATION_SIMPLE = 1000;
    /// The iteration count that callers pass to `generateAdvanced`.
    static constexpr int ITERATION_ADVANCED = 50000;

    /// The family: "DES", "TripleDES" (two and three keys), "AES"; "NO" for every other value.
    static QString name(Algorithm algorithm);

    /// The algorithm of a family name (exact, case-sensitive) and a key length in bytes; `None` if there is none.
    static Algorithm algorithmFromName(const QString& name, int keyLength);

    /// The algorithm of the code that the Windows client stores (1 DES, 2 triple DES, 3 AES) and a key length in
    /// bytes. The length decides only where it has to: 1 is `Des` with any length, 2 is `Des3` with any length but 16.
    /// `None` for an AES length that does not exist and for every other code.
    static Algorithm algorithmFromWindows(int windowsAlgorithm, int keyLength);

    /// The key length in bytes; 0 for `None` and for values outside the enumeration.
    static unsigned short length(Algorithm algorithm);
    /// The IV length in bytes, which is the cipher's block size; 0 as for `length`.
    static unsigned short ivLength(Algorithm algorithm);

    /// PBKDF2-HMAC-SHA1 (RFC 8018) of `password`, as long as the algorithm's key; empty if it has no key length.
    ///
    /// An empty `salt` stands for eight zero bytes, which is not the same as a salt of no length. `iterations` is used
    /// as it is: the cipher library takes a count of 0 for 1, and a negative one for billions.
    static QByteArray generate(Algorithm algorithm, const QByteArray& password, const QByteArray& salt, int iterations);

    /// `generate` without a salt and with `ITERATION_SIMPLE` iterations.
    static QByteArray generateSimple(Algorithm algorithm, const QByteArray& password);

    /// The same as `generate`. Callers pass `ITERATION_ADVANCED` and a salt of their own, see `randomSalt`.
    static QByteArray generateAdvanced(
        Algorithm algorithm, const QByteArray& password, const QByteArray& salt, int iterations);

    /// A 16-byte key for data that stays on this machine: PBKDF1 with SHA-1 (RFC 8018), no salt, 100 iterations.
    static QByteArray generateLocal(const QByteArray& password);

    /// `size` bytes from the operating system's non-blocking generator.
    static QByteArray random(unsigned short size);
    /// A random key of the algorithm's length; empty if it has none.
    static QByteArray randomKey(Algorithm algorithm);
    /// 8 random bytes.
    static QByteArray randomSalt();
};

} // namespace Orv::Core::Encryption

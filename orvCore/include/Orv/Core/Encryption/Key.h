#pragma once

#include <Orv/Core/Encryption/Algorithm.h>
#include <Orv/Export.h>

#include <QByteArray>
#include <QString>

namespace Orv::Core::Encryption {

/// Names and lengths of the algorithms, key derivation from passwords, random keys and salts.
///
/// Keys, salts and passwords are raw bytes, never hex or text. The caller chooses the encoding of a password; it has to
/// be the same on every client. Derivation yields the same key on every platform.
///
/// All functions are reentrant. Failures of the cipher library, such as a missing random source, throw its exceptions.
class ORV_EXPORT Key {
public:
    /// The iteration count that `generateSimple` uses.
    static constexpr int ITERATION_SIMPLE = 1000;
    /// The iteration count that callers pass to `generateAdvanced`.
    static constexpr int ITERATION_ADVANCED = 50000;

    /// Returns the family: "DES", "TripleDES" (two and three keys), "AES"; "NO" for every other value.
    static QString name(Algorithm algorithm);

    /// Returns the algorithm with this family name (exact, case-sensitive) and key length in bytes; `None` if there is
    /// none.
    static Algorithm algorithmFromName(const QString& name, int keyLength);

    /// Returns the algorithm with this code of the Windows client (1 DES, 2 triple DES, 3 AES) and key length in bytes.
    /// Code 1 is `Des` with any length; code 2 is `Des112` with 16 bytes and `Des3` with any other length. `None` for
    /// an invalid AES key length and for every other code.
    static Algorithm algorithmFromWindows(int windowsAlgorithm, int keyLength);

    /// Returns the key length in bytes; 0 for `None` and for values outside the enumeration.
    static unsigned short length(Algorithm algorithm);
    /// Returns the IV length in bytes, which is the cipher's block size; 0 like `length`.
    static unsigned short ivLength(Algorithm algorithm);

    /// Returns PBKDF2-HMAC-SHA1 (RFC 8018) of `password`, with the algorithm's key length; empty if that is 0.
    ///
    /// An empty `salt` stands for eight zero bytes, which yields a different key than a zero-length salt. `iterations`
    /// is not validated: 0 counts as 1, and a negative count as billions.
    static QByteArray generate(Algorithm algorithm, const QByteArray& password, const QByteArray& salt, int iterations);

    /// Calls `generate` with an empty salt and `ITERATION_SIMPLE` iterations.
    static QByteArray generateSimple(Algorithm algorithm, const QByteArray& password);

    /// Same as `generate`. Pass `ITERATION_ADVANCED` and a salt of your own: see `randomSalt`.
    static QByteArray generateAdvanced(
        Algorithm algorithm, const QByteArray& password, const QByteArray& salt, int iterations);

    /// Returns a 16-byte key for data that stays on this machine: PBKDF1 with SHA-1 (RFC 8018), no salt, 100
    /// iterations.
    static QByteArray generateLocal(const QByteArray& password);

    /// Returns `size` random bytes from the operating system's non-blocking generator.
    static QByteArray random(unsigned short size);
    /// Returns a random key of the algorithm's key length; empty if that is 0.
    static QByteArray randomKey(Algorithm algorithm);
    /// Returns 8 random bytes.
    static QByteArray randomSalt();
};

} // namespace Orv::Core::Encryption

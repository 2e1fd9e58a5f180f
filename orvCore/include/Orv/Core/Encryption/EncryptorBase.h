#pragma once

#include <Orv/Core/Encryption/Algorithm.h>
#include <Orv/Export.h>

#include <QByteArray>
#include <QIODevice>
#include <QSharedPointer>
#include <QVector>

#include <cstddef>
#include <memory>

namespace Orv::Core::Encryption {

class StreamTransformation;

/// Reads a source device and returns its bytes encrypted or decrypted, in chunks of any size.
///
/// The stream has no header and no IV: it is the output of the cipher mode with PKCS #7 padding (RFC 5652, 6.3). The
/// IV is stored or sent separately. Use an object in this order: `create`, `setKey`, `setIv`, `setSource`, `init()`,
/// then `writeTo`, or `readData` until `atEnd()`. For another stream, set what changes and call `init()` again.
///
/// @warning CBC with padding detects neither tampering nor every wrong key (about one in 256 goes unnoticed). Store a
/// MAC or a hash of the data with it, and check that. Use DES and ECB for existing data only: DES keys can be
/// searched exhaustively, and ECB shows which blocks are equal.
///
/// Not thread-safe; separate objects are independent. Nothing is logged. Exceptions of the cipher library (Crypto++,
/// all of them `std::exception`) reach the caller: a wrong length of key or IV from `init()`, a damaged stream or a
/// wrong key from the calls that read. The object's copy of the key and the data it holds are wiped when it is
/// destroyed.
class ORV_EXPORT EncryptorBase {
public:
    /// Returns a new encryptor, owned by the caller; null for `None` and for values outside the enumeration.
    static EncryptorBase* create(Algorithm algorithm, bool encrypt, Type type);

    virtual ~EncryptorBase();
    EncryptorBase(const EncryptorBase&) = delete;
    EncryptorBase& operator=(const EncryptorBase&) = delete;

    /// The algorithm passed to `create` or to the constructor.
    Algorithm algorithm() const { return m_algorithm; }

    /// Sets the device to read from. It is shared, has to be open, and is neither opened nor closed by this class.
    void setSource(QSharedPointer<QIODevice> source);

    /// Sets the raw key. `init()` checks its length.
    void setKey(const QByteArray& key);

    /// Sets the IV, raw bytes. With `Cbc`, an empty IV generates a random one; read it from `iv()` and store it for
    /// decryption. A second such call appends, and `init()` then throws. `Ecb` stores the IV and does not use it.
    void setIv(const QByteArray& iv);
    /// The stored IV, raw bytes.
    const QByteArray& iv() const { return m_iv; }

    /// Creates the cipher with the current key and IV and starts a new stream. False if the type is neither `Cbc` nor
    /// `Ecb`. Throws the cipher library's exception for a key or IV of a wrong length.
    virtual bool init();

    /// Appends a random IV of the cipher's length to the stored one.
    virtual void generateIv() = 0;

    /// Writes up to `maxSize` transformed bytes to `data` and returns their number.
    ///
    /// Fewer bytes than `maxSize`, or none, do not mean the end of the stream: only `atEnd()` does. After the end of
    /// the source has been transformed, the next call returns the whole remainder, regardless of `maxSize`: less than
    /// three cipher blocks. `data` needs room for `maxSize` bytes and at least 48.
    ///
    /// Reads the source once, for `maxSize` minus the bytes buffered by earlier calls, rounded up to whole blocks. A
    /// QBuffer opened in binary mode is read directly from its memory, without calling `read()`; its position advances.
    /// Requires a source and a successful `init()`.
    ///
    /// A failing source yields no bytes and may look like the end of the stream: check `sourceFailed()` before you
    /// trust the result. The source ends where its `atEnd()` returns true. Sockets, pipes and processes also return
    /// true while no data has arrived: buffer their data first.
    ///
    /// While decrypting, a stream with an incomplete block or wrong padding throws the cipher library's exception in
    /// the call that reaches the end of the source; `atEnd()` then stays false. After an exception of the cipher
    /// library, call `init()` before using the object again. An exception of the source leaves the object unchanged.
    qint64 readData(char* data, qint64 maxSize);

    /// Has the same effect as `encryptors[i]->readData(data[i], maxSize)` for each `i`, in bytes and results, but is
    /// faster. Returns the results in order.
    ///
    /// Encryptors that encrypt with the same cipher and key in `Cbc` mode advance in lockstep, up to eight at a time,
    /// so that the processor works on independent blocks: two to three times as fast on one core with AES. All others
    /// are read one after the other. Keys, algorithms, directions and lengths may be mixed freely.
    ///
    /// Sources are read in the order of the list. Throws `Exception::Base`, before reading anything, if the lists
    /// differ in length or an object is listed twice. After any other exception, call `init()` on every encryptor
    /// before using it again.
    static QVector<qint64> readTogether(
        const QVector<EncryptorBase*>& encryptors, const QVector<char*>& data, qint64 maxSize);

    /// Writes the rest of the stream to `destination` in chunks of 64 KiB, and flushes it if it is a file.
    ///
    /// Returns false if the source fails, if it yields no data before its end, or if the destination accepts too few
    /// bytes or cannot be flushed. Data already written stays there; `init()` starts a new stream. Neither device is
    /// closed. Compare `bytesRead()` with the expected size: a source that became shorter is not an error. Throws the
    /// exceptions of `readData`.
    bool writeTo(QIODevice& destination);

    /// Whether the whole stream has been returned.
    bool atEnd() const;

    /// Whether the source failed since `init()`: it was not open, a read returned -1, or a file reported an error.
    bool sourceFailed() const { return m_sourceFailed; }

    /// The number of bytes read from the source since `init()`. Compare it with the expected size: a file that is
    /// truncated during the read, or a special file of size 0, yields a valid but shorter stream.
    qint64 bytesRead() const { return m_bytesRead; }

protected:
    /// Encrypts if `encrypt` is true, otherwise decrypts.
    EncryptorBase(Algorithm algorithm, bool encrypt, Type type);

    /// Creates the mode for one of the cipher library's block ciphers, then calls EncryptorBase::init().
    template <class Cipher> bool initMode();
    /// Sets the cipher's block size in bytes. Each cipher class calls it in its constructor.
    void setBlockSize(unsigned short size) { m_blockSize = size; }
    /// Appends `size` random bytes to the stored IV. Without a random source, throws the cipher library's exception.
    void appendRandomIv(unsigned short size);

private:
    struct Input;
    struct Pass;

    Pass beginRead(char* data, qint64 maxSize);
    qint64 finishRead(Pass& pass);
    Input readSource(qint64 size);
    Input readMemory(qint64 size);
    qint64 returnOutput(char* data, qint64 room);
    void transformToOutput(std::size_t size);
    void transformLast(bool atEnd);
    std::size_t readyBytes(std::size_t available) const;

    const Algorithm m_algorithm;
    const Type m_type;
    const bool m_encrypt;
    bool m_paddingDone = false;
    bool m_sourceFailed = false;
    unsigned short m_blockSize = 0;
    qint64 m_bytesRead = 0;
    qint64 m_memoryPosition = -1;
    std::unique_ptr<StreamTransformation> m_transformation;
    QSharedPointer<QIODevice> m_source;
    QByteArray m_iv;
};

} // namespace Orv::Core::Encryption

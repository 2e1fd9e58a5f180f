#pragma once

#include <Orv/Core/Encryption/Algorithm.h>
#include <Orv/Export.h>

#include <QByteArray>
#include <QIODevice>
#include <QSharedPointer>

#include <memory>

namespace Orv::Core::Encryption {

class StreamTransformation;

/// Reads a source device and hands out its bytes encrypted or decrypted, in portions of any size.
///
/// The stream has no header and no IV: it is the output of the cipher mode with PKCS #7 padding (RFC 5652, 6.3). The
/// IV travels beside it. One object serves one stream, in this order: `create`, `setKey`, `setIv`, `setSource`,
/// `init()`, then `readData` until `atEnd()`.
///
/// Not thread-safe; separate objects are independent. Nothing is logged. Exceptions of the cipher library (Crypto++,
/// all of them `std::exception`) reach the caller: a wrong length of key or IV out of `init()`, a damaged stream or a
/// wrong key out of `readData`. Padding is no proof that data is whole: one wrong key in about 256 goes unnoticed.
class ORV_EXPORT EncryptorBase {
public:
    /// A new encryptor, owned by the caller; null for `None` and for values outside the enumeration.
    static EncryptorBase* create(Algorithm algorithm, bool encrypt, Type type);

    /// Encrypts if `encrypt` is set, else decrypts. For the classes that know a cipher; others call `create`.
    EncryptorBase(Algorithm algorithm, bool encrypt, Type type);
    virtual ~EncryptorBase();
    EncryptorBase(const EncryptorBase&) = delete;
    EncryptorBase& operator=(const EncryptorBase&) = delete;

    /// What the object was made for.
    Algorithm algorithm() const { return m_algorithm; }

    /// The device to read from. It is shared, has to be open, and is neither opened nor closed here.
    void setSource(QSharedPointer<QIODevice> source);

    /// The raw key. Its length is checked by `init()`.
    void setKey(const QByteArray& key);

    /// The IV. An empty one with `Cbc` appends a random IV to the stored one (which is empty at first), to be read
    /// from `iv()` and kept for decryption. `Ecb` stores whatever is given and does not use it.
    void setIv(const QByteArray& iv);
    /// The stored IV, raw bytes.
    const QByteArray& iv() const { return m_iv; }

    /// Makes the cipher from the key and the IV set before. False if the type is neither `Cbc` nor `Ecb`. Throws the
    /// cipher library's exception for a key or IV of a wrong length.
    virtual bool init();

    /// Appends a random IV of the cipher's length to the stored one.
    virtual void generateIv() = 0;

    /// Puts up to `maxSize` transformed bytes into `data` and returns how many.
    ///
    /// Fewer bytes than `maxSize`, even none, do not mean the end: only `atEnd()` does. Once the end of the source has
    /// been transformed, the next call delivers all that is left at once, whatever its `maxSize`: less than three
    /// cipher blocks. `data` needs room for `maxSize` bytes, and for 48 at least.
    ///
    /// The source is asked once for `maxSize` less what is held from earlier calls, rounded up to whole blocks. A
    /// source that fails gives no bytes; ask it for its error. Needs a source and a successful `init()`.
    ///
    /// A source is at its end when its `atEnd()` says so. That of a socket, a pipe or a process says so whenever
    /// nothing has come yet: collect what they send first.
    ///
    /// While decrypting, a stream that is not made of whole blocks or ends in a wrong padding throws the cipher
    /// library's exception in the call that meets the end of the source; `atEnd()` then stays false. After an exception
    /// the object is of no further use.
    qint64 readData(char* data, qint64 maxSize);

    /// Whether everything has been handed out.
    bool atEnd() const { return m_buffer.isEmpty() && m_finished; }

protected:
    ///@{
    /// For the cipher classes: what was set.
    const QByteArray& key() const { return m_key; }
    bool isEncrypting() const { return m_encrypt; }
    Type type() const { return m_type; }
    ///@}
    /// Where `init()` of a cipher class puts the keyed mode, before it calls the one here.
    StreamTransformation& transformation() { return *m_transformation; }
    /// The cipher's block size in bytes. Each cipher class sets it in its constructor.
    void setBlockSize(unsigned short size) { m_blockSize = size; }
    /// Appends `size` random bytes to the stored IV. Without a random source, throws the cipher library's exception.
    void appendRandomIv(unsigned short size);

private:
    qint64 transformFromSource(qint64 request, char* data, qint64 room);
    int readyBytes(int available) const;
    int finishThroughFilter(int buffered, int whole, int available, bool atEnd);

    const Algorithm m_algorithm;
    const Type m_type;
    const bool m_encrypt;
    bool m_finished = false;
    std::unique_ptr<StreamTransformation> m_transformation;
    QByteArray m_buffer; // transformed and not yet handed out
    unsigned short m_blockSize = 0;
    QSharedPointer<QIODevice> m_source;
    QByteArray m_iv;
    QByteArray m_key;
};

} // namespace Orv::Core::Encryption

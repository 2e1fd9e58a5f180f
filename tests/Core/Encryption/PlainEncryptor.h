#pragma once

#include "Utility/NarrowDevice.h"

#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Key.h>

#include <cryptopp/aes.h>
#include <cryptopp/des.h>
#include <cryptopp/filters.h>
#include <cryptopp/modes.h>

#include <cmath>
#include <vector>

/// What a stream is encrypted or decrypted with.
struct Cipher {
    Orv::Core::Encryption::Algorithm algorithm;
    Orv::Core::Encryption::Type type;
    QByteArray key;
    QByteArray iv;
    bool encrypt = true;

    /// The way back.
    Cipher inverse() const { return {algorithm, type, key, iv, !encrypt}; }
};

inline std::unique_ptr<Orv::Core::Encryption::EncryptorBase> makeEncryptor(
    const Cipher& cipher, const QSharedPointer<QIODevice>& source)
{
    using Orv::Core::Encryption::EncryptorBase;
    std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(cipher.algorithm, cipher.encrypt, cipher.type));
    encryptor->setKey(cipher.key);
    encryptor->setIv(cipher.iv);
    encryptor->setSource(source);
    if (!encryptor->init())
        qFatal("there is such a cipher");
    return encryptor;
}

/// The plain way to encrypt a stream, everything through the cipher library's own filter: what each call of
/// EncryptorBase::readData has to agree with.
class PlainEncryptor {
public:
    PlainEncryptor(const Cipher& cipher, QSharedPointer<QIODevice> source)
        : m_mode(makeMode(cipher)), m_filter(*m_mode, nullptr, CryptoPP::BlockPaddingSchemeDef::PKCS_PADDING),
          m_source(std::move(source)), m_blockSize(Orv::Core::Encryption::Key::ivLength(cipher.algorithm))
    {
    }

    qint64 readData(char* data, qint64 maxSize)
    {
        if (m_source->atEnd() && m_finished)
            return take(data, m_buffer.size());
        const double shortfall = std::max<qint64>(0, maxSize - m_buffer.size());
        const QByteArray chunk = m_source->read(static_cast<qint64>(std::ceil(shortfall / m_blockSize)) * m_blockSize);
        m_filter.Put2(reinterpret_cast<const CryptoPP::byte*>(chunk.constData()), chunk.size(), 0, true);
        if (m_source->atEnd()) {
            m_filter.MessageEnd(-1, true);
            m_finished = true;
        }
        char scratch[1024];
        while (const auto got = m_filter.Get(reinterpret_cast<CryptoPP::byte*>(scratch), sizeof scratch))
            m_buffer.append(scratch, static_cast<int>(got));
        return take(data, static_cast<int>(std::min<qint64>(maxSize, m_buffer.size())));
    }

    bool atEnd() const { return m_buffer.isEmpty() && m_finished; }

private:
    using Mode = std::unique_ptr<CryptoPP::SymmetricCipher>;

    template <class Block> static Mode modeOf(const Cipher& cipher)
    {
        using CryptoPP::CBC_Mode;
        using CryptoPP::ECB_Mode;
        if (cipher.type == Orv::Core::Encryption::Cbc)
            return cipher.encrypt ? Mode(new typename CBC_Mode<Block>::Encryption)
                                  : Mode(new typename CBC_Mode<Block>::Decryption);
        return cipher.encrypt ? Mode(new typename ECB_Mode<Block>::Encryption)
                              : Mode(new typename ECB_Mode<Block>::Decryption);
    }

    static Mode makeMode(const Cipher& cipher)
    {
        Mode (*const makers[])(const Cipher&) = {
            modeOf<CryptoPP::DES>, modeOf<CryptoPP::DES_EDE2>, modeOf<CryptoPP::DES_EDE3>, modeOf<CryptoPP::AES>};
        Mode mode = makers[std::min<int>(cipher.algorithm, Orv::Core::Encryption::Aes128)](cipher);
        const auto bytes = [](const QByteArray& array) {
            return reinterpret_cast<const CryptoPP::byte*>(array.constData());
        };
        const CryptoPP::ConstByteArrayParameter iv(bytes(cipher.iv), cipher.iv.size()); // of no use to ECB
        mode->SetKey(bytes(cipher.key), cipher.key.size(), CryptoPP::MakeParameters(CryptoPP::Name::IV(), iv, false));
        return mode;
    }

    qint64 take(char* data, int count)
    {
        std::copy_n(m_buffer.constData(), count, data);
        m_buffer.remove(0, count);
        return count;
    }

    Mode m_mode;
    CryptoPP::StreamTransformationFilter m_filter;
    QSharedPointer<QIODevice> m_source;
    int m_blockSize;
    QByteArray m_buffer;
    bool m_finished = false;
};

/// What a caller sees of one call of readData.
struct Outcome {
    QByteArray bytes;
    QByteArray error;
    bool atEnd = false;

    bool operator==(const Outcome& other) const
    {
        return bytes == other.bytes && error == other.error && atEnd == other.atEnd;
    }
};

template <class Encryptor> Outcome outcomeOf(Encryptor& encryptor, qint64 maxSize)
{
    Outcome outcome;
    QByteArray data(static_cast<int>(maxSize) + 5000, '\0');
    try {
        outcome.bytes = data.left(static_cast<int>(encryptor.readData(data.data(), maxSize)));
    } catch (const std::exception& exception) {
        outcome.error = exception.what();
    }
    outcome.atEnd = encryptor.atEnd();
    return outcome;
}

/// A stream, in what portions it comes and is asked for, and by what it grows.
struct StreamCase {
    Cipher cipher;
    QByteArray content;
    bool isSequential = false;
    std::vector<int> portions;
    std::vector<int> requests;
    int growingCall = 0;
    QByteArray growth;
};

/// How an encryptor differs from the plain one, call by call, or null. `whole` gets all its bytes if it comes to its
/// end without an error or growth, and stays null otherwise.
inline const char* differenceFromPlain(const StreamCase& stream, QByteArray& whole)
{
    constexpr int MostCalls = 200;
    constexpr qint64 RoomAtTheEnd = 47; // less than three of the largest blocks
    const auto source = QSharedPointer<NarrowDevice>::create(QIODevice::ReadOnly, stream.isSequential);
    const auto plainSource = QSharedPointer<NarrowDevice>::create(QIODevice::ReadOnly, stream.isSequential);
    for (const auto& each : {source, plainSource}) {
        each->content = stream.content;
        each->portions = stream.portions;
    }
    const auto encryptor = makeEncryptor(stream.cipher, source);
    PlainEncryptor plain(stream.cipher, plainSource);
    QByteArray all("");
    bool isWhole = true;
    for (int call = 0; call < MostCalls && !(encryptor->atEnd() && call > stream.growingCall); ++call) {
        const qint64 maxSize = stream.requests.empty() ? 4096 : stream.requests[size_t(call) % stream.requests.size()];
        const Outcome outcome = outcomeOf(*encryptor, maxSize);
        if (!(outcome == outcomeOf(plain, maxSize)))
            return "a call has another outcome than the plain one";
        if (source->requests != plainSource->requests)
            return "the source is asked for something else";
        if (outcome.bytes.size() > std::max(maxSize, RoomAtTheEnd))
            return "the bytes do not fit into the room for them";
        all += outcome.bytes;
        isWhole = isWhole && outcome.error.isEmpty();
        if (call == stream.growingCall && stream.isSequential && !stream.growth.isEmpty()) {
            isWhole = false;
            source->content += stream.growth;
            plainSource->content += stream.growth;
        }
    }
    if (isWhole && encryptor->atEnd())
        whole = all;
    return nullptr;
}

#pragma once

#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Key.h>

#include <cryptopp/aes.h>
#include <cryptopp/des.h>
#include <cryptopp/filters.h>
#include <cryptopp/modes.h>

#include <cmath>
#include <ostream>

/// The plain way to encrypt a stream, everything through the cipher library's own filter: what each call of
/// EncryptorBase::readData has to agree with.
class PlainEncryptor {
public:
    using Algorithm = Orv::Core::Encryption::Algorithm;
    using Type = Orv::Core::Encryption::Type;

    PlainEncryptor(Algorithm algorithm, bool encrypt, Type type, const QByteArray& key, const QByteArray& iv,
        QSharedPointer<QIODevice> source)
        : m_mode(makeMode(algorithm, encrypt, type, key, iv)),
          m_filter(*m_mode, nullptr, CryptoPP::BlockPaddingSchemeDef::PKCS_PADDING), m_source(std::move(source)),
          m_blockSize(Orv::Core::Encryption::Key::ivLength(algorithm))
    {
    }

    qint64 readData(char* data, qint64 maxSize)
    {
        if (m_source->atEnd() && m_finished) {
            const int size = m_buffer.size();
            std::copy_n(m_buffer.constData(), size, data);
            m_buffer.clear();
            return size;
        }
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
        const auto count = static_cast<int>(std::min<qint64>(maxSize, m_buffer.size()));
        std::copy_n(m_buffer.constData(), count, data);
        m_buffer.remove(0, count);
        return count;
    }

    bool atEnd() const { return m_buffer.isEmpty() && m_finished; }

private:
    using Mode = std::unique_ptr<CryptoPP::StreamTransformation>;

    template <class ModeType> static Mode keyed(const QByteArray& key, const QByteArray& iv)
    {
        auto mode = std::make_unique<ModeType>();
        const auto* bytes = reinterpret_cast<const CryptoPP::byte*>(key.constData());
        if (iv.isEmpty())
            mode->SetKey(bytes, key.size());
        else
            mode->SetKeyWithIV(bytes, key.size(), reinterpret_cast<const CryptoPP::byte*>(iv.constData()), iv.size());
        return mode;
    }

    template <class Cipher> static Mode modeOf(bool encrypt, Type type, const QByteArray& key, const QByteArray& iv)
    {
        if (type == Orv::Core::Encryption::Cbc)
            return encrypt ? keyed<typename CryptoPP::CBC_Mode<Cipher>::Encryption>(key, iv)
                           : keyed<typename CryptoPP::CBC_Mode<Cipher>::Decryption>(key, iv);
        return encrypt ? keyed<typename CryptoPP::ECB_Mode<Cipher>::Encryption>(key, {})
                       : keyed<typename CryptoPP::ECB_Mode<Cipher>::Decryption>(key, {});
    }

    static Mode makeMode(Algorithm algorithm, bool encrypt, Type type, const QByteArray& key, const QByteArray& iv)
    {
        switch (algorithm) {
        case Orv::Core::Encryption::Des:
            return modeOf<CryptoPP::DES>(encrypt, type, key, iv);
        case Orv::Core::Encryption::Des112:
            return modeOf<CryptoPP::DES_EDE2>(encrypt, type, key, iv);
        case Orv::Core::Encryption::Des3:
            return modeOf<CryptoPP::DES_EDE3>(encrypt, type, key, iv);
        default:
            return modeOf<CryptoPP::AES>(encrypt, type, key, iv);
        }
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

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    return stream << outcome.bytes.size() << " bytes " << outcome.bytes.toHex().constData() << " error '"
                  << outcome.error.constData() << "' at end " << outcome.atEnd;
}

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

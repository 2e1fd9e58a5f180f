#pragma once

#include "Core/Encryption/Bytes_p.h"

#include <Orv/Core/Encryption/EncryptorBase.h>

#include <cryptopp/aes.h>
#include <cryptopp/des.h>
#include <cryptopp/filters.h>
#include <cryptopp/modes.h>

#include <cmath>
#include <memory>

/// The cipher, its parameters, and the direction.
struct Cipher {
    Orv::Core::Encryption::Algorithm algorithm;
    Orv::Core::Encryption::Type type;
    QByteArray key;
    QByteArray iv;
    bool encrypt = true;

    /// The opposite direction.
    Cipher inverse() const { return {algorithm, type, key, iv, !encrypt}; }
};

/// The reference for EncryptorBase::readData(): passes the whole stream through the cipher library's own filter. Each
/// call has to have the same outcome. Only the block size of the cipher matters, so DES and AES are enough.
class PlainEncryptor {
public:
    PlainEncryptor(const Cipher& cipher, QSharedPointer<QIODevice> source)
        : m_mode(cipher.algorithm == Orv::Core::Encryption::Des ? makeMode<CryptoPP::DES>(cipher)
                                                                : makeMode<CryptoPP::AES>(cipher)),
          m_filter(*m_mode, nullptr, CryptoPP::BlockPaddingSchemeDef::PKCS_PADDING), m_source(std::move(source))
    {
    }

    qint64 readData(char* data, qint64 maxSize)
    {
        if (m_source->atEnd() && m_finished)
            return take(data, m_buffer.size());
        const double shortfall = std::max<qint64>(0, maxSize - m_buffer.size());
        const auto blockSize = m_mode->MandatoryBlockSize();
        const QByteArray chunk = m_source->read(static_cast<qint64>(std::ceil(shortfall / blockSize)) * blockSize);
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

    template <class Block> static Mode makeMode(const Cipher& cipher)
    {
        using CryptoPP::CBC_Mode;
        using CryptoPP::ECB_Mode;
        Mode mode;
        if (cipher.type == Orv::Core::Encryption::Cbc && cipher.encrypt)
            mode = std::make_unique<typename CBC_Mode<Block>::Encryption>();
        else if (cipher.type == Orv::Core::Encryption::Cbc)
            mode = std::make_unique<typename CBC_Mode<Block>::Decryption>();
        else if (cipher.encrypt)
            mode = std::make_unique<typename ECB_Mode<Block>::Encryption>();
        else
            mode = std::make_unique<typename ECB_Mode<Block>::Decryption>();
        using Orv::Core::Encryption::bytes;
        const CryptoPP::ConstByteArrayParameter iv(bytes(cipher.iv), cipher.iv.size()); // ignored by ECB
        mode->SetKey(bytes(cipher.key), cipher.key.size(), CryptoPP::MakeParameters(CryptoPP::Name::IV(), iv, false));
        return mode;
    }

    qint64 take(char* data, int count)
    {
        std::copy_n(m_buffer.constData(), count, data);
        m_buffer.remove(0, count);
        return count;
    }

    const Mode m_mode;
    CryptoPP::StreamTransformationFilter m_filter;
    const QSharedPointer<QIODevice> m_source;
    QByteArray m_buffer;
    bool m_finished = false;
};

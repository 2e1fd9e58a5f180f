#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>

#include "Core/Encryption/PlainEncryptor.h"
#include "KnownAnswers.h"
#include "Log/ChildProcess.h"

#include <QBuffer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <numeric>
#include <random>

#include <sys/resource.h>

using namespace Orv::Core::Encryption;

namespace {

const Algorithm Algorithms[] = {Des, Des112, Des3, Aes128, Aes192, Aes256};
const Cipher Aes = {Aes128, Cbc, QByteArray(16, 'k'), QByteArray(16, 'i')};

QSharedPointer<QIODevice> bufferOf(const QByteArray& content)
{
    QSharedPointer<QBuffer> buffer(new QBuffer);
    buffer->setData(content);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

QByteArray readAll(EncryptorBase& encryptor)
{
    QByteArray all;
    QByteArray portion(4096 + 64, '\0');
    while (!encryptor.atEnd())
        all.append(portion.constData(), static_cast<int>(encryptor.readData(portion.data(), 4096)));
    return all;
}

QByteArray transformed(const Cipher& cipher, const QByteArray& input)
{
    return readAll(*makeEncryptor(cipher, bufferOf(input)));
}

QByteArray randomBytes(int size)
{
    QByteArray bytes;
    while (bytes.size() < size)
        bytes += Key::random(static_cast<unsigned short>(std::min(size - bytes.size(), 60000)));
    return bytes;
}

Cipher randomCipher(Algorithm algorithm, Type type)
{
    const QByteArray iv = type == Cbc ? Key::random(Key::ivLength(algorithm)) : QByteArray();
    return {algorithm, type, Key::randomKey(algorithm), iv};
}

/// The file at `path` encrypted by the openssl program: a second opinion, independent of the cipher library.
QByteArray sealedByOpenssl(const Cipher& cipher, const QString& path)
{
    static const char* const ciphers[] = {"des", "des-ede", "des-ede3", "aes-128", "aes-192", "aes-256"};
    // OpenSSL keeps single DES among its legacy ciphers, and names triple DES in ECB mode without the mode.
    QByteArray command = "openssl enc -provider legacy -provider default -e -";
    command += ciphers[cipher.algorithm];
    if (cipher.type == Cbc)
        command += "-cbc -iv " + cipher.iv.toHex();
    else if (cipher.algorithm != Des112 && cipher.algorithm != Des3)
        command += "-ecb";
    command += " -K " + cipher.key.toHex() + " -in " + QFile::encodeName(path);

    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.constData(), "r"), ::pclose);
    QFile output;
    output.open(pipe.get(), QIODevice::ReadOnly);
    return output.readAll();
}

} // namespace

TEST(Encryptor, KnownAnswers)
{
    for (const KnownAnswer& answer : knownAnswers("ciphers.txt")) {
        const auto bytes = [&answer](const char* name) { return QByteArray::fromHex(answer[name]); };
        const auto algorithm = static_cast<Algorithm>(answer["cipher"].left(1).toInt());
        const Cipher cipher = {algorithm, answer["cipher"].endsWith("cbc") ? Cbc : Ecb, bytes("key"), bytes("iv")};
        const QByteArray plain = bytes("plain");
        const QByteArray sealed = transformed(cipher, plain);
        EXPECT_EQ(sealed.toHex(), answer["sealed"]) << answer["name"].constData();
        EXPECT_EQ(transformed(cipher.inverse(), sealed), plain) << answer["name"].constData();
    }
}

TEST(Encryptor, AgreesWithTheOpensslProgram)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("plain"));
    std::vector<int> lengths(71);
    std::iota(lengths.begin(), lengths.end(), 0);
    lengths.insert(lengths.end(), {4095, 4096, 1000003});
    for (const Algorithm algorithm : Algorithms) {
        for (const Type type : {Cbc, Ecb}) {
            const Cipher cipher = randomCipher(algorithm, type);
            for (const int length : lengths) {
                SCOPED_TRACE(testing::Message() << "algorithm " << algorithm << " type " << type << " " << length);
                const QByteArray plain = randomBytes(length);
                writeFile(path, plain);
                const QByteArray sealed = sealedByOpenssl(cipher, path);
                ASSERT_EQ(transformed(cipher, plain), sealed);
                ASSERT_EQ(transformed(cipher.inverse(), sealed), plain);
            }
        }
    }
}

TEST(Encryptor, EachCallAgreesWithThePlainStepList)
{
    std::mt19937 random(1);
    const auto randomSizes = [&random](int largest) {
        std::vector<int> sizes(random() % 20);
        std::generate(sizes.begin(), sizes.end(), [&] { return static_cast<int>(random() % largest); });
        return sizes;
    };
    for (int round = 0; round < 2000; ++round) {
        StreamCase stream;
        stream.cipher = randomCipher(Algorithms[random() % std::size(Algorithms)], random() % 2 ? Cbc : Ecb);
        stream.content = randomBytes(static_cast<int>(random() % 1500));
        if (random() % 2)
            stream.content = transformed(stream.cipher, stream.content);
        if (random() % 2)
            stream.cipher = stream.cipher.inverse(); // of what is damaged, too
        stream.isSequential = random() % 2;
        stream.portions = randomSizes(round % 2 ? 90 : NarrowDevice::Failure + 1);
        stream.requests = randomSizes(round % 3 ? 40 : 700);
        stream.growingCall = static_cast<int>(random() % 100);
        stream.growth = randomBytes(static_cast<int>(random() % 50));
        QByteArray whole;
        ASSERT_STREQ(differenceFromPlain(stream, whole), nullptr) << "round " << round;
    }
}

TEST(Encryptor, PortionsAtTheEnd)
{
    char data[256];
    const auto empty = makeEncryptor(Aes, bufferOf({}));
    EXPECT_FALSE(empty->atEnd());
    EXPECT_EQ(empty->readData(data, 64), 16);
    EXPECT_TRUE(empty->atEnd());
    EXPECT_EQ(empty->readData(data, 64), 0);

    const auto hundred = makeEncryptor(Aes, bufferOf(QByteArray(100, 'x')));
    EXPECT_EQ(hundred->readData(data, -1), 0);
    EXPECT_EQ(hundred->readData(data, 100), 100);
    EXPECT_FALSE(hundred->atEnd());
    EXPECT_EQ(hundred->readData(data, 1), 12) << "the remainder comes in one piece";
    EXPECT_TRUE(hundred->atEnd());

    EXPECT_EQ(transformed({Aes128, Ecb, Aes.key, Aes.iv}, "x"), transformed({Aes128, Ecb, Aes.key, {}}, "x"))
        << "without use of the IV";
}

TEST(Encryptor, DamagedStreamsThrowAndAreNotFinished)
{
    const QByteArray sealed = transformed(Aes, QByteArray(40, 'x'));
    char data[256];
    for (const QByteArray& input : {sealed.left(20), sealed.left(47), sealed.left(32), QByteArray()}) {
        const auto decryptor = makeEncryptor(Aes.inverse(), bufferOf(input));
        EXPECT_THROW(decryptor->readData(data, 100), CryptoPP::InvalidCiphertext) << input.size();
        EXPECT_FALSE(decryptor->atEnd());
    }
    Cipher wrongKey = Aes.inverse();
    wrongKey.key[0] = 'K';
    EXPECT_THROW(transformed(wrongKey, sealed), CryptoPP::InvalidCiphertext);
}

namespace {

/// So many bytes, as a pipe has them: without a position, and without an end in sight until then.
class SequentialSource : public QIODevice {
public:
    explicit SequentialSource(qint64 size) : m_left(size) { open(ReadOnly | Unbuffered); }
    bool isSequential() const override { return true; }
    bool atEnd() const override { return m_left == 0; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const qint64 size = std::min(maxSize, m_left);
        std::fill_n(data, size, 'x');
        m_left -= size;
        return size;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 m_left;
};

} // namespace

TEST(Encryptor, MemoryDoesNotGrowWithTheStream)
{
    const auto peakMemory = [] { // the most that the process has had so far, in bytes
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return qint64(usage.ru_maxrss) * ORV_MAXRSS_UNIT;
    };
    // In a process of its own, where what other tests needed does not hide anything
    expectInChild([&peakMemory] {
        constexpr qint64 GiB = Q_INT64_C(1) << 30;
        const auto encryptor = makeEncryptor(Aes, QSharedPointer<SequentialSource>::create(4 * GiB));
        QByteArray portion(65536, '\0');
        qint64 total = encryptor->readData(portion.data(), portion.size());
        const qint64 before = peakMemory();
        while (!encryptor->atEnd())
            total += encryptor->readData(portion.data(), portion.size());
        EXPECT_EQ(total, 4 * GiB + 16);
        EXPECT_LT(peakMemory() - before, 2 << 20);
    });
}

TEST(Encryptor, KeysAndIvs)
{
    EXPECT_EQ(EncryptorBase::create(None, true, Cbc), nullptr);
    EXPECT_EQ(EncryptorBase::create(static_cast<Algorithm>(-1), true, Cbc), nullptr);
    for (const Algorithm algorithm : Algorithms) {
        const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(algorithm, true, Cbc));
        EXPECT_EQ(encryptor->algorithm(), algorithm);
        encryptor->setKey(Key::randomKey(algorithm));
        encryptor->setIv(QByteArray());
        EXPECT_EQ(encryptor->iv().size(), Key::ivLength(algorithm));
        encryptor->setSource(bufferOf("x"));
        EXPECT_TRUE(encryptor->init());
        EXPECT_TRUE(encryptor->init()) << "a second time does no harm";
        EXPECT_EQ(readAll(*encryptor).size(), Key::ivLength(algorithm));

        encryptor->setIv(QByteArray());
        EXPECT_EQ(encryptor->iv().size(), 2 * Key::ivLength(algorithm)) << "appended";
        EXPECT_THROW(encryptor->init(), CryptoPP::InvalidArgument);

        const std::unique_ptr<EncryptorBase> ecb(EncryptorBase::create(algorithm, true, Ecb));
        ecb->setIv(QByteArray());
        EXPECT_TRUE(ecb->iv().isEmpty());
        EXPECT_THROW(ecb->init(), CryptoPP::InvalidKeyLength) << "no key";

        const std::unique_ptr<EncryptorBase> unknown(EncryptorBase::create(algorithm, true, static_cast<Type>(2)));
        unknown->setKey(Key::randomKey(algorithm));
        EXPECT_FALSE(unknown->init());
    }
}

TEST(Encryptor, TheCipherLibraryDecidesOnKeyLengths)
{
    const QByteArray key(32, 'k');
    EXPECT_EQ(transformed({Aes128, Cbc, key, Aes.iv}, "text"), transformed({Aes256, Cbc, key, Aes.iv}, "text"));
    EncryptorAes192 aes(true, Cbc);
    aes.setKey(key);
    EXPECT_EQ(aes.algorithm(), Aes192);
    for (const int length : {8, 16, 32}) {
        EncryptorDes3 des3(true, Ecb);
        des3.setKey(QByteArray(length, 'k'));
        EXPECT_THROW(des3.init(), CryptoPP::InvalidKeyLength) << length;
    }
}

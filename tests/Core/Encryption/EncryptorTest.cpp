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
const Type Types[] = {Cbc, Ecb};

QSharedPointer<QIODevice> bufferOf(const QByteArray& content)
{
    QSharedPointer<QBuffer> buffer(new QBuffer);
    buffer->setData(content);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

std::unique_ptr<EncryptorBase> makeEncryptor(Algorithm algorithm, bool encrypt, Type type, const QByteArray& key,
    const QByteArray& iv, const QSharedPointer<QIODevice>& source)
{
    std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(algorithm, encrypt, type));
    encryptor->setKey(key);
    encryptor->setIv(iv);
    encryptor->setSource(source);
    EXPECT_TRUE(encryptor->init());
    return encryptor;
}

QByteArray readAll(EncryptorBase& encryptor, qint64 maxSize = 4096)
{
    QByteArray all;
    QByteArray portion(static_cast<int>(maxSize) + 64, '\0');
    while (!encryptor.atEnd())
        all.append(portion.constData(), static_cast<int>(encryptor.readData(portion.data(), maxSize)));
    return all;
}

QByteArray transformed(
    Algorithm algorithm, bool encrypt, Type type, const QByteArray& key, const QByteArray& iv, const QByteArray& input)
{
    return readAll(*makeEncryptor(algorithm, encrypt, type, key, iv, bufferOf(input)));
}

/// Delivers its content in portions of random sizes, now and then none at all; random-access or sequential.
class MoodySource : public QIODevice {
public:
    MoodySource(QByteArray content, unsigned seed, bool sequential, unsigned throwsIn = 0)
        : m_content(std::move(content)), m_random(seed), m_sequential(sequential), m_throwsIn(throwsIn)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return m_sequential; }
    bool atEnd() const override { return m_position == m_content.size(); }
    void append(const QByteArray& more) { m_content += more; }

    std::vector<qint64> requests;

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        requests.push_back(maxSize);
        if (m_throwsIn != 0 && m_random() % m_throwsIn == 0)
            throw std::runtime_error("moody");
        const qint64 left = m_content.size() - m_position;
        const qint64 count = std::min({maxSize, left, static_cast<qint64>(m_random() % 90)});
        std::copy_n(m_content.constData() + m_position, count, data);
        m_position += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_content;
    std::mt19937 m_random;
    bool m_sequential;
    unsigned m_throwsIn; // one read in so many; 0: none
    qint64 m_position = 0;
};

QByteArray randomBytes(int size)
{
    QByteArray bytes;
    while (bytes.size() < size)
        bytes += Key::random(static_cast<unsigned short>(std::min(size - bytes.size(), 60000)));
    return bytes;
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

/// The file at `path` encrypted by the openssl program: a second opinion, independent of the cipher library.
QByteArray sealedByOpenssl(
    Algorithm algorithm, Type type, const QByteArray& key, const QByteArray& iv, const QString& path)
{
    static const char* const ciphers[] = {"des", "des-ede", "des-ede3", "aes-128", "aes-192", "aes-256"};
    // OpenSSL keeps single DES among its legacy ciphers, and names triple DES in ECB mode without the mode.
    QByteArray command = "openssl enc -provider legacy -provider default -e -";
    command += ciphers[algorithm];
    if (type == Cbc)
        command += "-cbc -iv " + iv.toHex();
    else if (algorithm != Des112 && algorithm != Des3)
        command += "-ecb";
    command += " -K " + key.toHex() + " -in " + QFile::encodeName(path);

    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.constData(), "r"), ::pclose);
    QByteArray sealed;
    char portion[4096];
    while (const size_t count = std::fread(portion, 1, sizeof portion, pipe.get()))
        sealed.append(portion, static_cast<int>(count));
    return sealed;
}

} // namespace

TEST(Encryptor, KnownAnswers)
{
    for (const KnownAnswer& answer : knownAnswers("ciphers.txt")) {
        const auto algorithm = static_cast<Algorithm>(answer["cipher"].left(1).toInt());
        const Type type = answer["cipher"].endsWith("cbc") ? Cbc : Ecb;
        const auto bytes = [&answer](const char* name) { return QByteArray::fromHex(answer[name]); };
        const QByteArray plain = bytes("plain");
        const QByteArray sealed = transformed(algorithm, true, type, bytes("key"), bytes("iv"), plain);
        EXPECT_EQ(sealed.size(), plain.size() + Key::ivLength(algorithm)) << answer["name"].constData();
        EXPECT_EQ(sealed.left(plain.size()).toHex(), answer["sealed"]) << answer["name"].constData();
        EXPECT_EQ(transformed(algorithm, false, type, bytes("key"), bytes("iv"), sealed), plain);
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
        for (const Type type : Types) {
            const QByteArray key = Key::randomKey(algorithm);
            const QByteArray iv = type == Cbc ? Key::random(Key::ivLength(algorithm)) : QByteArray();
            for (const int length : lengths) {
                const QByteArray plain = randomBytes(length);
                writeFile(path, plain);
                const QByteArray sealed = sealedByOpenssl(algorithm, type, key, iv, path);
                ASSERT_EQ(transformed(algorithm, true, type, key, iv, plain), sealed)
                    << "algorithm " << algorithm << " type " << type << " length " << length;
                ASSERT_EQ(transformed(algorithm, false, type, key, iv, sealed), plain)
                    << "algorithm " << algorithm << " type " << type << " length " << length;
            }
        }
    }
}

TEST(Encryptor, EachCallAgreesWithThePlainStepList)
{
    std::mt19937 random(1);
    for (int round = 0; round < 600; ++round) {
        const Algorithm algorithm = Algorithms[random() % std::size(Algorithms)];
        const Type type = Types[random() % 2];
        const bool encrypt = random() % 2;
        const bool sequential = random() % 2;
        const bool damaged = !encrypt && random() % 4 == 0;
        const QByteArray key = Key::randomKey(algorithm);
        const QByteArray iv = type == Cbc ? Key::random(Key::ivLength(algorithm)) : QByteArray();
        QByteArray input = randomBytes(static_cast<int>(random() % 3000));
        if (!encrypt && !damaged)
            input = transformed(algorithm, true, type, key, iv, input);

        const unsigned seed = random();
        auto* mine = new MoodySource(input, seed, sequential, 100);
        auto* plains = new MoodySource(input, seed, sequential, 100);
        const auto encryptor = makeEncryptor(algorithm, encrypt, type, key, iv, QSharedPointer<QIODevice>(mine));
        PlainEncryptor plain(algorithm, encrypt, type, key, iv, QSharedPointer<QIODevice>(plains));

        const int calls = 400;
        for (int call = 0; call < calls; ++call) {
            const qint64 maxSize = random() % (call % 3 == 0 ? 700 : 40);
            const Outcome expected = outcomeOf(plain, maxSize);
            const Outcome outcome = outcomeOf(*encryptor, maxSize);
            ASSERT_EQ(outcome, expected) << "round " << round << " call " << call;
            ASSERT_EQ(mine->requests, plains->requests) << "round " << round << " call " << call;
            if (sequential && call > 100 && random() % 16 == 0) {
                const QByteArray more = randomBytes(static_cast<int>(random() % 50));
                mine->append(more);
                plains->append(more);
            }
        }
    }
}

TEST(Encryptor, PortionsAtTheEnd)
{
    const QByteArray key(16, 'k');
    const QByteArray iv(16, 'i');
    char data[256];

    const auto empty = makeEncryptor(Aes128, true, Cbc, key, iv, bufferOf({}));
    EXPECT_FALSE(empty->atEnd());
    EXPECT_EQ(empty->readData(data, 64), 16);
    EXPECT_TRUE(empty->atEnd());
    EXPECT_EQ(empty->readData(data, 64), 0);

    const auto hundred = makeEncryptor(Aes128, true, Cbc, key, iv, bufferOf(QByteArray(100, 'x')));
    EXPECT_EQ(hundred->readData(data, -1), 0);
    EXPECT_EQ(hundred->readData(data, 100), 100);
    EXPECT_FALSE(hundred->atEnd());
    EXPECT_EQ(hundred->readData(data, 1), 12) << "the remainder comes in one piece";
    EXPECT_TRUE(hundred->atEnd());

    EXPECT_EQ(transformed(Aes128, true, Ecb, key, iv, "x"), transformed(Aes128, true, Ecb, key, {}, "x"))
        << "without use of the IV";
}

TEST(Encryptor, RemainderFitsTheDocumentedRoom)
{
    std::mt19937 random(2);
    for (int round = 0; round < 2000; ++round) {
        const bool encrypt = random() % 2;
        QByteArray input = randomBytes(static_cast<int>(random() % 300));
        if (!encrypt)
            input = transformed(Aes128, true, Ecb, QByteArray(16, 'k'), {}, input);
        const QSharedPointer<QIODevice> source(new MoodySource(input, random(), false));
        const auto encryptor = makeEncryptor(Aes128, encrypt, Ecb, QByteArray(16, 'k'), {}, source);
        char data[512];
        while (!encryptor->atEnd()) {
            const qint64 maxSize = random() % 60;
            ASSERT_LE(encryptor->readData(data, maxSize), std::max<qint64>(maxSize, 47));
        }
    }
}

TEST(Encryptor, DamagedStreamsThrowAndAreNotFinished)
{
    const QByteArray key(16, 'k');
    const QByteArray iv(16, 'i');
    const QByteArray sealed = transformed(Aes128, true, Cbc, key, iv, QByteArray(40, 'x'));
    char data[256];
    for (const QByteArray& input : {sealed.left(20), sealed.left(47), sealed.left(32), QByteArray()}) {
        const auto decryptor = makeEncryptor(Aes128, false, Cbc, key, iv, bufferOf(input));
        EXPECT_THROW(decryptor->readData(data, 100), CryptoPP::InvalidCiphertext) << input.size();
        EXPECT_FALSE(decryptor->atEnd());
    }
    QByteArray wrongKey = key;
    wrongKey[0] = 'K';
    EXPECT_THROW(transformed(Aes128, false, Cbc, wrongKey, iv, sealed), CryptoPP::InvalidCiphertext);
}

namespace {

/// As many zero bytes as asked for, without an end in sight until then.
class ZeroSource : public QIODevice {
public:
    explicit ZeroSource(qint64 size) : m_left(size) { open(QIODevice::ReadOnly | QIODevice::Unbuffered); }
    bool isSequential() const override { return true; }
    bool atEnd() const override { return m_left == 0; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const qint64 count = std::min(maxSize, m_left);
        std::fill_n(data, count, '\0');
        m_left -= count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 m_left;
};

/// The most memory that the process has had so far, in bytes.
qint64 peakMemory()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * ORV_MAXRSS_UNIT;
}

} // namespace

TEST(Encryptor, MemoryDoesNotGrowWithTheStream)
{
    // In a process of its own, where what other tests needed does not hide anything
    expectInChild([] {
        constexpr qint64 GiB = Q_INT64_C(1) << 30;
        const auto encryptor = makeEncryptor(Aes128, true, Cbc, QByteArray(16, 'k'), QByteArray(16, 'i'),
            QSharedPointer<QIODevice>(new ZeroSource(4 * GiB)));
        QByteArray portion(65536, '\0');
        encryptor->readData(portion.data(), portion.size());
        const qint64 before = peakMemory();
        qint64 total = portion.size();
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
    const QByteArray iv(16, 'i');
    EXPECT_EQ(transformed(Aes128, true, Cbc, key, iv, "text"), transformed(Aes256, true, Cbc, key, iv, "text"));
    EncryptorAes192 aes(true, Cbc);
    aes.setKey(key);
    EXPECT_EQ(aes.algorithm(), Aes192);
    for (const int length : {8, 16, 32}) {
        EncryptorDes3 des3(true, Ecb);
        des3.setKey(QByteArray(length, 'k'));
        EXPECT_THROW(des3.init(), CryptoPP::InvalidKeyLength) << length;
    }
}

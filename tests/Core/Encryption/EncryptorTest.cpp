#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>
#include <Orv/Exception.h>

#include "Core/Encryption/PlainEncryptor.h"
#include "KnownAnswers.h"
#include "Log/ChildProcess.h"
#include "ProcessUsage.h"
#include "Utility/ChunkedDevice.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QMetaEnum>
#include <QTemporaryFile>

#include <numeric>
#include <random>

using namespace Orv::Core::Encryption;

namespace {

/// All algorithms except `None`.
std::vector<Algorithm> algorithms()
{
    std::vector<Algorithm> all;
    const QMetaEnum numbers = QMetaEnum::fromType<Algorithm>();
    for (int i = 0; i < numbers.keyCount(); ++i) {
        if (numbers.value(i) != None)
            all.push_back(static_cast<Algorithm>(numbers.value(i)));
    }
    return all;
}

const Cipher Aes = {Aes128, Cbc, QByteArray(16, 'k'), QByteArray(16, 'i')};

QSharedPointer<QIODevice> bufferOf(const QByteArray& content, QIODevice::OpenMode mode = QIODevice::ReadOnly)
{
    QSharedPointer<QBuffer> buffer(new QBuffer);
    buffer->setData(content);
    buffer->open(mode);
    return buffer;
}

std::unique_ptr<EncryptorBase> makeEncryptor(const Cipher& cipher, const QSharedPointer<QIODevice>& source)
{
    std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(cipher.algorithm, cipher.encrypt, cipher.type));
    encryptor->setKey(cipher.key);
    encryptor->setIv(cipher.iv);
    encryptor->setSource(source);
    EXPECT_TRUE(encryptor->init());
    return encryptor;
}

QByteArray readAll(EncryptorBase& encryptor)
{
    QByteArray all;
    QByteArray chunk(4096 + 64, '\0');
    while (!encryptor.atEnd())
        all.append(chunk.constData(), static_cast<int>(encryptor.readData(chunk.data(), 4096)));
    return all;
}

QByteArray transformed(const Cipher& cipher, const QByteArray& input)
{
    return readAll(*makeEncryptor(cipher, bufferOf(input)));
}

/// The cipher in a table row.
Cipher cipherOf(const KnownAnswer& row)
{
    return {static_cast<Algorithm>(row["cipher"].left(1).toInt()), row["cipher"].endsWith("cbc") ? Cbc : Ecb,
        QByteArray::fromHex(row["key"]), QByteArray::fromHex(row["iv"])};
}

/// The observable outcome of a call of readData(): bytes, error, and whether the end is reached.
template <class Encryptor> std::tuple<QByteArray, QByteArray, bool> outcomeOf(Encryptor& encryptor, qint64 maxSize)
{
    QByteArray data(static_cast<int>(maxSize) + 5000, '\0');
    QByteArray error;
    qint64 size = 0;
    try {
        size = encryptor.readData(data.data(), maxSize);
    } catch (const std::exception& exception) {
        error = exception.what();
    }
    return {data.left(static_cast<int>(size)), error, encryptor.atEnd()};
}

/// Expects each call to have the same outcome as with PlainEncryptor, with two equal sources. The calls cycle through
/// `sizes`. `afterCall` receives the number of each call and returns whether to continue after the end.
void expectPlainOutcomes(const Cipher& cipher, const QSharedPointer<QIODevice>& source,
    const QSharedPointer<QIODevice>& plainSource, const std::vector<int>& sizes,
    const std::function<bool(int)>& afterCall)
{
    constexpr int RoomAtTheEnd = 47; // less than three of the largest blocks
    const auto encryptor = makeEncryptor(cipher, source);
    PlainEncryptor plain(cipher, plainSource);
    bool isAwaited = true;
    for (int call = 0; call < 200 && !(encryptor->atEnd() && !isAwaited); ++call) {
        const int maxSize = sizes.empty() ? 4096 : sizes[static_cast<std::size_t>(call) % sizes.size()];
        const auto outcome = outcomeOf(*encryptor, maxSize);
        ASSERT_EQ(outcome, outcomeOf(plain, maxSize)) << "call " << call;
        if (const QByteArray& error = std::get<1>(outcome); !error.isEmpty() && error != ChunkedDevice::FailureText)
            return; // an error of the cipher library: neither object is usable after it
        ASSERT_LE(std::get<0>(outcome).size(), std::max(maxSize, RoomAtTheEnd)) << "call " << call;
        isAwaited = afterCall(call);
    }
}

} // namespace

TEST(Encryptor, KnownAnswers)
{
    for (const KnownAnswer& row : tableOfAnswers("ciphers.txt")) {
        SCOPED_TRACE(row["row"].constData());
        const QByteArray plain = QByteArray::fromHex(row["plain"]);
        const QByteArray sealed = transformed(cipherOf(row), plain);
        EXPECT_EQ(sealed.toHex(), row["sealed"]);
        EXPECT_EQ(transformed(cipherOf(row).inverse(), sealed), plain);
    }
}

TEST(Encryptor, AgreesWithTheOpensslProgram)
{
    QByteArray numbers;
    for (int i = 1; numbers.size() < 1000003; ++i)
        numbers += QByteArray::number(i) + '\n';
    std::vector<int> lengths(71);
    std::iota(lengths.begin(), lengths.end(), 0);
    lengths.insert(lengths.end(), {4095, 4096, 1000003});
    for (const KnownAnswer& row : tableOfAnswers("openssl.txt")) {
        SCOPED_TRACE(row["row"].constData());
        QCryptographicHash hash(QCryptographicHash::Sha256);
        for (const int length : lengths) {
            const QByteArray plain = numbers.left(length);
            const QByteArray sealed = transformed(cipherOf(row), plain);
            hash.addData(sealed);
            ASSERT_TRUE(transformed(cipherOf(row).inverse(), sealed) == plain) << length;
        }
        EXPECT_EQ(hash.result().toHex(), row["sha256"]);
    }
}

TEST(Encryptor, EachCallAgreesWithThePlainStepList)
{
    std::mt19937 random(1);
    const auto randomBytes = [&random](unsigned largest) {
        QByteArray bytes(static_cast<int>(random() % largest), '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        return bytes;
    };
    const auto randomSizes = [&random](unsigned largest) {
        std::vector<int> sizes(random() % 20);
        std::generate(sizes.begin(), sizes.end(), [&] { return static_cast<int>(random() % largest); });
        return sizes;
    };
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        const Algorithm algorithm = random() % 2 ? Des : Aes128;
        const QByteArray key = Key::randomKey(algorithm);
        Cipher cipher = {algorithm, random() % 2 ? Cbc : Ecb, key, Key::random(Key::ivLength(algorithm))};
        QByteArray content = randomBytes(1500);
        if (random() % 2)
            content = transformed(cipher, content);
        if (random() % 2)
            cipher = cipher.inverse(); // includes damaged input
        const std::vector<int> sizes = randomSizes(round % 3 ? 40 : 700);
        if (random() % 3 == 0) {
            const QIODevice::OpenMode mode =
                QIODevice::ReadOnly | (random() % 4 ? QIODevice::NotOpen : QIODevice::Text);
            const auto source = bufferOf(content, mode), plainSource = bufferOf(content, mode);
            expectPlainOutcomes(cipher, source, plainSource, sizes, [&](int call) {
                EXPECT_EQ(source->pos(), plainSource->pos()) << "call " << call;
                if (call % 5 == 0 && source->pos() > 0) { // differs from the buffer's content
                    source->ungetChar('u');
                    plainSource->ungetChar('u');
                }
                return call < 100; // continue after the end
            });
            ASSERT_FALSE(HasFailure());
            continue;
        }
        const bool isSequential = random() % 2;
        const auto source = QSharedPointer<ChunkedDevice>::create(QIODevice::ReadOnly, isSequential);
        const auto plainSource = QSharedPointer<ChunkedDevice>::create(QIODevice::ReadOnly, isSequential);
        source->content = plainSource->content = content;
        source->chunks = plainSource->chunks = randomSizes(round % 2 ? 90 : ChunkedDevice::Failure + 1);
        const int growingCall = isSequential ? static_cast<int>(random() % 100) : -1;
        expectPlainOutcomes(cipher, source, plainSource, sizes, [&](int call) {
            if (call == growingCall)
                source->content = plainSource->content += randomBytes(50);
            return call <= growingCall;
        });
        ASSERT_EQ(source->requests, plainSource->requests) << "sizes requested from the source";
        ASSERT_FALSE(HasFailure());
    }
}

TEST(Encryptor, ReadTogetherAgreesWithReadData)
{
    std::mt19937 random(2);
    const Cipher ciphers[] = {Aes, {Aes128, Cbc, QByteArray(16, 'K'), Aes.iv},
        {Aes192, Cbc, QByteArray(16, 'k'), Aes.iv}, {Aes256, Cbc, QByteArray(32, 'k'), Aes.iv},
        {Aes128, Ecb, Aes.key, {}}, {Des, Cbc, QByteArray(8, 'k'), "initial."}};
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        std::vector<std::unique_ptr<EncryptorBase>> together, alone;
        QVector<EncryptorBase*> members;
        for (unsigned i = random() % 20; i > 0; --i) {
            Cipher cipher = ciphers[random() % 2 ? 0 : random() % std::size(ciphers)];
            QByteArray content = QByteArray(static_cast<int>(random() % 3000), static_cast<char>(random()));
            if (random() % 8 == 0) {
                content = transformed(cipher, content);
                cipher = cipher.inverse();
            }
            for (auto* const encryptors : {&together, &alone}) {
                encryptors->push_back(makeEncryptor(cipher, bufferOf(content)));
                encryptors->back()->setKey({}); // takes effect at the next init()
            }
            members.append(together.back().get());
        }
        for (int call = 0; call < 30; ++call) {
            const auto maxSize = static_cast<int>(random() % 600);
            std::vector<QByteArray> areas(together.size(), QByteArray(maxSize + 48, '\0'));
            QVector<char*> data;
            for (QByteArray& area : areas)
                data.append(area.data());
            const QVector<qint64> sizes = EncryptorBase::readTogether(members, data, maxSize);
            for (std::size_t i = 0; i < alone.size(); ++i) {
                const auto [bytes, error, atEnd] = outcomeOf(*alone[i], maxSize);
                ASSERT_EQ(areas[i].left(static_cast<int>(sizes[static_cast<int>(i)])), bytes) << "member " << i;
                ASSERT_EQ(together[i]->atEnd(), atEnd) << "member " << i;
            }
        }
    }
    const auto one = makeEncryptor(Aes, bufferOf("x"));
    char data[2][64];
    EXPECT_THROW(EncryptorBase::readTogether({one.get(), one.get()}, {data[0], data[1]}, 64), Orv::Exception::Base);
    EXPECT_THROW(EncryptorBase::readTogether({one.get()}, {}, 64), Orv::Exception::Base);
    EXPECT_EQ(one->bytesRead(), 0);
}

TEST(Encryptor, WriteToReportsEachFailure)
{
    struct Row {
        const char* name;
        int sourceLimit; // bytes until it fails
        int targetLimit; // bytes until it is full
        int chunk;       // bytes per read of the source; 0: none
        bool isOpen;
        bool good, sourceFailed;
        int bytesRead;
    };
    const int all = 200000;
    for (const Row& row : {Row{"whole", all + 1, all + 16, 70000, true, true, false, all},
             Row{"less than a block per read", all + 1, all + 16, 7, true, true, false, all},
             Row{"source fails", 100000, all + 16, 70000, true, false, true, 100000},
             Row{"source stalls", all + 1, all + 16, 0, true, false, false, 0},
             Row{"source is closed", all + 1, all + 16, 70000, false, false, true, 0},
             Row{"target is full", all + 1, all + 15, 70000, true, false, false, all}}) {
        SCOPED_TRACE(row.name);
        const auto source = QSharedPointer<ChunkedDevice>::create(QIODevice::ReadOnly, true);
        source->content = QByteArray(all, 'x');
        source->limit = row.sourceLimit;
        source->chunks = {row.chunk};
        const auto encryptor = makeEncryptor(Aes, source);
        if (!row.isOpen)
            source->close();
        ChunkedDevice target(QIODevice::WriteOnly);
        target.limit = row.targetLimit;
        EXPECT_EQ(encryptor->writeTo(target), row.good);
        EXPECT_EQ(encryptor->sourceFailed(), row.sourceFailed);
        EXPECT_EQ(encryptor->bytesRead(), row.bytesRead);
        if (row.good || row.sourceFailed) {
            EXPECT_EQ(encryptor->writeTo(target), row.good) << "again";
        }
        if (row.good) {
            EXPECT_EQ(transformed(Aes.inverse(), target.content), source->content);
        }
    }
}

TEST(Encryptor, SecondStreamStartsClean)
{
    const auto encryptor = makeEncryptor(Aes.inverse(), bufferOf(transformed(Aes, "the first")));
    const QByteArray first = readAll(*encryptor);
    const QByteArray other = transformed(Aes, QByteArray(100, 'x')); // the last block is held back until the end
    for (const int consumed : {0, 20}) { // bytes; the third stream replaces one that was not read completely
        encryptor->setSource(bufferOf(other));
        EXPECT_TRUE(encryptor->init());
        EXPECT_FALSE(encryptor->atEnd());
        EXPECT_EQ(encryptor->bytesRead(), 0);
        char data[64];
        EXPECT_LE(encryptor->readData(data, consumed), consumed);
    }
    encryptor->setSource(bufferOf(transformed(Aes, "the first")));
    EXPECT_TRUE(encryptor->init());
    EXPECT_EQ(readAll(*encryptor), first);
}

TEST(Encryptor, SizesAtTheEnd)
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
    EXPECT_EQ(hundred->readData(data, 1), 12) << "returns the whole remainder";
    EXPECT_TRUE(hundred->atEnd());

    EXPECT_EQ(transformed({Aes128, Ecb, Aes.key, Aes.iv}, "x"), transformed({Aes128, Ecb, Aes.key, {}}, "x"))
        << "ignores the IV";
}

TEST(Encryptor, DamagedStreamsThrow)
{
    const QByteArray sealed = transformed(Aes, QByteArray(40, 'x'));
    char data[256];
    for (const QByteArray& input : {sealed.left(20), sealed.left(47), sealed.left(32), QByteArray()}) {
        const auto decryptor = makeEncryptor(Aes.inverse(), bufferOf(input));
        EXPECT_THROW(decryptor->readData(data, 100), CryptoPP::InvalidCiphertext) << input.size();
        EXPECT_FALSE(decryptor->atEnd());
    }
    EXPECT_THROW(transformed({Aes128, Cbc, "another key here", Aes.iv, false}, sealed), CryptoPP::InvalidCiphertext);
}

TEST(Encryptor, MemoryDoesNotGrowWithTheStream)
{
    // In a child process, because the peak of other tests would hide a growth
    expectInChild([] {
        constexpr qint64 GiB = Q_INT64_C(1) << 30;
        const auto file = QSharedPointer<QTemporaryFile>::create();
        EXPECT_TRUE(file->open() && file->resize(GiB)); // sparse
        const auto encryptor = makeEncryptor(Aes, file);
        QByteArray chunk(65536, '\0');
        qint64 total = encryptor->readData(chunk.data(), chunk.size());
        const qint64 before = peakMemory();
        while (!encryptor->atEnd())
            total += encryptor->readData(chunk.data(), chunk.size());
        EXPECT_EQ(total, GiB + 16);
        EXPECT_LT(peakMemory() - before, 2 << 20);
    });
}

TEST(Encryptor, KeysAndIvs)
{
    EXPECT_EQ(EncryptorBase::create(None, true, Cbc), nullptr);
    EXPECT_EQ(EncryptorBase::create(static_cast<Algorithm>(-1), true, Cbc), nullptr);
    for (const Algorithm algorithm : algorithms()) {
        const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(algorithm, true, Cbc));
        EXPECT_EQ(encryptor->algorithm(), algorithm);
        encryptor->setKey(Key::randomKey(algorithm));
        encryptor->setIv(QByteArray());
        EXPECT_EQ(encryptor->iv().size(), Key::ivLength(algorithm));
        const auto source = QSharedPointer<ChunkedDevice>::create(QIODevice::ReadOnly);
        source->content = "x";
        encryptor->setSource(source);
        EXPECT_TRUE(encryptor->init());
        EXPECT_TRUE(encryptor->init()) << "repeatable";
        char data[64];
        EXPECT_EQ(encryptor->readData(data, 1), 1);
        EXPECT_EQ(source->requests.front(), Key::ivLength(algorithm)) << "one block";
        EXPECT_EQ(readAll(*encryptor).size(), Key::ivLength(algorithm) - 1);

        encryptor->setIv(QByteArray());
        EXPECT_EQ(encryptor->iv().size(), 2 * Key::ivLength(algorithm)) << "appended";
        EXPECT_NE(encryptor->iv().left(Key::ivLength(algorithm)), encryptor->iv().mid(Key::ivLength(algorithm)));
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

/// Whether the process's heap contains the inverse of `inverted`. Inverted, so that the search does not find the
/// pattern itself.
static bool isOnTheHeap(const QByteArray& inverted)
{
    QFile maps(QStringLiteral("/proc/self/maps")), memory(QStringLiteral("/proc/self/mem"));
    EXPECT_TRUE(maps.open(QFile::ReadOnly) && memory.open(QFile::ReadOnly | QFile::Unbuffered));
    bool isFound = false;
    for (const QByteArray& line : maps.readAll().split('\n')) {
        const qint64 begin = line.left(line.indexOf('-')).toLongLong(nullptr, 16);
        const qint64 end =
            line.mid(line.indexOf('-') + 1).left(line.indexOf(' ') - line.indexOf('-') - 1).toLongLong(nullptr, 16);
        if (!line.contains(" rw-p ") || line.contains("[stack]") || end - begin > 64 << 20) // belongs to a sanitizer
            continue;
        memory.seek(begin);
        const QByteArray content = memory.read(end - begin);
        isFound |= std::search(content.begin(), content.end(), inverted.begin(), inverted.end(),
                       [](char a, char b) { return a == static_cast<char>(~b); }) != content.end();
    }
    return isFound;
}

TEST(Encryptor, WipesKeyAndData)
{
    if (!QFile::exists(QStringLiteral("/proc/self/maps")))
        GTEST_SKIP() << "no /proc/self/maps on this system";
    const QByteArray invertedKey = Key::random(32), invertedText = Key::random(100).repeated(600);
    const auto invert = [](QByteArray bytes) {
        for (char& byte : bytes)
            byte = static_cast<char>(~byte);
        return bytes;
    };
    for (const bool isAlive : {false, true}) { // in this order, because a search leaves copies of its matches
        Cipher cipher = {Aes256, Cbc, invert(invertedKey), Aes.iv};
        QByteArray text = invert(invertedText);
        auto encryptor = makeEncryptor(cipher, bufferOf(text));
        QByteArray data(invertedText.size(), '\0');
        encryptor->readData(data.data(), data.size());
        const auto neighbour = makeEncryptor(Aes, bufferOf(data)); // keeps the memory from returning to the system
        neighbour->readData(data.data(), data.size());
        encryptor->setSource({});
        cipher.key.fill(0);
        text.fill(0);
        if (!isAlive)
            encryptor.reset();
        EXPECT_EQ(isOnTheHeap(invertedKey.mid(16)), isAlive) << "without the part that the allocator may overwrite";
        EXPECT_EQ(isOnTheHeap(invertedText.left(100)), isAlive);
    }
}

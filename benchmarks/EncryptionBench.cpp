#include "Bench.h"

#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Key.h>

#include <QBuffer>
#include <QTemporaryFile>

#include <cryptopp/aes.h>
#include <cryptopp/des.h>
#include <cryptopp/modes.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#ifdef ORV_BENCH_QCA
#include <QtCrypto>
#endif

#include <algorithm>
#include <memory>
#include <vector>

using namespace Orv::Core::Encryption;

namespace {

constexpr int KiB = 1024;
constexpr int MiB = 1024 * KiB;

/// A subject. "%1" in its name stands for the direction.
struct Subject {
    const char* name;
    Algorithm algorithm;
    Type type;
    int chunk; // bytes per call
    int size;  // bytes in total
    const char* openssl;
    const char* qca;     // null: not offered
    int streams = 1;     // encrypted together by orvCore, one after the other by the peers
    bool isFile = false; // whether the source is a file; otherwise a QBuffer
};

const Subject Subjects[] = {
    {"AES-256-CBC %1, 4 KiB per call", Aes256, Cbc, 4 * KiB, 8 * MiB, "AES-256-CBC", "aes256"},
    {"AES-256-CBC %1, 64 KiB per call", Aes256, Cbc, 64 * KiB, 16 * MiB, "AES-256-CBC", "aes256"},
    {"AES-256-CBC %1, 1 MiB per call", Aes256, Cbc, MiB, 16 * MiB, "AES-256-CBC", "aes256"},
    {"AES-256-CBC %1, 4 streams, 64 KiB per call", Aes256, Cbc, 64 * KiB, 2 * MiB, "AES-256-CBC", nullptr, 4},
    {"AES-256-CBC %1, 8 streams, 64 KiB per call", Aes256, Cbc, 64 * KiB, 2 * MiB, "AES-256-CBC", nullptr, 8},
    {"AES-256-CBC %1, from a file, 64 KiB per call", Aes256, Cbc, 64 * KiB, 16 * MiB, "AES-256-CBC", nullptr, 1, true},
    {"AES-128-CBC %1, 64 KiB per call", Aes128, Cbc, 64 * KiB, 16 * MiB, "AES-128-CBC", "aes128"},
    {"AES-128-ECB %1, 64 KiB per call", Aes128, Ecb, 64 * KiB, 16 * MiB, "AES-128-ECB", "aes128"},
    {"AES-256-ECB %1, 64 KiB per call", Aes256, Ecb, 64 * KiB, 16 * MiB, "AES-256-ECB", "aes256"},
    {"DES-CBC %1, 64 KiB per call", Des, Cbc, 64 * KiB, 2 * MiB, "DES-CBC", "des"},
    {"two-key triple DES-CBC %1, 64 KiB per call", Des112, Cbc, 64 * KiB, 2 * MiB, "DES-EDE-CBC", nullptr},
    {"triple DES-CBC %1, 64 KiB per call", Des3, Cbc, 64 * KiB, 2 * MiB, "DES-EDE3-CBC", "tripledes"},
};

/// The input of a row, prepared outside the measured time.
struct Job {
    Subject subject;
    bool encrypt;
    QByteArray key;
    QByteArray iv;
    QByteArray input;

    std::vector<char> room() const { return std::vector<char>(size_t(subject.chunk) + 64); }
    int chunkAt(int offset) const { return std::min(subject.chunk, int(input.size()) - offset); }
};

QSharedPointer<QIODevice> openSource(const Job& job)
{
    if (job.subject.isFile) {
        const auto file = QSharedPointer<QTemporaryFile>::create();
        file->open();
        file->write(job.input);
        file->close();
        file->open();
        return file;
    }
    const auto buffer = QSharedPointer<QBuffer>::create();
    buffer->setData(job.input);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

std::unique_ptr<EncryptorBase> makeEncryptor(const Job& job, const QSharedPointer<QIODevice>& source)
{
    std::unique_ptr<EncryptorBase> encryptor(
        EncryptorBase::create(job.subject.algorithm, job.encrypt, job.subject.type));
    encryptor->setKey(job.key);
    encryptor->setIv(job.iv);
    encryptor->setSource(source);
    encryptor->init();
    return encryptor;
}

void runOrvCore(benchmark::State& state, const Job& job)
{
    std::vector<char> room = job.room();
    const QSharedPointer<QIODevice> source = openSource(job);
    for (auto _ : state) {
        source->seek(0);
        const auto encryptor = makeEncryptor(job, source);
        while (!encryptor->atEnd())
            benchmark::DoNotOptimize(encryptor->readData(room.data(), job.subject.chunk));
    }
    state.SetBytesProcessed(state.iterations() * job.input.size());
}

void runTogether(benchmark::State& state, const Job& job)
{
    std::vector<std::vector<char>> rooms(size_t(job.subject.streams), job.room());
    for (auto _ : state) {
        std::vector<std::unique_ptr<EncryptorBase>> owners;
        QVector<EncryptorBase*> encryptors;
        QVector<char*> data;
        for (std::vector<char>& room : rooms) {
            owners.push_back(makeEncryptor(job, openSource(job)));
            encryptors.append(owners.back().get());
            data.append(room.data());
        }
        while (!encryptors.last()->atEnd())
            benchmark::DoNotOptimize(EncryptorBase::readTogether(encryptors, data, job.subject.chunk));
    }
    state.SetBytesProcessed(state.iterations() * job.input.size() * job.subject.streams);
}

template <class Cipher> std::unique_ptr<CryptoPP::CipherModeBase> makeMode(const Job& job)
{
    std::unique_ptr<CryptoPP::CipherModeBase> mode;
    if (job.subject.type == Ecb) {
        if (job.encrypt)
            mode = std::make_unique<typename CryptoPP::ECB_Mode<Cipher>::Encryption>();
        else
            mode = std::make_unique<typename CryptoPP::ECB_Mode<Cipher>::Decryption>();
        mode->SetKey(bytes(job.key), size_t(job.key.size()));
        return mode;
    }
    if (job.encrypt)
        mode = std::make_unique<typename CryptoPP::CBC_Mode<Cipher>::Encryption>();
    else
        mode = std::make_unique<typename CryptoPP::CBC_Mode<Cipher>::Decryption>();
    mode->SetKeyWithIV(bytes(job.key), size_t(job.key.size()), bytes(job.iv), size_t(job.iv.size()));
    return mode;
}

std::unique_ptr<CryptoPP::CipherModeBase> makeMode(const Job& job)
{
    switch (job.subject.algorithm) {
    case Des:
        return makeMode<CryptoPP::DES>(job);
    case Des112:
        return makeMode<CryptoPP::DES_EDE2>(job);
    case Des3:
        return makeMode<CryptoPP::DES_EDE3>(job);
    default:
        return makeMode<CryptoPP::AES>(job);
    }
}

void runCryptoPP(benchmark::State& state, const Job& job)
{
    std::vector<char> room = job.room();
    for (auto _ : state) {
        for (int stream = 0; stream < job.subject.streams; ++stream) {
            const auto mode = makeMode(job);
            for (int offset = 0; offset < job.input.size(); offset += job.subject.chunk)
                mode->ProcessData(reinterpret_cast<CryptoPP::byte*>(room.data()), bytes(job.input) + offset,
                    size_t(job.chunkAt(offset)));
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * job.input.size() * job.subject.streams);
}

/// The baseline loop: reads the source, then calls the bare cipher.
void runCryptoPPFromSource(benchmark::State& state, const Job& job)
{
    std::vector<char> read(size_t(job.subject.chunk));
    std::vector<char> room = job.room();
    const QSharedPointer<QIODevice> source = openSource(job);
    for (auto _ : state) {
        const auto mode = makeMode(job);
        source->seek(0);
        while (!source->atEnd()) {
            const qint64 size = source->read(read.data(), job.subject.chunk);
            mode->ProcessData(reinterpret_cast<CryptoPP::byte*>(room.data()),
                reinterpret_cast<const CryptoPP::byte*>(read.data()), size_t(size));
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * job.input.size());
}

void runOpenSsl(benchmark::State& state, const Job& job)
{
    const std::unique_ptr<EVP_CIPHER, decltype(&EVP_CIPHER_free)> cipher(
        EVP_CIPHER_fetch(nullptr, job.subject.openssl, nullptr), EVP_CIPHER_free);
    if (!cipher) {
        state.SkipWithError("not offered");
        return;
    }
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(
        EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    std::vector<char> room = job.room();
    for (auto _ : state) {
        for (int stream = 0; stream < job.subject.streams; ++stream) {
            EVP_CipherInit_ex2(context.get(), cipher.get(), bytes(job.key), bytes(job.iv), job.encrypt, nullptr);
            auto* const output = reinterpret_cast<unsigned char*>(room.data());
            int size = 0;
            for (int offset = 0; offset < job.input.size(); offset += job.subject.chunk)
                EVP_CipherUpdate(context.get(), output, &size, bytes(job.input) + offset, job.chunkAt(offset));
            if (EVP_CipherFinal_ex(context.get(), output, &size) != 1)
                state.SkipWithError("wrong result");
        }
    }
    state.SetBytesProcessed(state.iterations() * job.input.size() * job.subject.streams);
}

#ifdef ORV_BENCH_QCA
void runQca(benchmark::State& state, const Job& job)
{
    const QString name = QLatin1String(job.subject.qca);
    const QCA::Cipher::Mode mode = job.subject.type == Cbc ? QCA::Cipher::CBC : QCA::Cipher::ECB;
    if (!QCA::Cipher::supportedTypes().contains(QCA::Cipher::withAlgorithms(name, mode, QCA::Cipher::PKCS7))) {
        state.SkipWithError("not offered");
        return;
    }
    for (auto _ : state) {
        QCA::Cipher cipher(name, mode, QCA::Cipher::PKCS7, job.encrypt ? QCA::Encode : QCA::Decode,
            QCA::SymmetricKey(job.key), QCA::InitializationVector(job.iv));
        for (int offset = 0; offset < job.input.size(); offset += job.subject.chunk)
            benchmark::DoNotOptimize(
                cipher.update(QByteArray::fromRawData(job.input.constData() + offset, job.chunkAt(offset))));
        benchmark::DoNotOptimize(cipher.final());
        if (!cipher.ok())
            state.SkipWithError("wrong result");
    }
    state.SetBytesProcessed(state.iterations() * job.input.size());
}
#endif

Job makeJob(const Subject& subject, bool encrypt)
{
    const QByteArray key(Key::length(subject.algorithm), '\x5a');
    const QByteArray iv(Key::ivLength(subject.algorithm), '\x3c');
    Job job{subject, true, key, iv, QByteArray(subject.size, 'x')};
    if (encrypt)
        return job;
    QBuffer sealed;
    sealed.open(QIODevice::WriteOnly);
    makeEncryptor(job, openSource(job))->writeTo(sealed);
    return {subject, false, key, iv, sealed.data()};
}

void addRows(const Subject& subject, bool encrypt)
{
    const std::string name = QString::fromLatin1(subject.name)
                                 .arg(encrypt ? QLatin1String("encrypt") : QLatin1String("decrypt"))
                                 .toStdString();
    // Prepared on first use, because a filter may exclude all rows of the subject.
    const auto job = [subject, encrypt] {
        static std::map<std::pair<std::string, bool>, Job> jobs;
        const auto key = std::make_pair(std::string(subject.name), encrypt);
        if (jobs.count(key) == 0)
            jobs.emplace(key, makeJob(subject, encrypt));
        return jobs.at(key);
    };
    const bool isAlone = subject.streams == 1;
    const auto addVariant = [&](const char* variant, void (*run)(benchmark::State&, const Job&)) {
        addRow(name, variant, [job, run](benchmark::State& state) { run(state, job()); });
    };
    addVariant("orvCore", isAlone ? runOrvCore : runTogether);
    addVariant("Crypto++", runCryptoPP);
    if (isAlone)
        addVariant("Crypto++ from the source", runCryptoPPFromSource);
    addVariant("OpenSSL", runOpenSsl);
#ifdef ORV_BENCH_QCA
    if (subject.qca)
        addVariant("QCA", runQca);
#endif
}

/// A sequential device that yields `size` zero bytes.
class Zeros : public QIODevice {
public:
    explicit Zeros(qint64 size) : m_left(size) { open(ReadOnly | Unbuffered); }
    bool isSequential() const override { return true; }
    bool atEnd() const override { return m_left == 0; }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const qint64 given = std::min(size, m_left);
        std::fill_n(data, given, '\0');
        m_left -= given;
        return given;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 m_left;
};

void runGrowth(benchmark::State& state, qint64 size)
{
    std::vector<char> room(64 * KiB);
    for (auto _ : state) {
        const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(Aes256, true, Cbc));
        encryptor->setKey(QByteArray(32, 'k'));
        encryptor->setIv(QByteArray(16, 'i'));
        encryptor->setSource(QSharedPointer<Zeros>::create(size));
        encryptor->init();
        while (!encryptor->atEnd())
            encryptor->readData(room.data(), qint64(room.size()));
    }
    state.SetBytesProcessed(state.iterations() * size);
}

} // namespace

void addEncryptionRows()
{
    OSSL_PROVIDER_load(nullptr, "default");
    OSSL_PROVIDER_load(nullptr, "legacy"); // for single DES
#ifdef ORV_BENCH_QCA
    static const QCA::Initializer initializer;
#endif
    for (const Subject& subject : Subjects) {
        addRows(subject, true);
        if (subject.streams == 1)
            addRows(subject, false);
    }
    for (const qint64 size : {1, 16, 256, 4096})
        addRow("growth: readData of " + std::to_string(size) + " MiB", "orvCore",
            [size](benchmark::State& state) { runGrowth(state, size * MiB); });
}

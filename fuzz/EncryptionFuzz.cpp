#include "Fuzz.h"

#include "Core/Encryption/PlainEncryptor.h"

#include <algorithm>
#include <memory>
#include <vector>

using namespace Orv::Core::Encryption;

namespace {

constexpr int MostCalls = 200;
constexpr qint64 RoomAtTheEnd = 47; // less than three of the largest blocks
constexpr int Failure = 700;        // a portion of this size is none: the source throws

/// Delivers its content in given portions, again and again, some of them empty.
class PortionedSource : public QIODevice {
public:
    PortionedSource(QByteArray content, std::vector<int> portions, bool sequential)
        : m_content(std::move(content)), m_portions(std::move(portions)), m_sequential(sequential)
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
        const int portion = m_portions.empty() ? Failure - 1 : m_portions[requests.size() % m_portions.size()];
        if (portion == Failure)
            throw std::runtime_error("the source has failed");
        const qint64 count = std::min({maxSize, m_content.size() - m_position, static_cast<qint64>(portion)});
        std::copy_n(m_content.constData() + m_position, count, data);
        m_position += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_content;
    const std::vector<int> m_portions;
    const bool m_sequential;
    qint64 m_position = 0;
};

struct Parameters {
    Algorithm algorithm;
    Type type;
    QByteArray key;
    QByteArray iv;
};

Parameters takeParameters(FuzzedDataProvider& input)
{
    Parameters parameters;
    parameters.algorithm = input.PickValueInArray({Des, Des112, Des3, Aes128, Aes192, Aes256});
    parameters.type = input.PickValueInArray({Cbc, Ecb});
    // What key it is makes no difference to how a stream is cut up.
    for (int i = 0; i < Key::length(parameters.algorithm); ++i)
        parameters.key += static_cast<char>(i * 7);
    if (parameters.type == Cbc)
        parameters.iv = QByteArray(Key::ivLength(parameters.algorithm), 'i');
    return parameters;
}

std::vector<int> takeSizes(FuzzedDataProvider& input)
{
    std::vector<int> sizes(input.ConsumeIntegralInRange<std::size_t>(0, 20));
    const int largest = input.PickValueInArray({5, 40, Failure});
    std::generate(sizes.begin(), sizes.end(), [&] { return input.ConsumeIntegralInRange(0, largest); });
    return sizes;
}

std::unique_ptr<EncryptorBase> makeEncryptor(
    const Parameters& parameters, bool encrypt, const QSharedPointer<QIODevice>& source)
{
    std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(parameters.algorithm, encrypt, parameters.type));
    encryptor->setKey(parameters.key);
    encryptor->setIv(parameters.iv);
    encryptor->setSource(source);
    require(encryptor->init(), "there is such a cipher");
    return encryptor;
}

PlainEncryptor makePlain(const Parameters& parameters, bool encrypt, const QSharedPointer<QIODevice>& source)
{
    return PlainEncryptor(parameters.algorithm, encrypt, parameters.type, parameters.key, parameters.iv, source);
}

/// All of it at once, the plain way.
QByteArray plainly(const Parameters& parameters, bool encrypt, const QByteArray& content)
{
    const QSharedPointer<QIODevice> source(new PortionedSource(content, {}, false));
    PlainEncryptor encryptor = makePlain(parameters, encrypt, source);
    QByteArray all;
    while (!encryptor.atEnd()) {
        const Outcome outcome = outcomeOf(encryptor, 4096);
        require(outcome.error.isEmpty(), "a stream that was sealed can be opened");
        all += outcome.bytes;
    }
    return all;
}

} // namespace

/// Each call of an encryptor has the outcome of the plain one, whatever the stream and in whatever portions it comes
/// and is asked for; and what was encrypted can be decrypted.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const Parameters parameters = takeParameters(input);
    const bool encrypt = input.ConsumeBool();
    const bool isDamaged = input.ConsumeBool();
    const bool isSequential = input.ConsumeBool();
    const std::vector<int> portions = takeSizes(input);
    const std::vector<int> requests = takeSizes(input);
    const int growingCall = input.ConsumeIntegralInRange(1, 2 * MostCalls);
    const int growth = input.ConsumeIntegralInRange(0, 50);
    const QByteArray given = restOf(input);
    const QByteArray content = encrypt || isDamaged ? given : plainly(parameters, true, given);

    auto* source = new PortionedSource(content, portions, isSequential);
    auto* plainSource = new PortionedSource(content, portions, isSequential);
    const auto encryptor = makeEncryptor(parameters, encrypt, QSharedPointer<QIODevice>(source));
    PlainEncryptor plain = makePlain(parameters, encrypt, QSharedPointer<QIODevice>(plainSource));
    QByteArray all;
    bool isWhole = true;
    for (int call = 0; call < MostCalls && !(encryptor->atEnd() && call > growingCall); ++call) {
        const qint64 maxSize = requests.empty() ? 4096 : requests[static_cast<std::size_t>(call) % requests.size()];
        const Outcome outcome = outcomeOf(*encryptor, maxSize);
        require(outcome == outcomeOf(plain, maxSize), "each call has the outcome of the plain one");
        require(source->requests == plainSource->requests, "the source is asked for the same");
        require(outcome.bytes.size() <= std::max(maxSize, RoomAtTheEnd), "the bytes fit into the room for them");
        all += outcome.bytes;
        isWhole = isWhole && outcome.error.isEmpty();
        if (call == growingCall && isSequential && growth > 0) {
            isWhole = false;
            source->append(given.left(growth));
            plainSource->append(given.left(growth));
        }
    }
    if (isWhole && encryptor->atEnd())
        require((encrypt ? plainly(parameters, false, all) : plainly(parameters, true, all)) == content,
            "the way back leads to where it began");
    return 0;
}

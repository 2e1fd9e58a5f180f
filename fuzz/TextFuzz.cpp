#include "Fuzz.h"

#include "Utility/FileLocks_p.h"

#include <Orv/Utility/Endian.h>
#include <Orv/Utility/EndpointHelper.h>
#include <Orv/Utility/SafeBase64.h>
#include <Orv/Utility/Uuid2String.h>

#include <QRegularExpression>

#include <array>
#include <memory>
#include <vector>

using namespace Orv::Utitlity;

namespace {

void checkBase64(FuzzedDataProvider& input)
{
    const QByteArray bytes = restOf(input);
    require(SafeBase64(SafeBase64(bytes).to()).from() == bytes, "Base64 round trip");
    require(SafeBase64(bytes).from().size() <= bytes.size() / 4 * 3 + 2, "four characters encode at most three bytes");
}

void checkIds(FuzzedDataProvider& input)
{
    const QByteArray bytes = restOf(input);
    const QUuid id = Uuid2String::winBase64ToUuid(bytes);
    require(QUuid(Uuid2String::windows(id)) == id, "round trip of an id through its string");
    QByteArray layout(16, '\0');
    Endian::WriteBytesLittleEndian(id, layout, 0);
    require(bytes.size() < 16 || layout == bytes.left(16), "round trip of the Windows layout");
    const QString text = Uuid2String::fromWinShortGuid(bytes);
    require(text.isNull() || Uuid2String::windows(QUuid(text)) == text, "a short GUID converts to the string of an id");
}

void checkBytes(FuzzedDataProvider& input)
{
    const int offset = input.ConsumeIntegralInRange(-20, 300);
    const int length = input.ConsumeIntegralInRange(-3, 100);
    const auto value = input.ConsumeIntegral<quint64>();
    QByteArray data = restOf(input);
    Endian::ToGuidLittleEndian(data, offset);
    const QByteArray field = data.left(std::max(0, length)).leftJustified(length, '\0');
    Endian::StringToBytes(data, data, offset, length);
    require(offset < 0 || Endian::BytesToString(data, offset, length) == field, "round trip of a field");
    Endian::WriteBytesLittleEndian(value, data, offset);
    require(offset < 0 || Endian::ToUInt64LittleEndian(data, offset) == value, "round trip of a number");
}

void checkEndpoint(FuzzedDataProvider& input)
{
    // Excludes normal forms that would be parsed differently: special characters before the host, or an "@"
    static const QRegularExpression stable(
        QStringLiteral("^//[^/:@][^@]*$"), QRegularExpression::DotMatchesEverythingOption);
    const EndpointHelper helper(QString::fromUtf8(restOf(input)), true);
    require(
        helper.lastErrorMessage().isNull() != helper.hasError(), "a message exists if and only if there is an error");
    if (helper.hasError() || !stable.match(helper.endpoint()).hasMatch())
        return;
    const EndpointHelper again(helper.endpointWithScheme(), !helper.useSsl());
    require(!again.hasError() && again.endpoint() == helper.endpoint(), "normalising is idempotent");
    require(again.useSsl() == helper.useSsl(), "the scheme sets the TLS flag");
}

void checkLocks(FuzzedDataProvider& input)
{
    const auto max = input.ConsumeIntegralInRange<unsigned char>(0, 20);
    const std::string line = input.ConsumeRemainingBytesAsString();
    std::vector<char> buffer(
        line.c_str(), line.c_str() + line.size() + 1); // exact size, to detect reads beyond the end
    std::vector<char*> fields(max);
    require(get_fields(buffer.data(), fields.data(), max) <= max, "at most max fields");

    std::string table = line.c_str(); // up to the first NUL, like the parser
    table += "\n1: POSIX ADVISORY WRITE 1 fd:00:77 0 EOF";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        ::fmemopen(table.data(), table.size(), "r"), std::fclose);
    require(listsWriteLock(file.get(), 77), "a lock is found after arbitrary lines");
}

} // namespace

/// Parsing is memory-safe for any input, and round trips are exact.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const std::array checks = {checkBase64, checkIds, checkBytes, checkEndpoint, checkLocks};
    checks[input.ConsumeIntegralInRange<std::size_t>(0, checks.size() - 1)](input);
    return 0;
}

// Encodings and text utilities.
#include <Orv/Utility/Endian.h>
#include <Orv/Utility/EndpointHelper.h>
#include <Orv/Utility/MathUtilities.h>
#include <Orv/Utility/SafeBase64.h>
#include <Orv/Utility/SizeToString.h>
#include <Orv/Utility/StringFilters.h>
#include <Orv/Utility/TimeDuration.h>
#include <Orv/Utility/Uuid2String.h>

using namespace Orv::Utility;
using namespace Orv::Utitlity;

int main()
{
    bool isGood = true;
    const auto expect = [&isGood](bool condition) { isGood = isGood && condition; };

    // A record with integers in a fixed byte order; the array grows as needed
    QByteArray record;
    Endian::WriteBytesBigEndian(0x01020304u, record, 0);
    Endian::WriteBytesLittleEndian(short(-2), record, 4);
    expect(record == QByteArray::fromHex("01020304feff"));
    expect(Endian::ToUInt32BigEndian(record, 0) == 0x01020304u && Endian::ToInt16LittleEndian(record, 4) == -2);

    // Bytes in a file name or in a URL; the array has to outlive the view
    const QByteArray bytes("\xfb\xff", 2);
    const QByteArray text = SafeBase64(bytes).to();
    expect(text == "-~8_" && SafeBase64(text).from() == bytes);

    const QUuid id("{00112233-4455-6677-8899-aabbccddeeff}");
    expect(Uuid2String::windows(id) == "00112233-4455-6677-8899-aabbccddeeff");

    // The address of a service, as a user enters it
    const EndpointHelper address("https://backup.example.com:8443/api", false);
    expect(!address.hasError() && address.useSsl() && address.endpoint() == "//backup.example.com:8443/api");

    // Strings for display
    expect(SizeToString(1536).toString(SizeToString::Binary) == "1.50 KiB");
    expect(TimeDuration::toString(3661) == "01:01:01");
    expect(StringFilters::prefixFilter("a/b: c?") == "ab c");

    expect(Extensions::MathUtilities::RoundUp(4097, 4096) == 8192);
    return isGood ? 0 : 1;
}

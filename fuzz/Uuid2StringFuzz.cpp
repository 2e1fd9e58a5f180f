#include "Fuzz.h"

#include <Orv/Utility/Endian.h>
#include <Orv/Utility/Uuid2String.h>

#include <algorithm>

using Orv::Utitlity::Endian;
using Orv::Utitlity::Uuid2String;

namespace {

/// "+" and "/", for which a short GUID has other characters, are taken as well.
bool isShortGuidCharacter(char character)
{
    static const QByteArray characters("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-!+/");
    return characters.contains(character);
}

QByteArray toLayout(const QUuid& id)
{
    QByteArray layout(16, '\0');
    Endian::WriteBytesLittleEndian(id, layout, 0);
    return layout;
}

void checkBinary(const QByteArray& bytes)
{
    const QUuid id = Uuid2String::winBase64ToUuid(bytes);
    if (bytes.size() < 16)
        require(id.isNull(), "fewer bytes are the null id");
    else
        require(toLayout(id) == bytes.left(16), "the layout of the id is what it was read from");
    const QString text = Uuid2String::windows(id);
    require(QUuid(text) == id && text.size() == 36, "the text is that of the id");
    require(Uuid2String::classic(id) == '{' + text + '}', "the texts differ by the braces");
}

void checkShort(const QByteArray& shortGuid)
{
    const QString text = Uuid2String::fromWinShortGuid(shortGuid);
    require(text.isNull() == (shortGuid.size() != 22), "short GUIDs of 22 characters have a text");
    if (text.isNull())
        return;
    const QUuid id(text);
    require(Uuid2String::windows(id) == text, "the text is that of an id");
    if (!std::all_of(shortGuid.begin(), shortGuid.end(), isShortGuidCharacter)) {
        require(id.isNull(), "what is no Base64 is the null id");
        return;
    }
    // The last four bits of 22 characters are none of the id's.
    const QByteArray back = toLayout(id).toBase64(QByteArray::OmitTrailingEquals).replace('+', '-').replace('/', '!');
    const QByteArray given = QByteArray(shortGuid).replace('+', '-').replace('/', '!');
    require(back.left(21) == given.left(21), "the id has the short GUID that it was read from");
}

} // namespace

/// Ids come back from all their forms.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    checkBinary(bytes);
    checkShort(bytes);
    return 0;
}

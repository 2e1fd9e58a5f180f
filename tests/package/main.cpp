// A client of the installed library: every exported header, a key, a log line, an exception across the boundary.
#include <Orv/OrvCore.h>

#include <QBuffer>

#include <cstdio>
#include <memory>

using namespace Orv::Core::Encryption;

int main()
{
    QSharedPointer<QBuffer> source(new QBuffer);
    source->setData("text");
    source->open(QIODevice::ReadOnly);
    const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(Aes256, true, Cbc));
    encryptor->setKey(Key::generateSimple(Aes256, "password"));
    encryptor->setIv(QByteArray());
    encryptor->setSource(source);
    char data[64];
    if (!encryptor->init() || encryptor->readData(data, sizeof data) != 16)
        return 1;

    encryptor->setIv("no IV");
    try {
        encryptor->init();
        return 1;
    } catch (const std::exception&) {
        // the cipher library's own, caught without its headers
    }
    Orv::OrvDebug("outside").info() << Orv::Core::Version::string();
    std::puts("outside: good");
    return 0;
}

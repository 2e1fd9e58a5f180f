// A client of the installed library: every exported header, a key, a log line, an exception across the boundary.
#include <Orv/OrvCore.h>

#include <cstdio>
#include <memory>

using namespace Orv::Core::Encryption;

int main()
{
    const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(Aes256, true, Cbc));
    encryptor->setKey(Key::generateSimple(Aes256, "password"));
    encryptor->setIv("no IV");
    try {
        encryptor->init();
    } catch (const std::exception& exception) { // the cipher library's own, caught without its headers
        Orv::OrvDebug("outside").info() << Orv::Core::Version::string() << exception.what();
        std::puts("outside: good");
        return 0;
    }
    return 1;
}

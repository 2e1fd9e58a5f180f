// Encrypts a file with a key from a password, and decrypts it.
#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Key.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <stdexcept>

using namespace Orv::Core::Encryption;

//! [key]
// The salt is no secret: it is kept beside the encrypted data. The password's characters become bytes in the same way
// on every client, here UTF-8.
QByteArray keyOf(const QString& password, const QByteArray& salt)
{
    return Key::generateAdvanced(Aes256, password.toUtf8(), salt, Key::ITERATION_ADVANCED);
}
//! [key]

//! [copy]
// Reads the source through the encryptor to its end. Memory does not grow with the file.
void copy(EncryptorBase& encryptor, const QString& from, const QString& to)
{
    const QSharedPointer<QFile> source(new QFile(from));
    QFile target(to);
    if (!source->open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly))
        throw std::runtime_error("a file cannot be opened");
    encryptor.setSource(source);
    if (!encryptor.init())
        throw std::runtime_error("there is no such cipher mode");
    if (!encryptor.writeTo(target))
        throw std::runtime_error(encryptor.sourceFailed() ? "a file cannot be read" : "a file cannot be written");
    if (encryptor.bytesRead() != source->size())
        throw std::runtime_error("a file changed while it was read");
}
//! [copy]

//! [encrypt]
// Returns the IV, a new one for each file, which is kept beside it like the salt.
QByteArray encrypt(const QString& from, const QString& to, const QByteArray& key)
{
    const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(Aes256, true, Cbc));
    encryptor->setKey(key);
    encryptor->setIv(QByteArray()); // makes a random one
    copy(*encryptor, from, to);
    return encryptor->iv();
}
//! [encrypt]

//! [decrypt]
// A wrong key or a damaged file usually throws at its end, but not always: store a MAC or a hash to be sure.
void decrypt(const QString& from, const QString& to, const QByteArray& key, const QByteArray& iv)
{
    const std::unique_ptr<EncryptorBase> decryptor(EncryptorBase::create(Aes256, false, Cbc));
    decryptor->setKey(key);
    decryptor->setIv(iv);
    copy(*decryptor, from, to);
}
//! [decrypt]

static QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int main()
try {
    const QTemporaryDir folder;
    const QString plain = folder.filePath("plain"), sealed = folder.filePath("sealed"),
                  opened = folder.filePath("opened");
    const QByteArray text = QByteArray("A line of text.\n").repeated(10000);
    QFile file(plain);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        return 1;
    file.close();

    const QByteArray salt = Key::randomSalt();
    const QByteArray key = keyOf("correct horse", salt);
    const QByteArray iv = encrypt(plain, sealed, key);
    decrypt(sealed, opened, keyOf("correct horse", salt), iv);

    const bool isSealed = contentOf(sealed).size() == text.size() + 16 && !contentOf(sealed).contains("line of text");
    return isSealed && contentOf(opened) == text ? 0 : 1;
} catch (const std::exception& e) {
    std::fputs(e.what(), stderr);
    return 1;
}

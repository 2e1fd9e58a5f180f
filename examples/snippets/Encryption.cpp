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
// The salt is not secret; store it with the encrypted data. Every client has to use the same encoding for the password,
// here UTF-8.
QByteArray keyOf(const QString& password, const QByteArray& salt)
{
    return Key::generateAdvanced(Aes256, password.toUtf8(), salt, Key::ITERATION_ADVANCED);
}
//! [key]

//! [copy]
// Reads the source through the encryptor to its end, in constant memory.
void copy(EncryptorBase& encryptor, const QString& from, const QString& to)
{
    const QSharedPointer<QFile> source(new QFile(from));
    QFile target(to);
    if (!source->open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot open a file");
    encryptor.setSource(source);
    if (!encryptor.init())
        throw std::runtime_error("unknown cipher mode");
    if (!encryptor.writeTo(target))
        throw std::runtime_error(encryptor.sourceFailed() ? "cannot read a file" : "cannot write a file");
    if (encryptor.bytesRead() != source->size())
        throw std::runtime_error("a file changed while it was read");
}
//! [copy]

//! [encrypt]
// Returns the IV, a new one for each file; store it like the salt.
QByteArray encrypt(const QString& from, const QString& to, const QByteArray& key)
{
    const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(Aes256, true, Cbc));
    encryptor->setKey(key);
    encryptor->setIv(QByteArray()); // generates a random IV
    copy(*encryptor, from, to);
    return encryptor->iv();
}
//! [encrypt]

//! [decrypt]
// A wrong key or a damaged file usually throws at the end, but not always: store a MAC or a hash, too.
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
    const QTemporaryDir directory;
    const QString plain = directory.filePath("plain"), sealed = directory.filePath("sealed"),
                  opened = directory.filePath("opened");
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

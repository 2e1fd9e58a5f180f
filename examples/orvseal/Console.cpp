#include "Console.h"

#include "Work.h"

#include <Orv/Log/OrvDebug.h>
#include <Orv/Utility/SizeToString.h>
#include <Orv/Utility/TimeDuration.h>

#include <QFile>
#include <QScopeGuard>
#include <QTextStream>

#include <cerrno>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

using Orv::Exception::Base;
using Orv::Utility::SizeToString;
using Orv::Utility::TimeDuration;

namespace orvseal {

namespace {

constexpr int LongestPassword = 64 * 1024; // bytes

QByteArray typedPassword(const char* prompt)
{
    termios before = {};
    bool isSilent = ::tcgetattr(STDIN_FILENO, &before) == 0;
    termios silent = before;
    silent.c_lflag &= ~tcflag_t(ECHO);
    isSilent = isSilent && ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
    if (!isSilent)
        throw Base(QStringLiteral("the terminal's echo cannot be switched off"));
    const auto restore = qScopeGuard([&before] { ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before); });

    std::fputs(prompt, stderr);
    QByteArray password;
    for (char character = 0; password.size() < LongestPassword;) {
        const ssize_t count = ::read(STDIN_FILENO, &character, 1);
        stopIfInterrupted();
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0 || character == '\n')
            break;
        password += character;
    }
    std::fputs("\n", stderr); // the typed one had no echo either
    return password;
}

QByteArray promptedPassword(bool confirmed)
{
    if (!::isatty(STDIN_FILENO))
        throw Base(
            QStringLiteral("no password: use --password-file, set ORVSEAL_PASSWORD, or start orvseal on a terminal"));
    const QByteArray password = typedPassword("Password: ");
    if (confirmed && typedPassword("Repeat the password: ") != password)
        throw Base(QStringLiteral("the two passwords differ"));
    return password;
}

QByteArray passwordOfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Base(QStringLiteral("the password file cannot be read: ") + file.errorString());
    QByteArray password = file.read(LongestPassword);
    if (file.error() != QFile::NoError || !file.atEnd())
        throw Base(QStringLiteral("the password file cannot be read, or is too long"));
    if (password.endsWith('\n'))
        password.chop(1);
    return password;
}

} // namespace

void print(const QString& line)
{
    Orv::OrvDebug::output() << line << Qt::endl;
}

QString printable(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (character == '\n')
            result += QLatin1String("\\n");
        else if (character.category() == QChar::Other_Control)
            result += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}

QString sizeText(qint64 bytes)
{
    return SizeToString(static_cast<unsigned long long>(bytes)).toString(SizeToString::Decimal);
}

QString durationText(qint64 milliseconds)
{
    return TimeDuration::toString(qRound(double(milliseconds) / 1000));
}

QByteArray obtainPassword(const QString& passwordFile, bool confirmed)
{
    static constexpr char Variable[] = "ORVSEAL_PASSWORD";
    QByteArray password;
    if (!passwordFile.isNull())
        password = passwordOfFile(passwordFile);
    else if (qEnvironmentVariableIsSet(Variable))
        password = qgetenv(Variable);
    else
        password = promptedPassword(confirmed);
    if (password.isEmpty())
        throw Base(QStringLiteral("the password is empty"));
    return password;
}

} // namespace orvseal

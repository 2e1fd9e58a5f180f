#include "Console.h"

#include "Work.h"

#include <Orv/Log/OrvDebug.h>
#include <Orv/Utility/SizeToString.h>
#include <Orv/Utility/TimeDuration.h>

#include <QFile>
#include <QScopeGuard>
#include <QTextStream>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace orvseal {

namespace {

constexpr int LongestPassword = 64 * 1024; // bytes
constexpr int BarWidth = 10;               // characters
constexpr qint64 LineInterval = 5000;      // ms

// For one entry, and behind the number of several; in the order of Report::Note
constexpr const char* NoteTexts[Report::NoteCount][2] = {
    {"1 sealed file was missing or had a wrong size; its source was read again",
        " sealed files were missing or had wrong sizes; their sources were read again"},
    {"1 entry has extended attributes, which are not kept", " entries have extended attributes, which are not kept"},
    {"1 entry has an access control list, which is not kept", " entries have access control lists, which are not kept"},
    {"1 entry has a set-user-ID or set-group-ID bit, which is not kept",
        " entries have set-user-ID or set-group-ID bits, which are not kept"},
    {"1 entry could not be given to its owner and group", " entries could not be given to their owners and groups"},
    {"1 sealed file is left over from a run that was interrupted; the next \"seal\" removes it",
        " sealed files are left over from a run that was interrupted; the next \"seal\" removes them"},
};

QByteArray typedPassword(const char* prompt)
{
    termios before = {};
    const bool isTerminal = ::tcgetattr(STDIN_FILENO, &before) == 0;
    termios silent = before;
    silent.c_lflag &= ~tcflag_t(ECHO);
    if (!isTerminal || ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) != 0)
        fail("the terminal's echo cannot be switched off");
    const auto restore = qScopeGuard([&before] { ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before); });

    std::fputs(prompt, stderr);
    QByteArray password; // may contain any byte but a newline
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
        fail("no password: use --password-file, set ORVSEAL_PASSWORD, or start orvseal on a terminal");
    const QByteArray password = typedPassword("Password: ");
    if (confirmed && typedPassword("Repeat the password: ") != password)
        fail("the two passwords differ");
    return password;
}

QByteArray passwordOfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail("the password file cannot be read: %1", file.errorString());
    QByteArray password = file.read(LongestPassword);
    if (file.error() != QFile::NoError || !file.atEnd())
        fail("the password file cannot be read, or is too long");
    if (password.endsWith('\n'))
        password.chop(1);
    return password;
}

QString durationText(qint64 milliseconds) // as "00:01:30"
{
    return Orv::Utility::TimeDuration::toString(qRound(double(milliseconds) / 1000));
}

QString countText(qint64 count, const QString& noun)
{
    return QString::number(count) + ' ' + noun + (count == 1 ? "" : "s");
}

void printError(const QString& line)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(line));
}

void printAndLog(const QString& line)
{
    print(line);
    Orv::OrvDebug("orvseal").info() << line;
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
            result += "\\n";
        else if (character.category() == QChar::Other_Control)
            result += QString("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}

QString sizeText(qint64 bytes)
{
    using Orv::Utility::SizeToString;
    return SizeToString(static_cast<unsigned long long>(bytes)).toString(SizeToString::Decimal);
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
        fail("the password is empty");
    return password;
}

void Report::begin(const QString& activity, qint64 files, qint64 bytes)
{
    m_activity = activity;
    m_totalFiles = files;
    m_totalBytes = bytes;
    m_timer.start();
    showProblems();
    printAndLog(QString("%1 %2, %3").arg(activity, countText(files, "file"), sizeText(bytes)));
}

void Report::problem(const QString& path, const QString& reason)
{
    const QString line = printable(path + ": " + reason);
    Orv::OrvDebug("orvseal").warning() << line;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_newProblems += line;
    ++m_problems;
}

void Report::attempt(const QString& path, const std::function<void()>& work)
{
    stopIfInterrupted();
    try {
        work();
    } catch (const FatalError&) {
        throw;
    } catch (const std::exception& failure) {
        problem(path, QString::fromUtf8(failure.what()));
    }
}

void Report::show()
{
    static const bool hasTerminal = ::isatty(STDERR_FILENO) != 0;
    const double part = m_totalBytes > 0 ? std::min(1.0, double(m_bytes) / double(m_totalBytes)) : 0;
    const QString left = durationText(part > 0 ? qint64(double(milliseconds()) * (1 - part) / part) : 0);
    const QString text =
        QString("%1 %2 %%3, %4 of %5, %6, %7")
            .arg(m_activity, QString::number(int(part * 100)), part > 0 ? ", " + left + " left" : QString(),
                QString::number(m_files), countText(m_totalFiles, "file"), sizeText(m_bytes), rateText());
    showProblems(false);
    if (hasTerminal) {
        winsize size = {};
        const int width = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
        const QString bar = '[' + QString(int(part * BarWidth), '#').leftJustified(BarWidth) + "] ";
        // One write that replaces the old text, against flicker; a line that wraps could not be replaced.
        std::fprintf(stderr, "\r%s\x1b[K", qUtf8Printable((bar + text).left(width - 1)));
        m_barShown = true;
    } else if (m_timer.elapsed() - m_lastLine >= LineInterval) {
        m_lastLine = m_timer.elapsed();
        printError(text);
    }
}

void Report::showProblems(bool clearsBar)
{
    QStringList lines;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        lines.swap(m_newProblems);
    }
    if (m_barShown && (clearsBar || !lines.isEmpty())) {
        std::fputs("\r\x1b[K", stderr);
        m_barShown = false;
    }
    for (const QString& line : qAsConst(lines))
        printError("orvseal: " + line);
}

void Report::finish(const QString& done, const QString& details)
{
    showProblems();
    for (std::size_t note = 0; note < NoteCount; ++note) {
        if (m_notes[note] > 0)
            printAndLog(
                m_notes[note] == 1 ? QString(NoteTexts[note][0]) : QString::number(m_notes[note]) + NoteTexts[note][1]);
    }
    QStringList parts(
        QString("%1 %2, %3, %4, %5")
            .arg(done, countText(m_files, "file"), sizeText(m_bytes), durationText(milliseconds()), rateText()));
    if (!details.isEmpty())
        parts += details;
    if (m_problems > 0)
        parts += countText(m_problems, "problem");
    printAndLog(parts.join("; "));
}

QString Report::rateText() const
{
    return sizeText(qint64(double(m_bytes) * 1000 / double(milliseconds()))) + "/s";
}

} // namespace orvseal

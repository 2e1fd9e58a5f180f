#include "Report.h"

#include "Console.h"
#include "Work.h"

#include <Orv/Log/OrvDebug.h>

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace orvseal {

namespace {

constexpr int BarWidth = 10;          // characters
constexpr qint64 LineInterval = 5000; // ms

bool hasTerminal()
{
    static const bool terminal = ::isatty(STDERR_FILENO) != 0;
    return terminal;
}

int terminalWidth() // characters
{
    winsize size = {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

QString filesText(qint64 count)
{
    return count == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(count);
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

struct NoteText {
    const char* one;
    const char* many; // behind the number
};

constexpr std::array<NoteText, Report::NoteCount> NoteTexts = {{
    {"1 sealed file was missing or had a wrong size; its source was read again",
        " sealed files were missing or had wrong sizes; their sources were read again"},
    {"1 entry has extended attributes, which are not kept", " entries have extended attributes, which are not kept"},
    {"1 entry has an access control list, which is not kept", " entries have access control lists, which are not kept"},
    {"1 entry has a set-user-ID or set-group-ID bit, which is not kept",
        " entries have set-user-ID or set-group-ID bits, which are not kept"},
    {"1 entry could not be given to its owner and group", " entries could not be given to their owners and groups"},
    {"1 sealed file is left over from a run that was interrupted; the next \"seal\" removes it",
        " sealed files are left over from a run that was interrupted; the next \"seal\" removes them"},
}};

} // namespace

void Report::begin(const QString& activity, qint64 files, qint64 bytes)
{
    m_activity = activity;
    m_totalFiles = files;
    m_totalBytes = bytes;
    m_timer.start();
    showProblems();
    printAndLog(QStringLiteral("%1 %2, %3").arg(activity, filesText(files), sizeText(bytes)));
}

void Report::problem(const QString& path, const QString& reason)
{
    const QString line = printable(QStringLiteral("%1: %2").arg(path, reason));
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
    } catch (const Orv::Exception::Canceled&) {
        throw;
    } catch (const CannotGoOn&) {
        throw;
    } catch (const std::exception& failure) {
        problem(path, QString::fromUtf8(failure.what()));
    }
}

void Report::show()
{
    printProblems();
    if (hasTerminal()) {
        const int filled = int(partDone() * BarWidth);
        const QString bar = '[' + QString(filled, '#').leftJustified(BarWidth) + QStringLiteral("] ");
        // One write that replaces the old text, against flicker; a line that wraps could not be replaced.
        std::fprintf(stderr, "\r%s\x1b[K", qUtf8Printable((bar + progressText()).left(terminalWidth() - 1)));
        m_barShown = true;
    } else if (m_timer.elapsed() - m_lastLine >= LineInterval) {
        m_lastLine = m_timer.elapsed();
        printError(progressText());
    }
}

void Report::showProblems()
{
    clearBar();
    printProblems();
}

void Report::printProblems()
{
    QStringList lines;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        lines.swap(m_newProblems);
    }
    if (!lines.isEmpty())
        clearBar();
    for (const QString& line : qAsConst(lines))
        printError(QStringLiteral("orvseal: ") + line);
}

void Report::finish(const QString& done, const QString& details)
{
    showProblems();
    for (std::size_t note = 0; note < NoteCount; ++note) {
        if (m_notes[note] == 1)
            printAndLog(QLatin1String(NoteTexts[note].one));
        else if (m_notes[note] > 1)
            printAndLog(QString::number(m_notes[note]) + QLatin1String(NoteTexts[note].many));
    }
    const qint64 milliseconds = std::max<qint64>(1, m_timer.elapsed());
    const qint64 bytesPerSecond = qint64(double(m_bytes) * 1000 / double(milliseconds));
    QString line =
        QStringLiteral("%1 %2, %3, %4, %5/s")
            .arg(done, filesText(m_files), sizeText(m_bytes), durationText(milliseconds), sizeText(bytesPerSecond));
    if (!details.isEmpty())
        line += QStringLiteral("; ") + details;
    if (m_problems > 0)
        line += m_problems == 1 ? QStringLiteral("; 1 problem") : QStringLiteral("; %1 problems").arg(m_problems);
    printAndLog(line);
}

void Report::clearBar()
{
    if (m_barShown)
        std::fputs("\r\x1b[K", stderr);
    m_barShown = false;
}

double Report::partDone() const
{
    return m_totalBytes > 0 ? std::min(1.0, double(m_bytes) / double(m_totalBytes)) : 0;
}

QString Report::progressText() const
{
    const double milliseconds = double(std::max<qint64>(1, m_timer.elapsed()));
    const double part = partDone();
    const qint64 left = part > 0 ? qint64(milliseconds * (1 - part) / part) : 0;
    return QStringLiteral("%1 %2 %%3, %4 of %5, %6, %7/s")
        .arg(m_activity)
        .arg(int(part * 100))
        .arg(part > 0 ? QStringLiteral(", %1 left").arg(durationText(left)) : QString())
        .arg(m_files)
        .arg(filesText(m_totalFiles), sizeText(m_bytes), sizeText(qint64(double(m_bytes) * 1000 / milliseconds)));
}

} // namespace orvseal

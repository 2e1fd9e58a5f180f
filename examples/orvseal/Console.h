#pragma once

#include <QElapsedTimer>
#include <QStringList>

#include <array>
#include <atomic>
#include <functional>
#include <mutex>

/// What the program prints, and the password.
namespace orvseal {

/// Prints a line on standard output.
void print(const QString& line);
/// `text` with control characters as "\n" or "\x1b", so that a name stays on its line and controls no terminal.
QString printable(const QString& text);
/// As "3.40 MB".
QString sizeText(qint64 bytes);

/// The password, as raw bytes: the content of `passwordFile` without a newline at its end; or else the environment
/// variable ORVSEAL_PASSWORD; or else read from the terminal without echo, twice if it has to be `confirmed`. Throws if
/// there is none, or if it is empty.
QByteArray obtainPassword(const QString& passwordFile, bool confirmed);

/// What a command tells its user: progress, problems, and a summary.
///
/// Problems, notes and progress may come from any thread; only the thread that calls `show()` and `finish()` prints.
class Report {
public:
    /// Remarks that are no problems; `finish()` prints how many entries each one concerns. `NoteTexts` explains them.
    enum Note { Damaged, Attributes, AccessList, SetIdBits, Foreign, LeftOver, NoteCount };

    /// Prints what is about to be done, for instance "sealing" and how much.
    void begin(const QString& activity, qint64 files, qint64 bytes);

    /// So many more bytes have been processed.
    void advance(qint64 bytes) { m_bytes += bytes; }
    void fileDone() { ++m_files; }
    /// An entry failed or was skipped. Goes to standard error and to the log.
    void problem(const QString& path, const QString& reason);
    void count(Note note, bool applies = true) { m_notes[note] += applies ? 1 : 0; }
    /// Does the work on one entry and reports its failure as a problem, so that the command can continue with the next.
    /// A `FatalError` passes through.
    void attempt(const QString& path, const std::function<void()>& work);

    /// Prints new problems, and the progress: as a bar on a terminal, else as a line every 5 s.
    void show();
    /// Prints new problems, and removes the bar, unless there are none and it may stay.
    void showProblems(bool clearsBar = true);
    /// Prints everything that is left, and the summary: for instance "sealed" and how much, and then `details`.
    void finish(const QString& done, const QString& details = {});

    /// 1 if there were problems, else 0.
    int exitStatus() const { return m_problems > 0 ? 1 : 0; }

private:
    qint64 milliseconds() const { return qMax<qint64>(1, m_timer.elapsed()); }
    QString rateText() const;

    std::atomic<qint64> m_files{0};
    std::atomic<qint64> m_bytes{0};
    std::array<std::atomic<qint64>, NoteCount> m_notes = {};
    QElapsedTimer m_timer;
    QString m_activity;
    qint64 m_totalFiles = 0;
    qint64 m_totalBytes = 0;
    qint64 m_lastLine = 0; // when the last line of progress was printed, in ms
    bool m_barShown = false;

    std::atomic<qint64> m_problems{0};
    std::mutex m_mutex;
    QStringList m_newProblems; // not yet printed
};

} // namespace orvseal

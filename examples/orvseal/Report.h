#pragma once

#include "System.h"

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <mutex>

namespace orvseal {

/// What a command tells its user: how far it is, what went wrong, and what it did in all.
///
/// Problems and progress may come from any thread; only the thread that calls `show()` and `finish()` prints.
class Report {
public:
    /// Says what is about to be done, as "sealing" and how much.
    void begin(const QString& activity, qint64 files, qint64 bytes);

    /// So many more bytes have passed.
    void advance(qint64 bytes);
    void fileDone();
    /// An entry could not be done, or was skipped. Goes to standard error and to the log.
    void problem(const QString& path, const QString& reason);
    ///@{
    /// What is no problem, but has to be said: counted here and told in a line each by `finish()`.
    void countExtras(const Extras& extras, bool lendsRights); ///< what is not kept of an entry
    void countForeign() { ++m_foreign; }                      ///< an entry that was not given to its owner
    void countLeftOver() { ++m_leftOver; }                    ///< a sealed file of a run that was killed
    ///@}
    /// Does the work on one entry and turns its failure into a problem; the command goes on with the next. What ends
    /// the whole command, an interrupt or `CannotGoOn`, is let through.
    void attempt(const QString& path, const std::function<void()>& work);

    /// Prints the problems that have come in, and the progress: as a bar on a terminal, else as a line now and then.
    void show();
    /// Prints what is left to print and the summary, as "sealed" and how much, with `details` behind it.
    void finish(const QString& done, const QString& details);
    /// Prints the problems that have come in and clears the bar.
    void showProblems();

    /// 0 if everything could be done, 1 if not.
    int exitStatus() const { return m_problems > 0 ? 1 : 0; }

private:
    void printNotes() const;
    void clearBar();
    double portionDone() const;
    QString progressText() const;

    std::atomic<qint64> m_files{0};
    std::atomic<qint64> m_bytes{0};
    QElapsedTimer m_timer;
    QString m_activity;
    qint64 m_totalFiles = 0;
    qint64 m_totalBytes = 0;
    qint64 m_lastLine = 0; // when the last line of progress was printed, in ms
    bool m_barShown = false;

    qint64 m_withAttributes = 0;
    qint64 m_withAccessList = 0;
    qint64 m_lendingRights = 0;
    qint64 m_leftOver = 0;
    std::atomic<qint64> m_foreign{0};

    std::atomic<qint64> m_problems{0};
    std::mutex m_mutex;
    QStringList m_newProblems; // not yet printed
};

} // namespace orvseal

#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>

/// A small file system of this process alone, mounted while it lives; only root can have one.
class PrivateMount {
public:
    /// An empty one of `size` bytes: of type "tmpfs" in memory, of another type in a file.
    PrivateMount(qint64 size, const char* type);
    ~PrivateMount();
    PrivateMount(const PrivateMount&) = delete;
    PrivateMount& operator=(const PrivateMount&) = delete;

    /// Why it could not be mounted; null if it was.
    QString reason() const { return m_reason; }
    QString path() const { return m_path; }

    /// Gives a file an attribute of 600 bytes. False where there are none.
    static bool addLargeAttribute(const QFile& file);
    /// From now on, reserving space stops half-way because the user's quota is used up. Quotas themselves need a kernel
    /// that was built with them.
    static void useUpQuota();

private:
    QTemporaryDir m_folder;
    QString m_path;
    QString m_reason;
};

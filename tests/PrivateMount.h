#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>

/// A small file system in a private mount namespace, mounted during the lifetime of the object. Requires root.
class PrivateMount {
public:
    /// Mounts an empty file system of `size` bytes: "tmpfs" in memory, other types in an image file.
    PrivateMount(qint64 size, const char* type);
    ~PrivateMount();
    PrivateMount(const PrivateMount&) = delete;
    PrivateMount& operator=(const PrivateMount&) = delete;

    /// Why the mount failed; null if it succeeded.
    QString reason() const { return m_reason; }
    QString path() const { return m_path; }

    /// Adds an extended attribute of 600 bytes to a file. False if they are not supported.
    static bool addLargeAttribute(const QFile& file);
    /// From now on, reservations fail half-way with an exceeded quota. Simulated, because real quotas need kernel
    /// support.
    static void useUpQuota();

private:
    QTemporaryDir m_directory;
    QString m_path;
    QString m_reason;
};

#pragma once

#include <Orv/Export.h>

#include <QObject>
#include <QString>

#include <memory>

namespace Orv::Utility {

class CloudItem;

/// Tells whether a file is in the user's cloud drive (iCloud) and whether its content is on this machine, and asks for
/// the content. What is not downloaded yet is a placeholder, and reading it for a backup has to wait.
///
/// Every call asks the system anew, and leaves a full trace in the debug log: two records, one with the file and the
/// user's cloud set-up, one with the process's whole environment: a process that uses this should keep no secrets
/// there. The record of the cloud configuration needs the URL of the application's container: the system may block the
/// calling thread while it looks it up, so call from a worker thread rather than from one with a user interface.
/// Nothing is thrown. Where there is no cloud drive, as on Linux, no file is in it.
///
/// An object may be used by any thread, one at a time. The signal is emitted on the thread of the call.
class ORV_EXPORT FileProviderMac : public QObject {
    Q_OBJECT

public:
    /// Where a file's content is.
    enum DownloadingStatus : int {
        Current = 0,       ///< downloaded, and the newest version
        Downloaded = 1,    ///< downloaded, though the cloud has a newer version
        NotDownloaded = 2, ///< a placeholder
        Unknown = 3,       ///< not in the cloud drive, or the system does not tell
    };

    /// For the file at `path`, which need not exist.
    explicit FileProviderMac(const QString& path, QObject* parent = nullptr);
    ~FileProviderMac() override;

    /// Whether the file is in the cloud drive.
    bool isUbiquitous() const;
    /// A `DownloadingStatus`.
    int downloadingStatus() const;
    /// Asks the system to download the file, if it is `NotDownloaded`.
    void startDownloading();

Q_SIGNALS:
    /// The system has taken the request of `startDownloading()`. When the content has come, `downloadingStatus()`
    /// tells.
    void downloadingStarted();

protected:
    /// With somebody else to answer for the system.
    FileProviderMac(std::unique_ptr<CloudItem> item, QObject* parent);

private:
    const std::unique_ptr<CloudItem> m_item;
};

} // namespace Orv::Utility

#pragma once

#include <Orv/Export.h>

#include <QObject>
#include <QString>

#include <memory>

namespace Orv::Utility {

class CloudItem;

/// Reports whether a file is in the user's cloud drive (iCloud) and whether its content is on this machine, and
/// requests its download. A file that is not downloaded is a placeholder; a backup has to wait before it reads it.
///
/// Every call queries the system and writes two debug messages: one with the file and the user's cloud configuration,
/// one with the whole environment of the process, so do not keep secrets in environment variables. The first needs the
/// URL of the application's container, whose lookup may block: call from a worker thread, not from a user-interface
/// thread. Does not throw. Without a cloud drive, as on Linux, no file is in it.
///
/// An object may be used by any thread, but only by one at a time. The signal is emitted on the calling thread.
class ORV_EXPORT FileProviderMac : public QObject {
    Q_OBJECT

public:
    /// The state of a file's content.
    enum DownloadingStatus : int {
        Current = 0,       ///< downloaded, latest version
        Downloaded = 1,    ///< downloaded, but the cloud has a newer version
        NotDownloaded = 2, ///< a placeholder
        Unknown = 3,       ///< not in the cloud drive, or not reported by the system
    };

    /// `path` is the path of the file, which need not exist.
    explicit FileProviderMac(const QString& path, QObject* parent = nullptr);
    ~FileProviderMac() override;

    /// Whether the file is in the cloud drive.
    bool isUbiquitous() const;
    /// Returns a `DownloadingStatus`.
    int downloadingStatus() const;
    /// Requests the download of the file if it is `NotDownloaded`.
    void startDownloading();

Q_SIGNALS:
    /// The system has accepted the request of `startDownloading()`. Poll `downloadingStatus()` for its completion.
    void downloadingStarted();

protected:
    /// Uses `item` instead of the system.
    FileProviderMac(std::unique_ptr<CloudItem> item, QObject* parent);

private:
    const std::unique_ptr<CloudItem> m_item;
};

} // namespace Orv::Utility

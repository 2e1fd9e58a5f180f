#pragma once

#include <QString>

#include <memory>

namespace Orv::Utility {

/// The user's cloud configuration, for the log. Missing values are null.
struct CloudSetup {
    QString userName;
    QString fullUserName;
    QString homeDirectory;
    QString identityToken; ///< of the user signed in to the cloud drive
    QString rootUrl;       ///< of the application's container
};

/// The state of a file in the cloud drive. Each call queries the system.
class CloudItem {
public:
    /// The system's strings for the download states.
    struct Statuses {
        QString current;
        QString downloaded;
        QString notDownloaded;
    };

    CloudItem() = default;
    virtual ~CloudItem() = default;
    CloudItem(const CloudItem&) = delete;
    CloudItem& operator=(const CloudItem&) = delete;

    virtual QString path() const = 0;
    virtual CloudSetup setup() const = 0;
    virtual bool isUbiquitous() const = 0;
    /// One of `statuses()` or another string; null if unknown.
    virtual QString status() const = 0;
    virtual Statuses statuses() const = 0;
    /// Whether the system accepts the request.
    virtual bool startDownloading() = 0;
};

std::unique_ptr<CloudItem> makeCloudItem(const QString& path);

} // namespace Orv::Utility

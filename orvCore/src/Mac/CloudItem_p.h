#pragma once

#include <QString>

#include <memory>

namespace Orv::Utility {

/// The user's cloud set-up, for the log. What there is not is null.
struct CloudSetup {
    QString userName;
    QString fullUserName;
    QString homeDirectory;
    QString identityToken; ///< of the user who is signed in to the cloud drive
    QString rootUrl;       ///< of the application's folder in it
};

/// What the system says of one file. Each call asks anew.
class CloudItem {
public:
    /// The system's texts for the states of a download.
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
    /// One of `statuses()` or another text; null if the system does not tell.
    virtual QString status() const = 0;
    virtual Statuses statuses() const = 0;
    /// Whether the system takes the request.
    virtual bool startDownloading() = 0;
};

std::unique_ptr<CloudItem> makeCloudItem(const QString& path);

} // namespace Orv::Utility

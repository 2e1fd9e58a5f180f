#include "Mac/CloudItem_p.h"

#include <QUrl>

#import <Foundation/Foundation.h>

namespace Orv::Utility {

namespace {

/// The application's container, as in its entitlements.
NSString* const Container = @"iCloud.com.orv.backup";

/// Compiled with ARC. Each function has its own autorelease pool, so the calling thread needs none.
class CloudItemMac : public CloudItem {
public:
    explicit CloudItemMac(const QString& path) : m_url(urlOf(path)) { }

    QString path() const override
    {
        @autoreleasepool {
            return QString::fromNSString(m_url.path);
        }
    }

    CloudSetup setup() const override
    {
        @autoreleasepool {
            NSFileManager* const manager = [[NSFileManager alloc] init];
            NSURL* const root = [manager URLForUbiquityContainerIdentifier:Container];
            const id token = manager.ubiquityIdentityToken;
            CloudSetup setup;
            setup.userName = QString::fromNSString(NSUserName());
            setup.fullUserName = QString::fromNSString(NSFullUserName());
            setup.homeDirectory = QString::fromNSString(manager.homeDirectoryForCurrentUser.path);
            setup.identityToken = QString::fromNSString([token description]);
            setup.rootUrl = QString::fromNSString(root.absoluteString);
            return setup;
        }
    }

    bool isUbiquitous() const override
    {
        @autoreleasepool {
            NSFileManager* const manager = [[NSFileManager alloc] init];
            return m_url && [manager isUbiquitousItemAtURL:m_url];
        }
    }

    QString status() const override
    {
        @autoreleasepool {
            // NSURL caches resource values and clears them automatically only on the main thread, once per run-loop
            // iteration.
            [m_url removeCachedResourceValueForKey:NSURLUbiquitousItemDownloadingStatusKey];
            NSString* status = nil;
            const BOOL isRead = [m_url getResourceValue:&status
                                                 forKey:NSURLUbiquitousItemDownloadingStatusKey
                                                  error:nil];
            return isRead ? QString::fromNSString(status) : QString();
        }
    }

    Statuses statuses() const override
    {
        return {QString::fromNSString(NSURLUbiquitousItemDownloadingStatusCurrent),
            QString::fromNSString(NSURLUbiquitousItemDownloadingStatusDownloaded),
            QString::fromNSString(NSURLUbiquitousItemDownloadingStatusNotDownloaded)};
    }

    bool startDownloading() override
    {
        @autoreleasepool {
            NSFileManager* const manager = [[NSFileManager alloc] init];
            return [manager startDownloadingUbiquitousItemAtURL:m_url error:nil];
        }
    }

private:
    static NSURL* urlOf(const QString& path)
    {
        @autoreleasepool {
            return QUrl::fromLocalFile(path).toNSURL();
        }
    }

    NSURL* const m_url;
};

} // namespace

std::unique_ptr<CloudItem> makeCloudItem(const QString& path)
{
    return std::make_unique<CloudItemMac>(path);
}

} // namespace Orv::Utility

#include "Mac/CloudItem_p.h"

#include <QUrl>

#include <utility>

#include <objc/message.h>
#include <objc/runtime.h>

// Foundation's headers are Objective-C, which is more than a C++ compiler reads: its functions and constants are
// declared here, and its methods are called through the object runtime.
extern "C" {
NSString* NSUserName();
NSString* NSFullUserName();
extern NSString* const NSURLUbiquitousItemDownloadingStatusKey;
extern NSString* const NSURLUbiquitousItemDownloadingStatusCurrent;
extern NSString* const NSURLUbiquitousItemDownloadingStatusDownloaded;
extern NSString* const NSURLUbiquitousItemDownloadingStatusNotDownloaded;
}

namespace Orv::Utility {

namespace {

/// The application's container, as its entitlements name it.
const QString CONTAINER = QStringLiteral("iCloud.com.orv.backup");

/// Sends a message. The types of result and arguments have to be exactly those of the method: which registers they
/// travel in depends on them. No method that is called here returns a structure or a floating-point number, which
/// x86_64 would want other entry points for. A null object answers with null.
template <typename Result, typename... Arguments> Result send(id object, const char* method, Arguments... arguments)
{
    using Function = Result (*)(id, SEL, Arguments...);
    return reinterpret_cast<Function>(::objc_msgSend)(object, ::sel_registerName(method), arguments...);
}

/// A reference that is given back at the end. Objects that do not come from here belong to the autorelease pool.
class Owned {
public:
    explicit Owned(id object) : m_object(object) { }
    ~Owned() { send<void>(m_object, "release"); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    operator id() const { return m_object; }

private:
    const id m_object;
};

id makeNew(const char* className)
{
    return send<id>(send<id>(reinterpret_cast<id>(::objc_getClass(className)), "alloc"), "init");
}

/// Takes what the calls around it leave behind, so that the calling thread needs no pool. Releasing a pool drains it.
class Pool {
private:
    const Owned m_pool{makeNew("NSAutoreleasePool")};
};

QString descriptionOf(id object)
{
    return QString::fromNSString(send<NSString*>(object, "description"));
}

class CloudItemMac : public CloudItem {
public:
    explicit CloudItemMac(const QString& path) : m_url(urlOf(path)) { }

    QString path() const override
    {
        const Pool pool;
        return QString::fromNSString(send<NSString*>(m_url, "path"));
    }

    CloudSetup setup() const override
    {
        const Pool pool;
        const Owned manager(makeNew("NSFileManager"));
        const id root = send<id>(manager, "URLForUbiquityContainerIdentifier:", CONTAINER.toNSString());
        CloudSetup setup;
        setup.userName = QString::fromNSString(::NSUserName());
        setup.fullUserName = QString::fromNSString(::NSFullUserName());
        setup.homeDirectory = descriptionOf(send<id>(send<id>(manager, "homeDirectoryForCurrentUser"), "path"));
        setup.identityToken = descriptionOf(send<id>(manager, "ubiquityIdentityToken"));
        setup.rootUrl = QString::fromNSString(send<NSString*>(root, "absoluteString"));
        return setup;
    }

    bool isUbiquitous() const override
    {
        const Pool pool;
        const Owned manager(makeNew("NSFileManager"));
        return m_url && send<BOOL>(manager, "isUbiquitousItemAtURL:", id(m_url));
    }

    QString status() const override
    {
        const Pool pool;
        id value = nullptr;
        id* const noError = nullptr;
        const BOOL isRead = send<BOOL>(
            m_url, "getResourceValue:forKey:error:", &value, NSURLUbiquitousItemDownloadingStatusKey, noError);
        return isRead ? QString::fromNSString(static_cast<NSString*>(value)) : QString();
    }

    Statuses statuses() const override
    {
        return {QString::fromNSString(NSURLUbiquitousItemDownloadingStatusCurrent),
            QString::fromNSString(NSURLUbiquitousItemDownloadingStatusDownloaded),
            QString::fromNSString(NSURLUbiquitousItemDownloadingStatusNotDownloaded)};
    }

    bool startDownloading() override
    {
        const Pool pool;
        const Owned manager(makeNew("NSFileManager"));
        id* const noError = nullptr;
        return send<BOOL>(manager, "startDownloadingUbiquitousItemAtURL:error:", id(m_url), noError);
    }

private:
    /// With a reference of its own.
    static id urlOf(const QString& path)
    {
        const Pool pool;
        return send<id>(static_cast<id>(QUrl::fromLocalFile(path).toNSURL()), "retain");
    }

    const Owned m_url;
};

} // namespace

std::unique_ptr<CloudItem> makeCloudItem(const QString& path)
{
    return std::make_unique<CloudItemMac>(path);
}

} // namespace Orv::Utility

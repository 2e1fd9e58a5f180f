#include <Orv/Mac/FileProviderMac.h>

#include "Mac/CloudItem_p.h"

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <QProcess>

namespace Orv::Utility {

namespace {

void logSetup(const CloudItem& item, const CloudSetup& setup, bool isUbiquitous)
{
    const QString ruler = QLatin1Char('\n') + QString(80, QLatin1Char('#'));
    const QString token = setup.identityToken.isNull() ? QStringLiteral("(null)") : setup.identityToken;
    OrvDebug(CORE_MODULE_NAME).debug() << ruler << "\n\turl path:" << item.path()
                                       << "\n\tis ubiquitous:" << (isUbiquitous ? "YES" : "NO")
                                       << "\n\tuser name:" << setup.userName
                                       << "\n\tfull user name:" << setup.fullUserName
                                       << "\n\thome directory for current user:" << setup.homeDirectory
                                       << "\n\tubiquity identity token:" << token << "\n\troot url:" << setup.rootUrl
                                       << ruler;
}

} // namespace

FileProviderMac::FileProviderMac(const QString& path, QObject* parent) : FileProviderMac(makeCloudItem(path), parent)
{
}

FileProviderMac::FileProviderMac(std::unique_ptr<CloudItem> item, QObject* parent)
    : QObject(parent), m_item(std::move(item))
{
}

FileProviderMac::~FileProviderMac() = default;

bool FileProviderMac::isUbiquitous() const
{
    const OrvFullDebug timing(
        CORE_MODULE_NAME, QStringLiteral("bool Orv::Utility::FileProviderMac::isUbiquitous() const"));
    const CloudSetup setup = m_item->setup(); // also gives the process access to the container
    const bool isUbiquitous = m_item->isUbiquitous();
    logSetup(*m_item, setup, isUbiquitous);
    OrvDebug(CORE_MODULE_NAME).debug() << QLatin1Char('(') + QProcess::systemEnvironment().join(QLatin1String(", ")) +
            QLatin1Char(')');
    return isUbiquitous;
}

int FileProviderMac::downloadingStatus() const
{
    if (!isUbiquitous())
        return Unknown;
    const QString status = m_item->status();
    const CloudItem::Statuses statuses = m_item->statuses();
    if (status == statuses.current)
        return Current;
    if (status == statuses.downloaded)
        return Downloaded;
    return status == statuses.notDownloaded ? NotDownloaded : Unknown;
}

void FileProviderMac::startDownloading()
{
    if (downloadingStatus() == NotDownloaded && m_item->startDownloading())
        Q_EMIT downloadingStarted();
}

} // namespace Orv::Utility

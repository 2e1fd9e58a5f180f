#include "Mac/CloudItem_p.h"

namespace Orv::Utility {

namespace {

/// Linux has no cloud drive.
class LocalFile : public CloudItem {
public:
    explicit LocalFile(const QString& path) : m_path(path) { }

    QString path() const override { return m_path; }
    CloudSetup setup() const override { return {}; }
    bool isUbiquitous() const override { return false; }
    QString status() const override { return {}; }
    Statuses statuses() const override { return {}; }
    bool startDownloading() override { return false; }

private:
    const QString m_path;
};

} // namespace

std::unique_ptr<CloudItem> makeCloudItem(const QString& path)
{
    return std::make_unique<LocalFile>(path);
}

} // namespace Orv::Utility

#include <Orv/Utility/TemporaryFile.h>

namespace Orv::Utility {

TemporaryFile::TemporaryFile(const QString& templateName, QObject* parent) : QTemporaryFile(templateName, parent)
{
}

TemporaryFile::~TemporaryFile() = default;

void TemporaryFile::close()
{
    QTemporaryFile::close();
    if (m_removed || !autoRemove())
        return;
    m_removed = true; // before remove(), which calls close() again
    remove();
}

} // namespace Orv::Utility

#pragma once

#include <Orv/Export.h>

#include <QTemporaryFile>

namespace Orv::Utility {

/// A `QTemporaryFile` that removes its file as soon as it is closed, not only when the object goes; unless
/// `autoRemove()` is off. An object serves one file: one that it opens after a `close()` is only closed by the next
/// one, and goes with the object. `rename()` closes too: switch `autoRemove()` off before.
class ORV_EXPORT TemporaryFile : public QTemporaryFile {
    Q_OBJECT

public:
    /// As `QTemporaryFile` has it: the X's at the end of the template become a name that is free.
    TemporaryFile(const QString& templateName, QObject* parent);
    ~TemporaryFile() override;

    /// Closes the file and removes it.
    void close() override;

private:
    bool m_removed = false;
};

} // namespace Orv::Utility

#pragma once

#include <Orv/Export.h>

#include <QTemporaryFile>

namespace Orv::Utility {

/// A `QTemporaryFile` that removes its file on `close()`, not only on destruction, unless `autoRemove()` is off. Use an
/// object for one file: a file opened after a `close()` is removed only on destruction. `rename()` closes the file too:
/// disable `autoRemove()` before.
class ORV_EXPORT TemporaryFile : public QTemporaryFile {
    Q_OBJECT

public:
    /// Like `QTemporaryFile`: the last "XXXXXX" of the template, which is appended if missing, is replaced to form a
    /// unique name.
    TemporaryFile(const QString& templateName, QObject* parent);
    ~TemporaryFile() override;

    /// Closes the file and removes it.
    void close() override;

private:
    bool m_removed = false;
};

} // namespace Orv::Utility

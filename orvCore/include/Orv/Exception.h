#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QString>

#include <exception>

/// What the library and its clients throw when an operation cannot go on.
namespace Orv::Exception {

/// The base of the family, and what the library itself throws.
class ORV_EXPORT Base : public std::exception {
public:
    /// `message` is for people.
    explicit Base(const QString& message);
    ~Base() override;

    /// The message in UTF-8. The pointer is good as long as the exception lives; it is built with the exception, so
    /// that asking for it neither fails nor allocates. A message with an embedded null reads as cut off there.
    const char* what() const noexcept override;

    /// The message as it was given.
    const QString& message() const { return m_message; }

private:
    QString m_message;
    QByteArray m_utf8;
};

/// Input data is malformed or inconsistent.
class ORV_EXPORT InvalidData : public Base {
public:
    /// As for `Base`.
    explicit InvalidData(const QString& message);
    ~InvalidData() override;
};

/// An operation was cancelled.
class ORV_EXPORT Canceled : public Base {
public:
    /// As for `Base`.
    explicit Canceled(const QString& message);
    ~Canceled() override;
};

} // namespace Orv::Exception

#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QString>

#include <exception>

/// The exceptions of the library and its clients.
namespace Orv::Exception {

/// The base class, and the exception that the library itself throws.
class ORV_EXPORT Base : public std::exception {
public:
    /// `message` is a description for the user.
    explicit Base(const QString& message);
    ~Base() override;

    /// The message in UTF-8, valid during the lifetime of the exception. The string is created by the constructor, so
    /// this function neither fails nor allocates. A NUL character in the message ends the C string early.
    const char* what() const noexcept override;

    /// The message as passed to the constructor.
    const QString& message() const { return m_message; }

private:
    QString m_message;
    QByteArray m_utf8;
};

/// Input data is malformed or inconsistent.
class ORV_EXPORT InvalidData : public Base {
public:
    /// See `Base::Base`.
    explicit InvalidData(const QString& message);
    ~InvalidData() override;
};

/// An operation was cancelled.
class ORV_EXPORT Canceled : public Base {
public:
    /// See `Base::Base`.
    explicit Canceled(const QString& message);
    ~Canceled() override;
};

} // namespace Orv::Exception

#include <Orv/Exception.h>

namespace Orv::Exception {

Base::Base(const QString& message) : m_message(message), m_utf8(message.toUtf8())
{
}

Base::~Base() = default;

const char* Base::what() const noexcept
{
    return m_utf8.constData();
}

InvalidData::InvalidData(const QString& message) : Base(message)
{
}

InvalidData::~InvalidData() = default;

Canceled::Canceled(const QString& message) : Base(message)
{
}

Canceled::~Canceled() = default;

} // namespace Orv::Exception

#include <Orv/Utility/DateTimeCompare.h>

namespace Orv::Utility {

QDateTime DateTimeCompare::truncated(const QDateTime& x) const
{
    switch (m_mode) {
    case Seconds:
        return x.addMSecs(-x.time().msec());
    case Minutes:
        return x.addMSecs(-x.time().msec()).addSecs(-x.time().second());
    case Precise:
        break;
    }
    return x;
}

bool DateTimeCompare::equal(const QDateTime& a, const QDateTime& b) const
{
    return truncated(a) == truncated(b);
}

bool DateTimeCompare::notEqual(const QDateTime& a, const QDateTime& b) const
{
    return !equal(a, b);
}

bool DateTimeCompare::less(const QDateTime& a, const QDateTime& b, bool orEqual) const
{
    return orEqual ? truncated(a) <= truncated(b) : truncated(a) < truncated(b);
}

bool DateTimeCompare::greater(const QDateTime& a, const QDateTime& b, bool orEqual) const
{
    return less(b, a, orEqual);
}

} // namespace Orv::Utility

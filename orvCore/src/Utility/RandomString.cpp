#include <Orv/Utility/RandomString.h>

#include <QRandomGenerator>

namespace Orv::Utitlity {

namespace {

constexpr char Letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr int LetterCount = sizeof Letters - 1;

/// A random index into `Letters`.
int randomIndex()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0) // clients that seed qrand() rely on its sequence; Qt 6 does not have it
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    return qrand() % LetterCount;
    QT_WARNING_POP
#else
    return QRandomGenerator::global()->bounded(LetterCount);
#endif
}

} // namespace

QString RandomString::generateSimple(int length)
{
    QString text;
    for (int i = 0; i < length; ++i)
        text += QLatin1Char(Letters[randomIndex()]);
    return text;
}

} // namespace Orv::Utitlity

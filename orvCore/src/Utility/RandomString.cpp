#include <Orv/Utility/RandomString.h>

#include <QRandomGenerator>

namespace Orv::Utitlity {

namespace {
const QString DictionarySimple = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");

/// From 0 to 61.
int randomIndex()
{
    const int count = static_cast<int>(DictionarySimple.size());
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0) // clients that seed qrand() rely on its sequence, and Qt 6 has none
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    return qrand() % count;
    QT_WARNING_POP
#else
    return QRandomGenerator::global()->bounded(count);
#endif
}

} // namespace

QString RandomString::generateSimple(int length)
{
    QString text;
    for (int i = 0; i < length; ++i)
        text += DictionarySimple.at(randomIndex());
    return text;
}

} // namespace Orv::Utitlity

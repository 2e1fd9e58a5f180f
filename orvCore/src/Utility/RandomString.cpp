#include <Orv/Utility/RandomString.h>

namespace Orv::Utitlity {

namespace {
const QString DictionarySimple = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");
}

QString RandomString::generateSimple(int length)
{
    QString text;
    for (int i = 0; i < length; ++i) {
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED // clients that seed qrand() rely on its sequence
            text += DictionarySimple.at(qrand() % DictionarySimple.size());
        QT_WARNING_POP
    }
    return text;
}

} // namespace Orv::Utitlity

#include <qlyappkit/platform/services/Localization.h>

#include <QCoreApplication>

namespace qly {

QString localized(const char* english) { return QCoreApplication::translate("QlyAppKit", english); }

QString localized(const QString& english)
{
    const QByteArray utf8 = english.toUtf8();
    return QCoreApplication::translate("QlyAppKit", utf8.constData());
}

} // namespace qly

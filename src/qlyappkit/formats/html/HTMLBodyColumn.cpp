#include <qlyappkit/formats/html/HTMLBodyColumn.h>

#include <QString>
#include <QStringDecoder>

namespace qly {

namespace {

const QString BodyStart = QStringLiteral("<body");
const QString BodyEnd = QStringLiteral("</body>");
const QString ColumnStartFormat = QStringLiteral("\n<div style=\"width: %1px; margin: 0 auto\">\n");
const QString ColumnEnd = QStringLiteral("</div>\n");

} // namespace

QByteArray HTMLDataWithBodyTableOfWidth(int width, const QByteArray& data)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString html = decoder.decode(data);
    if (decoder.hasError())
        return data;
    const qsizetype body = html.indexOf(BodyStart, 0, Qt::CaseInsensitive);
    if (body < 0)
        return data;
    const qsizetype bodyTagEnd = html.indexOf(QLatin1Char('>'), body + BodyStart.size());
    if (bodyTagEnd < 0)
        return data;
    const qsizetype end = html.indexOf(BodyEnd, bodyTagEnd + 1, Qt::CaseInsensitive);
    if (end < 0)
        return data;
    html.insert(end, ColumnEnd);
    html.insert(bodyTagEnd + 1, ColumnStartFormat.arg(width));
    return html.toUtf8();
}

} // namespace qly

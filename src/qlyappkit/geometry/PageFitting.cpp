#include <qlyappkit/geometry/PageFitting.h>

#include <QAbstractTextDocumentLayout>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

bool fitsOnOnePageWithPageSize(const AttributedString& text, QSizeF pageSize, double leftMargin, double rightMargin,
                               double topMargin, double bottomMargin)
{
    const double width = pageSize.width() - leftMargin - rightMargin;
    const double height = pageSize.height() - topMargin - bottomMargin;
    if (width <= 0 || height <= 0)
        return false;
    QTextDocument document;
    document.setDocumentMargin(0);
    document.setTextWidth(width);
    QTextCursor cursor(&document);
    text.enumerateAttributes(Range{0, text.length()}, [&](const Attributes& attributes, Range range) {
        QTextCharFormat format;
        const QVariant font = attributes.value(FontAttributeName);
        format.setFont(font.metaType() == QMetaType::fromType<Font>() ? font.value<Font>().toQFont()
                                                                      : Font::userFont().toQFont());
        QString piece = text.substring(range);
        piece.replace(QLatin1Char('\n'), QChar::ParagraphSeparator);
        cursor.insertText(piece, format);
        return true;
    });
    return document.documentLayout()->documentSize().height() <= height;
}

} // namespace qly

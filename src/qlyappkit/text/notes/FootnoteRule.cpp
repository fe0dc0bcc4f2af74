#include <qlyappkit/text/notes/FootnoteRule.h>

#include <QImage>
#include <QPainter>
#include <algorithm>

namespace qly {

namespace {
const QString RuleFileName = QStringLiteral("footnote-rule.png");
}

TextAttachment footnoteSeparatorRuleAttachment(double height)
{
    const int width = int(XQFootnoteRuleWidth);
    const int pixelHeight = std::max(1, qRound(height));
    QImage image(width, pixelHeight, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        const int y = std::min(qRound(pixelHeight / 2.0), pixelHeight - 1);
        painter.fillRect(QRect(0, y, width, 1), Qt::black);
    }
    TextAttachment attachment = TextAttachment::fromImage(image, RuleFileName);
    attachment.setBounds(QSizeF(XQFootnoteRuleWidth, pixelHeight));
    return attachment;
}

} // namespace qly

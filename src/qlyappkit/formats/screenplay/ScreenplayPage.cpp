#include <qlyappkit/formats/screenplay/ScreenplayPage.h>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

#include <QSizeF>

namespace qly {

namespace {

constexpr double LetterWidth = 612, LetterHeight = 792, PageMargin = 72;

} // namespace

QVariantMap screenplayDocumentAttributes()
{
    return {
        {PaperSizeDocumentAttribute, QSizeF(LetterWidth, LetterHeight)},
        {LeftMarginDocumentAttribute, PageMargin},
        {RightMarginDocumentAttribute, PageMargin},
        {TopMarginDocumentAttribute, PageMargin},
        {BottomMarginDocumentAttribute, PageMargin},
    };
}

double screenplayTextWidth() { return LetterWidth - 2 * PageMargin; }

AttributedString attributedStringWithTailIndentsFromTrailingEdge(const AttributedString& text, double textWidth)
{
    AttributedString result = text;
    text.enumerateAttribute(ParagraphStyleAttributeName, Range{0, text.length()},
                            [&](const QVariant& value, Range range) {
                                if (value.metaType() != QMetaType::fromType<ParagraphStyle>())
                                    return true;
                                ParagraphStyle style = value.value<ParagraphStyle>();
                                if (style.tailIndent() > 0) {
                                    style.setTailIndent(std::min(0.0, style.tailIndent() - textWidth));
                                    result.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(style), range);
                                }
                                return true;
                            });
    return result;
}

} // namespace qly

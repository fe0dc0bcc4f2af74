#include <qlyappkit/interchange/rtf/RTFAttributeEnclosing.h>

#include <vector>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly {

namespace {

bool isWhite(QChar c) { return c.isSpace() || c == QChar(0x2028) || c == QChar(0x2029) || c == QChar(0x85); }

bool isParagraphStart(const AttributedString& text, qsizetype index)
{
    if (index == 0)
        return true;
    const QChar c = text.characterAt(index - 1);
    return c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QChar(0x2029);
}

Attributes tagAttributes(const AttributedString& text, qsizetype index, const QString& attributeName)
{
    if (text.isEmpty())
        return {};
    const qsizetype at = std::min(index, text.length() - 1);
    Attributes attributes = text.attributes(at);
    attributes.remove(attributeName);
    attributes.remove(XQFootnoteAttributeName);
    attributes.remove(XQAnnotationAttributeName);
    attributes.remove(AttachmentAttributeName);
    if (!isParagraphStart(text, index))
        attributes.remove(ParagraphStyleAttributeName);
    return attributes;
}

} // namespace

QString formatPlaceholderStringForAttributesAtIndex(const AttributedString& text, qsizetype index)
{
    if (index < 0 || index >= text.length())
        return QStringLiteral("\\b0 \\i0 \\ul0 ");
    const Attributes attributes = text.attributes(index);
    const QVariant fontValue = attributes.value(FontAttributeName);
    const Font font = fontValue.metaType() == QMetaType::fromType<Font>() ? fontValue.value<Font>() : Font();
    const bool underline = attributes.value(UnderlineStyleAttributeName).toInt() != 0;
    QString s = font.isBold() ? QStringLiteral("\\b1") : QStringLiteral("\\b0");
    s.append(font.isItalic() ? QLatin1String("\\i1") : QLatin1String("\\i0"));
    s.append(underline ? QLatin1String("\\ul") : QLatin1String("\\ul0"));
    return s;
}

bool encloseAttribute(AttributedString& text, const QString& attributeName, const QString& startTagName,
                      const QString& endTagName, bool trimWhitespace, bool formatTagsWithAttributeValue)
{
    struct Run {
        Range range;
        QString value;
    };
    std::vector<Run> runs;
    text.enumerateAttribute(attributeName, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid())
            runs.push_back({range, value.toString()});
        return true;
    });
    if (runs.empty())
        return false;
    // From the last run backwards, so that earlier positions stay valid.
    for (auto it = runs.rbegin(); it != runs.rend(); ++it) {
        qsizetype start = it->range.location, end = it->range.end();
        if (trimWhitespace) {
            while (start < end && isWhite(text.characterAt(start)))
                ++start;
            while (end > start && isWhite(text.characterAt(end - 1)))
                --end;
            if (start == end)
                continue;
        }
        QString startName = startTagName, endName = endTagName;
        if (formatTagsWithAttributeValue) {
            startName.replace(QLatin1String("%@"), it->value);
            endName.replace(QLatin1String("%@"), it->value);
        }
        const QString startTag = QStringLiteral("<<**%1(").arg(startName)
            + formatPlaceholderStringForAttributesAtIndex(text, start) + QStringLiteral(")**>>");
        const QString endTag = QStringLiteral("<<**%1(").arg(endName)
            + formatPlaceholderStringForAttributesAtIndex(text, end) + QStringLiteral(")**>>");
        const Attributes endAttributes = tagAttributes(text, end - 1, attributeName);
        const Attributes startAttributes = tagAttributes(text, start, attributeName);
        text.insert(AttributedString(endTag, endAttributes), end);
        text.insert(AttributedString(startTag, startAttributes), start);
    }
    return true;
}

} // namespace qly

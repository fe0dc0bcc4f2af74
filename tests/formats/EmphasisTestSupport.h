#pragma once
// Emphasis written out as tags, so that a test can state a whole formatted text as one string:
// "<b>bold</b> <i>italic</i> <bi>both</bi> <u9>double underline</u9>".
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly::emphasistest {

inline QString emphasisTag(const Attributes& attributes)
{
    QString tag;
    const QVariant font = attributes.value(FontAttributeName);
    if (font.metaType() == QMetaType::fromType<Font>()) {
        if (font.value<Font>().isBold())
            tag += u'b';
        if (font.value<Font>().isItalic())
            tag += u'i';
    }
    const int underline = attributes.value(UnderlineStyleAttributeName).toInt();
    if (underline != 0)
        tag += QStringLiteral("u%1").arg(underline);
    return tag;
}

/// The text with each stretch of one emphasis between tags; plain text stays as it is.
inline QString taggedEmphasis(const AttributedString& text)
{
    QString out, open;
    for (qsizetype i = 0; i < text.length(); ++i) {
        const QString tag = emphasisTag(text.attributes(i));
        if (tag != open) {
            if (!open.isEmpty())
                out += QStringLiteral("</%1>").arg(open);
            if (!tag.isEmpty())
                out += QStringLiteral("<%1>").arg(tag);
            open = tag;
        }
        out += text.characterAt(i);
    }
    if (!open.isEmpty())
        out += QStringLiteral("</%1>").arg(open);
    return out;
}

/// The reverse, for building inputs: a tagged string as rich text in base (whose traits the tags add to).
inline AttributedString fromTaggedEmphasis(const QString& tagged, const Font& base = Font::userFont())
{
    AttributedString text;
    QString tag;
    qsizetype i = 0;
    while (i < tagged.size()) {
        if (tagged.at(i) == u'<') {
            const qsizetype close = tagged.indexOf(u'>', i);
            const QString inside = tagged.mid(i + 1, close - i - 1);
            tag = inside.startsWith(u'/') ? QString() : inside;
            i = close + 1;
            continue;
        }
        unsigned traits = base.traits();
        if (tag.contains(u'b'))
            traits |= BoldFontMask;
        if (tag.contains(u'i'))
            traits |= ItalicFontMask;
        Attributes attributes{
            {FontAttributeName, QVariant::fromValue(Font::fromFamily(base.familyName(), base.pointSize(), traits))}};
        const qsizetype u = tag.indexOf(u'u');
        if (u >= 0)
            attributes.insert(UnderlineStyleAttributeName, tag.mid(u + 1).toInt());
        text.append(QString(tagged.at(i)), attributes);
        ++i;
    }
    return text;
}

} // namespace qly::emphasistest

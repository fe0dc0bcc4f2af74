#pragma once
// Small builders and readers shared by the note conversion tests.
#include <QString>
#include <initializer_list>
#include <utility>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

namespace notetest {

using qly::AttributedString;
using qly::Attributes;

inline AttributedString build(std::initializer_list<std::pair<QString, Attributes>> runs)
{
    AttributedString out;
    for (const auto& [text, attributes] : runs)
        out.append(text, attributes);
    return out;
}

inline QVariant colourValue(double r, double g, double b) { return QVariant::fromValue(qly::Color(r, g, b)); }

inline Attributes annotation(double r, double g, double b, Attributes more = {})
{
    more.insert(qly::XQAnnotationAttributeName, colourValue(r, g, b));
    return more;
}

inline Attributes footnote(Attributes more = {})
{
    more.insert(qly::XQFootnoteAttributeName, 1);
    return more;
}

inline Attributes withFont(const QString& family, double size, unsigned traits = 0, Attributes more = {})
{
    more.insert(qly::FontAttributeName, QVariant::fromValue(qly::Font::fromFamily(family, size, traits)));
    return more;
}

inline Attributes withComment(const qly::XQCommentPtr& comment, Attributes more = {})
{
    more.insert(qly::XQCommentAttributeName, qly::variantFromComment(comment));
    return more;
}

inline qly::XQCommentPtr comment(const QString& text, bool isFootnote = false,
                                 std::optional<qly::Color> colour = qly::Color(1.0, 1.0, 0.0))
{
    qly::XQCommentPtr c = qly::XQComment::create(AttributedString(text), isFootnote);
    c->setColor(colour);
    return c;
}

/// One character per unit: `mark` where the attribute has a value, '-' elsewhere.
inline QString coverage(const AttributedString& text, const QString& name, QChar mark = u'#')
{
    QString out;
    for (qsizetype i = 0; i < text.length(); ++i)
        out += text.attribute(name, i).isValid() ? mark : QChar(u'-');
    return out;
}

inline std::optional<qly::Color> colourAt(const AttributedString& text, const QString& name, qsizetype i)
{
    const QVariant v = text.attribute(name, i);
    if (v.metaType() != QMetaType::fromType<qly::Color>())
        return std::nullopt;
    return v.value<qly::Color>();
}

inline std::optional<qly::Font> fontAt(const AttributedString& text, qsizetype i)
{
    const QVariant v = text.attribute(qly::FontAttributeName, i);
    if (v.metaType() != QMetaType::fromType<qly::Font>())
        return std::nullopt;
    return v.value<qly::Font>();
}

} // namespace notetest

#pragma once
// Texts the export tests write: a short manuscript with every kind of note.
#include <QString>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/notes/NoteConversions.h>

namespace exporttest {

inline qly::Attributes plain()
{
    return {{qly::FontAttributeName, QVariant::fromValue(qly::Font(QStringLiteral("Times"), 12))}};
}

inline qly::Attributes with(const QString& name, const QVariant& value, qly::Attributes base = plain())
{
    base.insert(name, value);
    return base;
}

/// Body text with two inline footnotes, one linked footnote, two linked comments (written inline
/// after their anchors) and one inline annotation.
inline qly::AttributedString notesManuscript()
{
    using namespace qly;
    AttributedString text;
    text.append(QStringLiteral("The body begins here."), plain());
    text.append(QStringLiteral(" First footnote text."), with(XQFootnoteAttributeName, 1));
    text.append(QStringLiteral(" Then the "), plain());
    auto comment1 = XQComment::create(AttributedString(QStringLiteral("Comment one text"), plain()));
    text.append(QStringLiteral("first anchor"), with(XQCommentAttributeName, variantFromComment(comment1)));
    text.append(QStringLiteral(" and a "), plain());
    auto comment2 = XQComment::create(AttributedString(QStringLiteral("Comment two text"), plain()));
    text.append(QStringLiteral("second anchor"), with(XQCommentAttributeName, variantFromComment(comment2)));
    text.append(QStringLiteral(".\nA second paragraph"), plain());
    text.append(QStringLiteral("Second footnote text."), with(XQFootnoteAttributeName, 1));
    auto linked = XQComment::create(AttributedString(QStringLiteral("Linked footnote text"), plain()), true);
    text.append(QStringLiteral(" with a linked note"), with(XQCommentAttributeName, variantFromComment(linked)));
    text.append(QStringLiteral(" and "), plain());
    text.append(QStringLiteral("an inline annotation"),
                with(XQAnnotationAttributeName, QVariant::fromValue(Color(1, 0, 0))));
    text.append(QStringLiteral(".\n"), plain());
    return attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, InlineLinkedComments);
}

} // namespace exporttest

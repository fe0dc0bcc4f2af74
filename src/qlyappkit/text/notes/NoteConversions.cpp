#include <qlyappkit/text/notes/NoteConversions.h>

#include <vector>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

#include "NoteEdits_p.h"

namespace qly {

using notes::TextEdit;

namespace {

constexpr double InlineCommentToAnnotationDarkening = 0.7;

// The note as it goes into the text: a space carrying the attributes of the text's first character,
// then the text.
AttributedString preparedNoteText(const AttributedString& noteText)
{
    AttributedString prepared(QStringLiteral(" "), noteText.attributes(0));
    prepared.append(noteText);
    return prepared;
}

std::vector<std::pair<Range, QVariant>> runsOf(const AttributedString& text, const QString& name)
{
    std::vector<std::pair<Range, QVariant>> runs;
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid())
            runs.emplace_back(range, value);
        return true;
    });
    return runs;
}

// Only attributes change, so the runs read before the first change stay valid.
void removeTextBlocks(AttributedString& text, Range range)
{
    std::vector<std::pair<Range, ParagraphStyle>> changes;
    text.enumerateAttribute(ParagraphStyleAttributeName, range, [&](const QVariant& value, Range run) {
        if (value.metaType() == QMetaType::fromType<ParagraphStyle>()) {
            ParagraphStyle style = value.value<ParagraphStyle>();
            if (!style.textBlocks().isEmpty()) {
                style.setTextBlocks({});
                changes.emplace_back(run, style);
            }
        }
        return true;
    });
    for (const auto& [run, style] : changes)
        text.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(style), run);
}

} // namespace

AttributedString attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(
    const AttributedString& text, int commentOption, const QString& footnoteMarker)
{
    std::vector<TextEdit> edits;
    for (const auto& [range, value] : runsOf(text, XQCommentAttributeName)) {
        const XQCommentPtr comment = commentFromVariant(value);
        if (!comment || comment->text().isEmpty())
            continue;
        AttributedString anchor = text.attributedSubstring(range);
        anchor.removeAttribute(LinkAttributeName, Range{0, anchor.length()});
        AttributedString note = preparedNoteText(comment->text());
        const Range noteRange{0, note.length()};
        AttributedString replacement;
        if (comment->isFootnote() || commentOption == LinkedCommentsAsFootnotes) {
            anchor.removeAttribute(XQCommentAttributeName, Range{0, anchor.length()});
            note.addAttribute(XQFootnoteAttributeName,
                              comment->isFootnote() ? XQLinkedFootnoteMadeInlineKind : XQLinkedCommentAsFootnoteKind,
                              noteRange);
            const bool anchorIsMarker =
                comment->isFootnote() && !footnoteMarker.isEmpty() && anchor.string() == footnoteMarker;
            if (!anchorIsMarker)
                replacement = anchor;
            replacement.append(note);
        } else if (commentOption == InlineLinkedComments) {
            note.addAttribute(XQLinkedCommentAttributeName,
                              QVariant::fromValue(comment->color().value_or(XQComment::defaultCommentColor())),
                              noteRange);
            replacement = anchor;
            replacement.append(note);
        } else {
            anchor.removeAttribute(XQCommentAttributeName, Range{0, anchor.length()});
            replacement = anchor;
        }
        edits.push_back(TextEdit::attributed(range, replacement));
    }
    return notes::applyingEdits(text, std::move(edits));
}

AttributedString attributedStringByConvertingLinkedCommentsToAnnotations(const AttributedString& text)
{
    AttributedString out = text;
    for (const auto& [range, value] : runsOf(text, XQLinkedCommentAttributeName)) {
        const Color colour =
            value.metaType() == QMetaType::fromType<Color>() ? value.value<Color>() : Color::standardAnnotationColor();
        out.removeAttribute(XQLinkedCommentAttributeName, range);
        out.addAttribute(XQAnnotationAttributeName,
                         QVariant::fromValue(
                             colour.blendedColorWithFraction(InlineCommentToAnnotationDarkening, Color::blackColor())),
                         range);
    }
    return out;
}

AttributedString attributedStringByConvertingInlineAnnotationsToFootnotes(const AttributedString& text)
{
    AttributedString out = text;
    for (const auto& [range, value] : runsOf(text, XQAnnotationAttributeName)) {
        out.removeAttribute(XQAnnotationAttributeName, range);
        out.addAttribute(XQFootnoteAttributeName, XQLinkedCommentAsFootnoteKind, range);
    }
    return out;
}

AttributedString attributedStringByRemovingTextBlocks(const AttributedString& text, Range range)
{
    AttributedString out = text;
    removeTextBlocks(out, range);
    return out;
}

AttributedString attributedStringByRemovingTextBlocksFromNotes(const AttributedString& text)
{
    AttributedString out = text;
    for (const QString& name : {XQFootnoteAttributeName, XQAnnotationAttributeName}) {
        for (const auto& [range, value] : runsOf(text, name))
            removeTextBlocks(out, range);
    }
    return out;
}

} // namespace qly

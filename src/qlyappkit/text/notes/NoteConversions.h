#pragma once
// Conversions between the kinds of notes on copies of a text: linked comments and footnotes written
// inline, inline comments turned into annotations, annotations into footnotes, and tables taken out of
// notes.
#include <QString>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// What becomes of linked comments (not footnotes) when linked notes are written inline.
enum LinkedCommentOption : int {
    DropLinkedComments = 0, ///< the anchor loses its comment; the comment's text is dropped
    InlineLinkedComments = 1, ///< the text follows the anchor, marked XQLinkedCommentAttributeName
    LinkedCommentsAsFootnotes = 2, ///< the text follows the anchor as an inline footnote of kind 3
};

/// A copy in which every linked comment or footnote with text has its text written inline: a space,
/// then the comment's text. Anchors lose their link. Footnotes (and comments with option 2) become
/// inline footnotes of kind 2 (3 for comments) right after the anchor, which loses its comment; a
/// footnote whose anchor is exactly footnoteMarker replaces the anchor. With option 1 a comment's
/// text follows its anchor, which keeps the comment; with option 0 (or any other value) only the
/// comment attribute goes. Comments with empty text are left alone.
AttributedString attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(
    const AttributedString& text, int commentOption, const QString& footnoteMarker = QString());

/// A copy in which each inline comment run becomes an annotation in its colour blended 70% toward black.
AttributedString attributedStringByConvertingLinkedCommentsToAnnotations(const AttributedString& text);

/// A copy in which each annotation becomes an inline footnote of kind 3.
AttributedString attributedStringByConvertingInlineAnnotationsToFootnotes(const AttributedString& text);

/// A copy in which the paragraph styles inside annotations and inline footnotes lose their text blocks
/// (table cells), so that a table in a note reads as plain paragraphs.
AttributedString attributedStringByRemovingTextBlocksFromNotes(const AttributedString& text);
/// A copy in which every paragraph style in range loses its text blocks.
AttributedString attributedStringByRemovingTextBlocks(const AttributedString& text, Range range);

} // namespace qly

#pragma once
// The platform HTML writer: a range of attributed text as a complete UTF-8 page — doctype, a head with
// the character set, the title and a style sheet, and a body with one element per paragraph.
//
// Paragraph styles (alignment, indents, spacing, line heights, header levels) become paragraph
// classes, character attributes (font, size, traits, underline, strikethrough, colours, background,
// superscript, baseline offset, kerning) span classes, links "a" elements. Text lists become "ul"/"ol"
// with one "li" per paragraph, written as the platform writes them: each item is closed before a
// list nested in it, which fixUpNestedHTMLLists (formats/html) then moves inside the item. Text blocks
// of tables become "table" elements. Attachments are not written.
//
// Ordinary text passes through unchanged except "&", "<" and ">", so that markers a caller puts in
// the text survive the conversion. Control characters HTML forbids, the attachment character and page
// breaks are left out (a page break starts the next paragraph on a new printed page); U+2028 is a line
// break. Links to scripts ("javascript:", "vbscript:", "data:") are not written; their text is.
#include <QByteArray>
#include <QVariantMap>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The page of the characters of range (clipped to the text). Document attributes read:
/// TitleDocumentAttribute (the title; "Untitled" when absent), AuthorDocumentAttribute (an author
/// meta element) and ExcludedElementsDocumentAttribute (a list of element names, any case): given
/// and without "XML", void elements are written "<br />"; otherwise "<br>". "DOCTYPE" leaves out the
/// doctype, "STYLE" writes each element's style in a style attribute instead of a style sheet, "SPAN"
/// writes runs without spans (and so without character styles), "A" writes links as plain text.
QByteArray HTMLFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes = {});

} // namespace qly

#pragma once
// The platform RTF writer: a range of attributed text as 7-bit ASCII RTF. Fonts, colours, paragraph
// styles (alignment, indents, tabs, spacing, line heights, lists, table cells), character formatting
// and links are written; attachments are not. Paragraph breaks come out as a backslash and a line
// feed, every character outside printable ASCII as "\uc0\uN " (N the UTF-16 unit), the header as
// "{\rtf1\ansi\ansicpg1252\cocoartf…\deff0", then the font table (families with their family
// class; bold and italic as \b and \i), the colour table (white first), the
// page controls from the document attributes and "\viewkind0". Line heights that the standard
// "\sl" forms cannot carry (leading, a maximum beside a minimum or a multiple) go in this code's own
// words "\qlylinespacing", "\qlyminlineheight" and "\qlymaxlineheight", which other readers ignore.
#include <QByteArray>
#include <QVariantMap>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// RTF for the characters of range (clipped to the text). documentAttributes may hold the paper
/// size, the four margins, the author and the view mode (keys from PlatformAttributes.h); only the
/// page controls given are written.
QByteArray RTFFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes = {});

} // namespace qly

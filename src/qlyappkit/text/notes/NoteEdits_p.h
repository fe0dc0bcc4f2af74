#pragma once
// Internal helpers of the note conversions: edits collected in one walk over a text and applied from
// the end, so that a conversion costs one pass however many notes the text holds.
#include <optional>
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly::notes {

/// Replace `range` (of the text the edits were collected on) by a text with one set of attributes,
/// by an attributed text, or by nothing. The plain form allocates no attributed string: tags and marks
/// are many and short.
struct TextEdit {
    Range range;
    QString text;
    Attributes attributes;
    std::optional<AttributedString> rich;

    static TextEdit deletion(Range range) { return TextEdit{range, {}, {}, std::nullopt}; }
    static TextEdit plain(Range range, const QString& text, const Attributes& attributes)
    {
        return TextEdit{range, text, attributes, std::nullopt};
    }
    static TextEdit attributed(Range range, const AttributedString& text) { return TextEdit{range, {}, {}, text}; }
    /// The replacement as an attributed string.
    AttributedString replacement() const { return rich ? *rich : AttributedString(text, attributes); }
};

/// The text with the edits made. Edits are sorted by location; edits whose ranges overlap are merged
/// (their replacements joined in order), so collecting them never needs to look back.
/// When made is given, it receives the replacements as they were made (for ReplacedPositions). A text
/// moved in that shares nothing is edited where it lies.
AttributedString applyingEdits(AttributedString text, std::vector<TextEdit> edits,
                               std::vector<AttributedString::Replacement>* made = nullptr);

/// The attributes less the named ones.
Attributes withoutAttributes(Attributes attributes, std::initializer_list<QString> names);

/// Attributes for text added after `text`: those of its last character without attachment, link,
/// superscript and note attributes (so that the added text is not taken for part of a note or a mark).
Attributes plainAttributesAtEnd(const AttributedString& text);

/// The part of range left once whitespace and line breaks are cut from both ends (empty, at the
/// range's end, when nothing is left).
Range trimmedRange(const AttributedString& text, Range range);

/// True for the characters that end a paragraph (LF, CR, U+2029).
inline bool isParagraphTerminator(QChar c) { return c == u'\n' || c == u'\r' || c == QChar(0x2029); }

} // namespace qly::notes

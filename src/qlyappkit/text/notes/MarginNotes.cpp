#include <qlyappkit/text/notes/MarginNotes.h>

#include <vector>

#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

#include "NoteEdits_p.h"

namespace qly {

namespace {

constexpr double MarginToInlineDarkening = 0.5;
constexpr double InlineToMarginLightening = 0.5;
const char* const FallbackAnchorText = "(Linked Comment)";

Range clipped(Range range, qsizetype length)
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length);
    return Range::fromBounds(start, std::clamp<qsizetype>(range.end(), start, length));
}

void removeLinkedNoteAttributes(AttributedString& text, Range range)
{
    for (const QString& name : {XQCommentAttributeName, LinkAttributeName, ToolTipAttributeName})
        text.removeAttribute(name, range);
}

void removeLinkedNoteAttributes(MutableAttributedString& text, Range range)
{
    for (const QString& name : {XQCommentAttributeName, LinkAttributeName, ToolTipAttributeName})
        text.removeAttribute(name, range);
}

// The text being converted and a value copy of it for the many reads between edits (reading a text
// storage through its primitives would assemble a snapshot each time). A plain text needs no copy: its
// backing string is one, and its edits go straight to it.
class MirroredText {
public:
    explicit MirroredText(MutableAttributedString& text) : m_text(text), m_plain(text.plainBacking())
    {
        if (!m_plain)
            m_copy = text.attributedString();
    }

    const AttributedString& copy() const { return m_plain ? *m_plain : m_copy; }
    void replace(Range range, const AttributedString& replacement)
    {
        m_text.replaceCharacters(range, replacement);
        if (!m_plain)
            m_copy.replaceCharacters(range, replacement);
    }
    void remove(Range range) { replace(range, AttributedString()); }
    void addAttribute(const QString& name, const QVariant& value, Range range)
    {
        m_text.addAttribute(name, value, range);
        if (!m_plain)
            m_copy.addAttribute(name, value, range);
    }
    void removeLinkedNote(Range range)
    {
        removeLinkedNoteAttributes(m_text, range);
        if (!m_plain)
            removeLinkedNoteAttributes(m_copy, range);
    }

private:
    MutableAttributedString& m_text;
    const AttributedString* const m_plain;
    AttributedString m_copy;
};

struct Anchor {
    Range range;
    XQCommentPtr comment;
};

std::vector<Anchor> anchorsIn(const AttributedString& text, Range range, bool footnotes)
{
    std::vector<Anchor> anchors;
    text.enumerateAttribute(XQCommentAttributeName, range, [&](const QVariant& value, Range run) {
        XQCommentPtr comment = commentFromVariant(value);
        if (comment && comment->isFootnote() == footnotes && !comment->text().isEmpty())
            anchors.push_back(Anchor{run, comment});
        return true;
    });
    return anchors;
}

// Linked notes to inline ones, from the last anchor backwards so that earlier anchors keep their place.
void linkedToInline(MutableAttributedString& text, Range range, bool footnotes, const QString& marker)
{
    EditingBatch batch(text);
    MirroredText mirror(text);
    const std::vector<Anchor> anchors = anchorsIn(mirror.copy(), clipped(range, mirror.copy().length()), footnotes);
    for (auto it = anchors.rbegin(); it != anchors.rend(); ++it) {
        const Range anchor = it->range;
        // A space after the anchor (with its attributes, as typed there), then the note's own text.
        AttributedString note(QStringLiteral(" "), mirror.copy().attributes(anchor.end() - 1));
        note.append(it->comment->text());
        const Range all{0, note.length()};
        removeLinkedNoteAttributes(note, all);
        if (footnotes) {
            note.addAttribute(XQFootnoteAttributeName, XQInlineFootnoteKind, all);
        } else {
            const Color colour = it->comment->color()
                ? it->comment->color()->blendedColorWithFraction(MarginToInlineDarkening, Color::blackColor())
                : Color::standardAnnotationColor();
            note.addAttribute(XQAnnotationAttributeName, QVariant::fromValue(colour), all);
        }
        const bool anchorIsMarker = footnotes && !marker.isEmpty() && mirror.copy().substring(anchor) == marker;
        if (anchorIsMarker) {
            mirror.replace(anchor, note);
        } else {
            mirror.replace(Range{anchor.end(), 0}, note);
            mirror.removeLinkedNote(anchor);
        }
    }
}

// Inline notes to linked ones, front to back: each note's characters go, and its comment is anchored
// where it stood. `shift` carries the change in length so far into the positions read beforehand.
bool carriesNote(const AttributedString& text, Range range);

// The word a note mark right after it refers to: the word ending at index, across the punctuation
// between them ("water.¹"), when it holds no note. Not found otherwise.
Range wordBeforeIndex(const AttributedString& text, qsizetype index)
{
    constexpr int LongestPunctuationRun = 3;
    qsizetype i = index - 1;
    for (int skipped = 0; i >= 0 && skipped < LongestPunctuationRun; --i, ++skipped) {
        const QChar c = text.characterAt(i);
        if (c.isLetterOrNumber() || c.isSpace())
            break;
    }
    if (i < 0 || !text.characterAt(i).isLetterOrNumber())
        return Range::notFound();
    const Range word = notes::trimmedRange(text, text.doubleClickAtIndex(i));
    if (word.isEmpty() || !containsAlphanumeric(text.substring(word)) || carriesNote(text, word))
        return Range::notFound();
    return word;
}

void inlineToLinked(MutableAttributedString& text, Range range, bool footnotes, const QString& marker,
                    InlineNoteAnchor anchorRule = InlineNoteAnchor::FollowingWord)
{
    EditingBatch batch(text);
    MirroredText mirror(text);
    const QString& name = footnotes ? XQFootnoteAttributeName : XQAnnotationAttributeName;
    std::vector<std::pair<Range, QVariant>> runs;
    mirror.copy().enumerateAttribute(name, clipped(range, mirror.copy().length()),
                                     [&](const QVariant& value, Range run) {
                                         if (value.isValid())
                                             runs.emplace_back(run, value);
                                         return true;
                                     });
    qsizetype shift = 0;
    for (const auto& [run, value] : runs) {
        const Range current{run.location + shift, run.length};
        AttributedString noteText = mirror.copy().attributedSubstring(notes::trimmedRange(mirror.copy(), current));
        const Range all{0, noteText.length()};
        noteText.removeAttribute(name, all);
        noteText.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(ParagraphStyle::defaultParagraphStyle()),
                              all);
        XQCommentPtr comment = XQComment::create(noteText, footnotes);
        if (!footnotes) {
            const Color colour = value.metaType() == QMetaType::fromType<Color>() ? value.value<Color>()
                                                                                  : Color::standardAnnotationColor();
            comment->setColor(colour.blendedColorWithFraction(InlineToMarginLightening, Color::whiteColor()));
        }
        mirror.remove(current);
        shift -= current.length;

        Range anchor = Range::notFound();
        if (!(footnotes && !marker.isEmpty())) {
            if (anchorRule == InlineNoteAnchor::PrecedingWord)
                anchor = wordBeforeIndex(mirror.copy(), current.location);
            if (anchor.isNotFound())
                anchor = attributeRangeForCommentToBePlacedAtIndex(mirror.copy(), current.location);
        }
        if (anchor.isNotFound()) {
            // The anchor text is inserted: the marker for a footnote, else the fallback words.
            const QString anchorText = footnotes && !marker.isEmpty() ? marker : localized(FallbackAnchorText);
            const Attributes attributes = current.location > 0
                ? mirror.copy().attributes(current.location - 1)
                : (mirror.copy().isEmpty() ? Attributes() : mirror.copy().attributes(0));
            mirror.replace(Range{current.location, 0},
                           AttributedString(anchorText,
                                            notes::withoutAttributes(attributes,
                                                                     {XQAnnotationAttributeName,
                                                                      XQFootnoteAttributeName, XQCommentAttributeName,
                                                                      XQLinkedCommentAttributeName, LinkAttributeName,
                                                                      ToolTipAttributeName, AttachmentAttributeName})));
            anchor = Range{current.location, anchorText.size()};
            shift += anchorText.size();
        }
        mirror.addAttribute(XQCommentAttributeName, variantFromComment(comment), anchor);
    }
}

bool carriesNote(const AttributedString& text, Range range)
{
    for (const QString& name : {XQCommentAttributeName, XQAnnotationAttributeName, XQFootnoteAttributeName}) {
        if (attributeExistsInRange(text, name, range))
            return true;
    }
    return false;
}

} // namespace

Range attributeRangeForCommentToBePlacedAtIndex(const AttributedString& text, qsizetype index)
{
    const qsizetype length = text.length();
    for (qsizetype i = std::max<qsizetype>(index, 0); i < length;) {
        const Range segment = text.doubleClickAtIndex(i);
        const Range word = notes::trimmedRange(text, segment);
        if (!word.isEmpty() && containsAlphanumeric(text.substring(word)) && !carriesNote(text, word))
            return word;
        i = std::max(segment.end(), i + 1);
    }
    return Range::notFound();
}

Range attributeRangeForCommentToBePlacedAtIndex(const MutableAttributedString& text, qsizetype index)
{
    return attributeRangeForCommentToBePlacedAtIndex(text.attributedString(), index);
}

void convertMarginCommentsToInlineAnnotations(MutableAttributedString& text)
{
    convertMarginCommentsToInlineAnnotationsInRange(text, Range{0, text.length()});
}

void convertMarginCommentsToInlineAnnotationsInRange(MutableAttributedString& text, Range range)
{
    linkedToInline(text, range, false, QString());
}

void convertInlineAnnotationsToMarginComments(MutableAttributedString& text)
{
    convertInlineAnnotationsToMarginCommentsInRange(text, Range{0, text.length()});
}

void convertInlineAnnotationsToMarginCommentsInRange(MutableAttributedString& text, Range range)
{
    inlineToLinked(text, range, false, QString());
}

void convertMarginFootnotesToInlineFootnotesWithMarker(MutableAttributedString& text, const QString& marker)
{
    convertMarginFootnotesToInlineFootnotesInRange(text, Range{0, text.length()}, marker);
}

void convertMarginFootnotesToInlineFootnotesInRange(MutableAttributedString& text, Range range, const QString& marker)
{
    linkedToInline(text, range, true, marker);
}

void convertInlineFootnotesToMarginFootnotesWithMarker(MutableAttributedString& text, const QString& marker)
{
    convertInlineFootnotesToMarginFootnotesInRange(text, Range{0, text.length()}, marker);
}

void convertInlineFootnotesToMarginFootnotesInRange(MutableAttributedString& text, Range range, const QString& marker)
{
    inlineToLinked(text, range, true, marker);
}

void convertInlineFootnotesToMarginFootnotes(MutableAttributedString& text, InlineNoteAnchor anchor)
{
    inlineToLinked(text, Range{0, text.length()}, true, QString(), anchor);
}

} // namespace qly

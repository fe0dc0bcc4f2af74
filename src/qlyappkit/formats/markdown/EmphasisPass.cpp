#include <qlyappkit/formats/markdown/EmphasisPass_p.h>

#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <optional>

namespace qly::markdown {

namespace {

// The paragraph being edited, kept as the text before a cursor (edits applied) and the unread rest of
// the original. Closers are deleted at the cursor and openers a little behind it, so an edit costs
// the length of the pair it removes, never the rest of the paragraph: a paragraph of millions of
// markers stays linear.
class ParagraphBuffer {
public:
    ParagraphBuffer(QString text, std::optional<QChar> before, std::optional<QChar> after)
        : m_input(std::move(text)), m_before(before), m_after(after)
    {
        m_left.reserve(m_input.size());
    }

    qsizetype size() const { return m_left.size() + m_input.size() - m_read; }
    QChar at(qsizetype i) const { return i < m_left.size() ? m_left.at(i) : m_input.at(m_read + i - m_left.size()); }

    /// The first occurrence of marker at or after from; -1 when none.
    qsizetype indexOf(const QString& marker, qsizetype from) const
    {
        const qsizetype last = size() - marker.size();
        for (qsizetype i = from; i <= last; ++i) {
            qsizetype k = 0;
            while (k < marker.size() && at(i + k) == marker.at(k))
                ++k;
            if (k == marker.size())
                return i;
        }
        return -1;
    }

    void erase(qsizetype position, qsizetype count)
    {
        if (position > m_left.size()) {
            const qsizetype advance = position - m_left.size();
            m_left.append(QStringView(m_input).mid(m_read, advance));
            m_read += advance;
        }
        const qsizetype fromLeft = std::min(count, m_left.size() - position);
        m_left.remove(position, fromLeft);
        m_read += count - fromLeft;
    }

    std::optional<QChar> before(qsizetype i) const { return i > 0 ? std::optional<QChar>(at(i - 1)) : m_before; }
    std::optional<QChar> after(qsizetype i) const { return i < size() ? std::optional<QChar>(at(i)) : m_after; }

private:
    QString m_left;
    const QString m_input;
    qsizetype m_read = 0;
    std::optional<QChar> m_before, m_after;
};

bool isWhitespace(std::optional<QChar> c) { return c && isWhitespaceOrNewline(c->unicode()); }

} // namespace

Font fontAt(const MutableAttributedString& text, qsizetype position)
{
    const QVariant value = text.attribute(FontAttributeName, position);
    return value.metaType() == QMetaType::fromType<Font>() ? value.value<Font>() : Font::userFont();
}

std::optional<Font> fontWithTrait(const Font& font, unsigned trait)
{
    struct Answer {
        Font font;
        unsigned trait = 0;
        std::optional<Font> converted;
    };
    thread_local std::optional<Answer> last;
    if (!last || last->trait != trait || !(last->font == font))
        last = Answer{font, trait, font.convertedToHaveTrait(trait)};
    return last->converted;
}

Range runEmphasisPass(MutableAttributedString& text, Range paragraph, const EmphasisPass& pass)
{
    paragraph = intersectionRange(paragraph, Range{0, text.length()});
    const qsizetype base = paragraph.location;
    ParagraphBuffer buffer(
        text.substring(paragraph), base > 0 ? std::optional<QChar>(text.characterAt(base - 1)) : std::nullopt,
        paragraph.end() < text.length() ? std::optional<QChar>(text.characterAt(paragraph.end())) : std::nullopt);
    const QString& marker = pass.marker;
    const qsizetype length = marker.size();
    const QChar escape = XQMarkdownEscapeCharacter.at(0);
    auto escaped = [&](qsizetype i) { return buffer.before(i) == escape; };

    qsizetype open = -1;
    qsizetype found = buffer.indexOf(marker, 0);
    while (found >= 0) {
        qsizetype next = found + length;
        if (open < 0) {
            // A marker at the very end of the text may open: nothing after it is not whitespace.
            if (!escaped(found) && !isWhitespace(buffer.after(found + length))
                && !(pass.openerMustNotRepeat && buffer.after(found + length) == marker.at(0)))
                open = found;
        } else if (!escaped(found) && !isWhitespace(buffer.before(found))) {
            pass.format(text, Range::fromBounds(base + open, base + found + length), Range{base + found, length});
            text.deleteCharacters(Range{base + found, length});
            text.deleteCharacters(Range{base + open, length});
            buffer.erase(found, length);
            buffer.erase(open, length);
            // Resume a little before the end of the formatted text; the markers there are gone.
            next = std::max<qsizetype>(0, found - 2 * length);
            open = -1;
        }
        found = buffer.indexOf(marker, next);
    }
    return Range{base, buffer.size()};
}

void runEmphasisPasses(MutableAttributedString& text, const std::vector<EmphasisPass>& passes)
{
    qsizetype position = 0;
    while (position < text.length()) {
        Range range = paragraphRangeIn(text, Range{position, 0});
        for (const EmphasisPass& pass : passes)
            range = runEmphasisPass(text, range, pass);
        position = range.end();
    }
}

} // namespace qly::markdown

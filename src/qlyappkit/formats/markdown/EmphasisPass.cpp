#include <qlyappkit/formats/markdown/EmphasisPass_p.h>

#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <QHash>

namespace qly::markdown {

namespace {

// A paragraph being edited: its characters and, per character, the index of its attribute run in a
// table that formatting adds derived runs to.
struct ParagraphModel {
    QString text;
    std::vector<int> runOf;
    std::vector<Attributes> runs;
    QHash<quint64, int> derived; ///< (run, kind of change) → run with the change
    std::vector<Font> fonts; ///< fonts that derived runs were given, by index
    bool changed = false;

    Font fontOfRun(int run) const
    {
        const QVariant value = runs[size_t(run)].value(FontAttributeName);
        return value.metaType() == QMetaType::fromType<Font>() ? value.value<Font>() : Font::userFont();
    }

    int derive(int run, quint64 change, const QString& name, const QVariant& value)
    {
        const quint64 key = (quint64(run) << 32) | change;
        const auto found = derived.constFind(key);
        if (found != derived.constEnd())
            return *found;
        Attributes attributes = runs[size_t(run)];
        attributes.insert(name, value);
        runs.push_back(attributes);
        derived.insert(key, int(runs.size() - 1));
        return int(runs.size() - 1);
    }

    int runWithFont(int run, const Font& font)
    {
        auto known = std::find(fonts.begin(), fonts.end(), font);
        if (known == fonts.end())
            known = fonts.insert(fonts.end(), font);
        return derive(run, quint64(known - fonts.begin()) << 1, FontAttributeName, QVariant::fromValue(font));
    }

    int runWithDoubleUnderline(int run)
    {
        return derive(run, quint64(1), UnderlineStyleAttributeName, int(UnderlineStyleDouble));
    }
};

// The paragraph during one pass, kept as the part before a cursor (edits applied) and the unread rest.
// Closers are deleted at the cursor and openers a little behind it, so a pair costs the length of its
// own text, never the rest of the paragraph.
class ParagraphBuffer {
public:
    ParagraphBuffer(ParagraphModel& model, std::optional<QChar> before, std::optional<QChar> after)
        : m_model(model), m_input(std::move(model.text)), m_inputRuns(std::move(model.runOf)), m_before(before),
          m_after(after)
    {
        m_left.reserve(m_input.size());
        m_leftRuns.reserve(m_inputRuns.size());
    }

    qsizetype size() const { return m_left.size() + m_input.size() - m_read; }
    QChar at(qsizetype i) const { return i < m_left.size() ? m_left.at(i) : m_input.at(m_read + i - m_left.size()); }
    std::optional<QChar> before(qsizetype i) const { return i > 0 ? std::optional<QChar>(at(i - 1)) : m_before; }
    std::optional<QChar> after(qsizetype i) const { return i < size() ? std::optional<QChar>(at(i)) : m_after; }

    /// The first occurrence of marker at or after from; -1 when none.
    qsizetype indexOf(const QString& marker, qsizetype from) const
    {
        const qsizetype last = size() - marker.size();
        const QChar first = marker.at(0);
        for (qsizetype i = from; i <= last; ++i) {
            if (at(i) != first)
                continue;
            qsizetype k = 1;
            while (k < marker.size() && at(i + k) == marker.at(k))
                ++k;
            if (k == marker.size())
                return i;
        }
        return -1;
    }

    /// Moves the cursor forward to position, so that everything before it can be changed in place.
    void advanceTo(qsizetype position)
    {
        if (position <= m_left.size())
            return;
        const qsizetype count = position - m_left.size();
        m_left.append(QStringView(m_input).mid(m_read, count));
        m_leftRuns.insert(m_leftRuns.end(), m_inputRuns.begin() + m_read, m_inputRuns.begin() + m_read + count);
        m_read += count;
    }

    /// The run of a character before the cursor.
    int& runAt(qsizetype i) { return m_leftRuns[size_t(i)]; }

    void erase(qsizetype position, qsizetype count)
    {
        advanceTo(position);
        const qsizetype fromLeft = std::min(count, m_left.size() - position);
        m_left.remove(position, fromLeft);
        m_leftRuns.erase(m_leftRuns.begin() + position, m_leftRuns.begin() + position + fromLeft);
        m_read += count - fromLeft;
    }

    /// Hands the edited paragraph back to the model.
    void finish()
    {
        advanceTo(size());
        m_model.text = std::move(m_left);
        m_model.runOf = std::move(m_leftRuns);
    }

private:
    ParagraphModel& m_model;
    QString m_left;
    std::vector<int> m_leftRuns;
    const QString m_input;
    const std::vector<int> m_inputRuns;
    qsizetype m_read = 0;
    std::optional<QChar> m_before, m_after;
};

bool isWhitespace(std::optional<QChar> c) { return c && isWhitespaceOrNewline(c->unicode()); }

// Formats the text between a pair's markers; the markers themselves are about to be deleted, so what
// formatting would do to them is never seen and is skipped.
void format(ParagraphModel& model, ParagraphBuffer& buffer, const EmphasisPass& pass, qsizetype open, qsizetype close)
{
    const qsizetype first = open + pass.marker.size();
    switch (pass.format) {
    case EmphasisFormat::TraitFromOpener: {
        const std::optional<Font> font = fontWithTrait(model.fontOfRun(buffer.runAt(open)), pass.trait);
        if (!font)
            return;
        for (qsizetype i = first; i < close; ++i)
            buffer.runAt(i) = model.runWithFont(buffer.runAt(i), *font);
        return;
    }
    case EmphasisFormat::TraitPerRun:
        for (qsizetype i = first; i < close; ++i) {
            if (const std::optional<Font> font = fontWithTrait(model.fontOfRun(buffer.runAt(i)), pass.trait))
                buffer.runAt(i) = model.runWithFont(buffer.runAt(i), *font);
        }
        return;
    case EmphasisFormat::DoubleUnderline:
        for (qsizetype i = first; i < close; ++i)
            buffer.runAt(i) = model.runWithDoubleUnderline(buffer.runAt(i));
        return;
    case EmphasisFormat::UnderlineOnCloser:
        // The underline would land on the closing marker only, which goes next: the pair simply
        // disappears. Documents imported with this rule depend on it, so it stays.
        return;
    }
}

void runPass(ParagraphModel& model, const EmphasisPass& pass, std::optional<QChar> before, std::optional<QChar> after)
{
    ParagraphBuffer buffer(model, before, after);
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
            buffer.advanceTo(found);
            format(model, buffer, pass, open, found);
            buffer.erase(found, length);
            buffer.erase(open, length);
            model.changed = true;
            // Resume a little before the end of the formatted text; the markers there are gone.
            next = std::max<qsizetype>(0, found - 2 * length);
            open = -1;
        }
        found = buffer.indexOf(marker, next);
    }
    buffer.finish();
}

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

Range runEmphasisPasses(MutableAttributedString& text, Range paragraph, const std::vector<EmphasisPass>& passes)
{
    paragraph = intersectionRange(paragraph, Range{0, text.length()});
    if (paragraph.isEmpty())
        return paragraph;
    const std::optional<QChar> before =
        paragraph.location > 0 ? std::optional<QChar>(text.characterAt(paragraph.location - 1)) : std::nullopt;
    const std::optional<QChar> after =
        paragraph.end() < text.length() ? std::optional<QChar>(text.characterAt(paragraph.end())) : std::nullopt;

    // Paragraphs without a marker character are left alone without copying their attributes.
    ParagraphModel model;
    model.text = text.substring(paragraph);
    const bool hasMarker = std::any_of(passes.begin(), passes.end(),
                                       [&](const EmphasisPass& pass) { return model.text.contains(pass.marker); });
    if (!hasMarker)
        return paragraph;

    const AttributedString original = text.attributedSubstring(paragraph);
    model.runOf.reserve(size_t(paragraph.length));
    original.enumerateAttributes(Range{0, original.length()}, [&](const Attributes& attributes, Range run) {
        model.runs.push_back(attributes);
        model.runOf.insert(model.runOf.end(), size_t(run.length), int(model.runs.size() - 1));
        return true;
    });
    for (const EmphasisPass& pass : passes)
        runPass(model, pass, before, after);
    if (!model.changed)
        return paragraph;

    AttributedString edited;
    const qsizetype n = model.text.size();
    for (qsizetype start = 0; start < n;) {
        qsizetype end = start + 1;
        while (end < n && model.runOf[size_t(end)] == model.runOf[size_t(start)])
            ++end;
        edited.append(model.text.mid(start, end - start), model.runs[size_t(model.runOf[size_t(start)])]);
        start = end;
    }
    EditingBatch batch(text);
    text.replaceCharacters(paragraph, edited);
    return Range{paragraph.location, n};
}

void runEmphasisPasses(MutableAttributedString& text, const std::vector<EmphasisPass>& passes)
{
    qsizetype position = 0;
    while (position < text.length()) {
        const Range range = runEmphasisPasses(text, paragraphRangeIn(text, Range{position, 0}), passes);
        position = std::max(range.end(), position + 1);
    }
}

} // namespace qly::markdown

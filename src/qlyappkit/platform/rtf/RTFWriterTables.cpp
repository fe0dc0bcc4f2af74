#include <qlyappkit/platform/rtf/RTFWriterTables_p.h>

#include <cmath>

#include <qlyappkit/platform/rtf/RTFListFormats_p.h>

namespace qly::rtf {

namespace {

constexpr int MaxListLevels = 9;
constexpr int ListIndentStep = 720; // twips per list level
constexpr int ListMarkerIndent = -360;

Word familyWord(const QString& family)
{
    const QString f = family.toLower();
    auto has = [&f](const char* part) { return f.contains(QLatin1String(part)); };
    if (has("mono") || has("courier") || has("consol") || has("menlo") || has("code"))
        return Word::FModern;
    if (has("sans") || has("helvetica") || has("arial") || has("verdana") || has("gothic") || has("gill"))
        return Word::FSwiss;
    if (has("serif") || has("times") || has("roman") || has("georgia") || has("garamond") || has("palatino")
        || has("baskerville") || has("book") || has("cambria"))
        return Word::FRoman;
    return Word::FNil;
}

int component(double value) { return std::isnan(value) ? 0 : int(std::lround(std::clamp(value, 0.0, 1.0) * 255.0)); }

quint32 packed(const Color& c)
{
    return quint32(component(c.redComponent())) << 16 | quint32(component(c.greenComponent())) << 8
        | quint32(component(c.blueComponent()));
}

} // namespace

// ---------------------------------------------------------------- fonts

int FontTable::indexOf(const Font& font)
{
    // One entry per family: word processors take an entry's name as a family, and a face name such
    // as "Times-Bold" is a family they do not have. The traits are written as \b and \i.
    // Names cannot hold the entry separator.
    QString name = font.familyName();
    name.remove(QLatin1Char(';'));
    auto it = m_index.constFind(name);
    if (it != m_index.constEnd())
        return *it;
    const int index = int(m_names.size());
    m_names.append(name);
    m_index.insert(name, index);
    return index;
}

void FontTable::write(Output& out) const
{
    out.raw("{");
    out.word(Word::FontTable);
    for (int i = 0; i < m_names.size(); ++i) {
        out.word(Word::F, i);
        out.word(familyWord(m_names.at(i)));
        out.word(Word::FCharset, 0);
        out.text(m_names.at(i));
        out.raw(";");
    }
    out.raw("}");
    out.newline();
}

// ---------------------------------------------------------------- colours

ColorTable::ColorTable() { indexOf(Color::whiteColor()); }

int ColorTable::indexOf(const Color& color)
{
    const quint32 key = packed(color);
    auto it = m_index.constFind(key);
    if (it != m_index.constEnd())
        return *it;
    m_colors.push_back(key);
    const int index = int(m_colors.size()); // entry 0 is the automatic colour
    m_index.insert(key, index);
    return index;
}

void ColorTable::write(Output& out) const
{
    out.raw("{");
    out.word(Word::ColorTable);
    out.raw(";");
    for (quint32 c : m_colors) {
        out.word(Word::Red, int(c >> 16 & 0xFF));
        out.word(Word::Green, int(c >> 8 & 0xFF));
        out.word(Word::Blue, int(c & 0xFF));
        out.raw(";");
    }
    out.raw("}");
    out.newline();
}

// ---------------------------------------------------------------- lists

int ListTable::listFor(const QVector<TextList>& lists)
{
    if (lists.isEmpty()) {
        m_current = -1;
        return 0;
    }
    const int depth = std::min<int>(int(lists.size()), MaxListLevels);
    if (m_current >= 0) {
        std::vector<TextList>& levels = m_lists[size_t(m_current)];
        bool agrees = true;
        for (int k = 0; k < depth && k < int(levels.size()); ++k)
            agrees = agrees && levels[size_t(k)] == lists.at(k);
        if (agrees) {
            for (int k = int(levels.size()); k < depth; ++k)
                levels.push_back(lists.at(k));
            return m_current + 1;
        }
    }
    m_lists.emplace_back(lists.begin(), lists.begin() + depth);
    m_current = int(m_lists.size()) - 1;
    return m_current + 1;
}

QString ListTable::levelTemplate(const std::vector<TextList>& levels, int level)
{
    const TextList& list = levels[size_t(level)];
    const LevelFormat format = levelFormatForMarkerFormat(list.markerFormat);
    if (format.numberFormat == BulletNumberFormat)
        return format.before;
    QString own = format.before + QChar(char16_t(level)) + format.after;
    if ((list.options & 1) && level > 0) {
        const QString parent = levelTemplate(levels, level - 1);
        bool parentNumbered = false;
        for (QChar c : parent)
            parentNumbered = parentNumbered || c.unicode() < MaxListLevels;
        if (parentNumbered)
            own.prepend(parent);
    }
    return own;
}

void ListTable::write(Output& out) const
{
    out.raw("{\\*");
    out.word(Word::ListTable);
    for (size_t i = 0; i < m_lists.size(); ++i) {
        const std::vector<TextList>& levels = m_lists[i];
        out.raw("{");
        out.word(Word::List);
        out.word(Word::ListTemplateId, int(i) + 1);
        out.word(Word::ListHybrid);
        for (int k = 0; k < int(levels.size()); ++k) {
            const LevelFormat format = levelFormatForMarkerFormat(levels[size_t(k)].markerFormat);
            const QString tmpl = levelTemplate(levels, k);
            out.raw("{");
            out.word(Word::ListLevel);
            out.word(Word::LevelNfc, format.numberFormat);
            out.word(Word::LevelNfcN, format.numberFormat);
            out.word(Word::LevelJc, 0);
            out.word(Word::LevelFollow, 0);
            out.word(Word::LevelStartAt, levels[size_t(k)].startingItemNumber);
            out.raw("{");
            out.word(Word::LevelText);
            // Length and placeholders are bytes; the rest is text.
            QByteArray hex = QByteArray::number(std::min<int>(int(tmpl.size()), 255), 16).rightJustified(2, '0');
            out.raw("\\'");
            out.raw(hex.constData());
            for (QChar c : tmpl) {
                if (c.unicode() < MaxListLevels) {
                    out.raw("\\'0");
                    out.number(c.unicode());
                } else {
                    out.text(QStringView(&c, 1));
                }
            }
            out.raw(";}{");
            out.word(Word::LevelNumbers);
            for (int p = 0; p < tmpl.size(); ++p) {
                if (tmpl.at(p).unicode() < MaxListLevels) {
                    out.raw("\\'");
                    out.raw(QByteArray::number(p + 1, 16).rightJustified(2, '0').constData());
                }
            }
            out.raw(";}");
            out.word(Word::Fi, ListMarkerIndent);
            out.word(Word::Li, ListIndentStep * (k + 1));
            out.word(Word::Lin, ListIndentStep * (k + 1));
            out.raw("}");
        }
        out.raw("{");
        out.word(Word::ListName);
        out.raw(";}");
        out.word(Word::ListId, int(i) + 1);
        out.raw("}");
    }
    out.raw("}");
    out.newline();
    out.raw("{\\*");
    out.word(Word::ListOverrideTable);
    for (size_t i = 0; i < m_lists.size(); ++i) {
        out.raw("{");
        out.word(Word::ListOverride);
        out.word(Word::ListId, int(i) + 1);
        out.word(Word::ListOverrideCount, 0);
        out.word(Word::Ls, int(i) + 1);
        out.raw("}");
    }
    out.raw("}");
    out.newline();
}

} // namespace qly::rtf

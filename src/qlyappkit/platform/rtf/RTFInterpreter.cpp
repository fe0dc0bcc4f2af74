#include <qlyappkit/platform/rtf/RTFInterpreter_p.h>

#include <QSizeF>
#include <algorithm>

#include <qlyappkit/platform/rtf/RTFCodePages_p.h>
#include <qlyappkit/platform/rtf/RTFListFormats_p.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly::rtf {

namespace {

constexpr double TwipsPerPoint = 20.0;
constexpr double TwipsPerLine = 240.0; // \sl with \slmult1 counts lines in 240ths
constexpr int MaxTableDepth = 64;
constexpr int MaxListLevels = 9;

// Default page of documents that give only one of its sides, in points.
constexpr double DefaultPaperWidth = 612, DefaultPaperHeight = 792;

const QString DefaultFontName = QStringLiteral("Helvetica");

void hashCombine(size_t& seed, size_t value) { seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2); }

} // namespace

size_t CharFormatHash::operator()(const CharFormat& f) const
{
    size_t h = 0;
    for (int v :
         {f.font, f.halfPoints, f.underlineColor, f.foreground, f.background, f.baselineHalfPoints, f.kernTwips, f.link,
          int(f.underline), int(f.strike), int(f.script), int(f.bold) | int(f.italic) << 1 | int(f.hidden) << 2})
        hashCombine(h, std::hash<int>()(v));
    return h;
}

Interpreter::Interpreter() : m_documentCodePage(DefaultCodePage) { m_states.emplace_back(); }

Interpreter::~Interpreter() = default;

// ---------------------------------------------------------------- groups

GroupState& Interpreter::mutableState()
{
    if (m_states.back().repeat > 0) {
        GroupState copy = m_states.back();
        copy.repeat = 0;
        --m_states.back().repeat;
        m_states.push_back(std::move(copy));
    }
    return m_states.back();
}

void Interpreter::groupStart()
{
    flushBytes();
    m_skipUnits = 0;
    m_starPending = false;
    ++m_depth;
    ++m_states.back().repeat;
    // Inside "\upr" only the Unicode alternative ("\ud") is read.
    if (destination() == Destination::Upr)
        mutableState().destination = Destination::Ignored;
}

void Interpreter::groupEnd()
{
    flushBytes();
    m_skipUnits = 0;
    m_starPending = false;
    if (destination() == Destination::FontTable && m_fontEntryOpen)
        finishFontEntry();
    if (!m_fields.empty() && m_fields.back().depth == m_depth)
        m_fields.pop_back();
    if (m_states.back().repeat > 0)
        --m_states.back().repeat;
    else if (m_states.size() > 1)
        m_states.pop_back();
    if (m_depth > 0)
        --m_depth;
}

bool Interpreter::isTextDestination() const
{
    switch (destination()) {
    case Destination::Text:
    case Destination::FontTable:
    case Destination::Author:
    case Destination::FieldInstruction:
    case Destination::LevelText:
        return true;
    default:
        return false;
    }
}

// ---------------------------------------------------------------- text

int Interpreter::currentCodePage() const
{
    if (destination() == Destination::FontTable)
        return m_fontCodePage > 0 ? m_fontCodePage : codePageForCharset(m_fontCharset, m_documentCodePage);
    const int number = state().chr.font >= 0 ? state().chr.font : m_defaultFont;
    auto it = m_fonts.constFind(number);
    if (it != m_fonts.constEnd() && it->codePage > 0)
        return it->codePage;
    return m_documentCodePage;
}

void Interpreter::flushBytes()
{
    if (m_pendingBytes.isEmpty())
        return;
    const QString decoded = decodeCodePage(m_pendingBytes, m_pendingCodePage);
    m_pendingBytes.clear();
    appendDecoded(decoded);
}

void Interpreter::text(std::string_view bytes)
{
    m_starPending = false;
    if (m_skipUnits > 0) {
        const qsizetype skipped = std::min<qsizetype>(m_skipUnits, qsizetype(bytes.size()));
        bytes.remove_prefix(size_t(skipped));
        m_skipUnits -= skipped;
        if (bytes.empty())
            return;
    }
    if (destination() == Destination::ColorTable) {
        for (char c : bytes) {
            if (c == ';')
                finishColor();
        }
        return;
    }
    if (!isTextDestination())
        return;
    bool plain = true;
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 || (b < 0x20 && b != '\t')) {
            plain = false;
            break;
        }
    }
    if (plain) {
        flushBytes();
        appendDecoded(QString::fromLatin1(bytes.data(), qsizetype(bytes.size())));
        return;
    }
    const int codePage = currentCodePage();
    if (!m_pendingBytes.isEmpty() && m_pendingCodePage != codePage)
        flushBytes();
    m_pendingCodePage = codePage;
    for (char c : bytes) {
        // Raw control characters other than the tab are noise in RTF source.
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x20 || b == '\t')
            m_pendingBytes.append(c);
    }
}

void Interpreter::hexByte(std::uint8_t byte)
{
    m_starPending = false;
    if (m_skipUnits > 0) {
        --m_skipUnits;
        return;
    }
    if (destination() == Destination::LevelText) {
        // The first byte is the template's length, and bytes below 0x10 are level placeholders.
        if (m_lists.empty() || m_lists.back().levels.empty())
            return;
        QString& text = m_lists.back().levels.back().text;
        if (text.isEmpty() || byte < 0x10) {
            flushBytes();
            text.append(QChar(char16_t(byte)));
            return;
        }
    }
    if (!isTextDestination())
        return;
    const int codePage = currentCodePage();
    if (!m_pendingBytes.isEmpty() && m_pendingCodePage != codePage)
        flushBytes();
    m_pendingCodePage = codePage;
    m_pendingBytes.append(char(byte));
}

void Interpreter::binary(std::string_view)
{
    flushBytes();
    m_starPending = false;
    if (m_skipUnits > 0)
        --m_skipUnits;
}

void Interpreter::appendDecoded(QStringView text)
{
    if (text.isEmpty())
        return;
    switch (destination()) {
    case Destination::Text:
        appendParagraphText(text);
        break;
    case Destination::FontTable: {
        if (!m_fontEntryOpen)
            break;
        const qsizetype semicolon = text.indexOf(QLatin1Char(';'));
        if (semicolon < 0) {
            m_fontName += text;
        } else {
            m_fontName += text.left(semicolon);
            finishFontEntry();
        }
        break;
    }
    case Destination::Author:
        m_author += text;
        break;
    case Destination::FieldInstruction:
        if (!m_fields.empty())
            m_fields.back().instruction += text;
        break;
    case Destination::LevelText:
        if (!m_lists.empty() && !m_lists.back().levels.empty())
            m_lists.back().levels.back().text += text;
        break;
    default:
        break;
    }
}

void Interpreter::appendCharacter(char16_t c)
{
    flushBytes();
    const QChar ch(c);
    appendDecoded(QStringView(&ch, 1));
}

void Interpreter::appendParagraphText(QStringView text)
{
    const CharFormat& format = state().chr;
    if (format.hidden)
        return;
    if (m_paraRuns.empty() || !(format == m_runFormat)) {
        m_paraRuns.push_back(PendingRun{m_paraText.size(), formatIndex(format)});
        m_runFormat = format;
    }
    m_paraText.append(text);
}

void Interpreter::endParagraph(ParagraphEnd kind)
{
    flushBytes();
    // The paragraph mark is never hidden: hiding it would join paragraphs.
    if (state().chr.hidden) {
        CharFormat visible = state().chr;
        visible.hidden = false;
        if (m_paraRuns.empty() || !(visible == m_runFormat)) {
            m_paraRuns.push_back(PendingRun{m_paraText.size(), formatIndex(visible)});
            m_runFormat = visible;
        }
        m_paraText.append(QLatin1Char('\n'));
    } else {
        appendParagraphText(u"\n");
    }

    const ParaFormat& para = state().para;
    int depth = para.itap > 0 ? para.itap : (para.inTable && para.itap != 0 ? 1 : 0);
    depth = std::min(depth, MaxTableDepth);
    const QVector<TextBlock> blocks = currentBlocks(depth);
    if (m_lastStyleIndex < 0 || !(para == m_lastPara) || !(blocks == m_lastBlocks)) {
        m_lastPara = para;
        m_lastBlocks = blocks;
        m_lastStyle = QVariant::fromValue(paragraphStyle(para, blocks));
        ++m_lastStyleIndex;
    }
    for (size_t r = 0; r < m_paraRuns.size(); ++r) {
        const qsizetype start = m_paraRuns[r].start;
        const qsizetype end = r + 1 < m_paraRuns.size() ? m_paraRuns[r + 1].start : m_paraText.size();
        if (end <= start)
            continue;
        const quint64 key = (quint64(quint32(m_lastStyleIndex)) << 32) | quint32(m_paraRuns[r].format);
        auto it = m_runAttributes.find(key);
        if (it == m_runAttributes.end()) {
            Attributes attributes = m_formatAttributes[size_t(m_paraRuns[r].format)];
            attributes.insert(ParagraphStyleAttributeName, m_lastStyle);
            it = m_runAttributes.insert(key, attributes);
        }
        m_result.append(m_paraText.mid(start, end - start), *it);
    }
    m_paraText.clear();
    m_paraRuns.clear();

    if (kind == ParagraphEnd::Cell && !m_tables.empty())
        ++m_tables.front().column;
    else if (kind == ParagraphEnd::NestedCell && m_tables.size() > 1)
        ++m_tables.back().column;
}

void Interpreter::end()
{
    flushBytes();
    if (m_fontEntryOpen)
        finishFontEntry();
    if (m_paraText.isEmpty())
        return;
    // The last paragraph has no mark of its own: flush it through endParagraph and take the mark off.
    const qsizetype before = m_result.length();
    endParagraph(ParagraphEnd::Paragraph);
    if (m_result.length() > before)
        m_result.deleteCharacters(Range{m_result.length() - 1, 1});
}

void Interpreter::finishFontEntry()
{
    m_fontEntryOpen = false;
    FontEntry entry;
    entry.name = m_fontName.trimmed();
    entry.codePage = m_fontCodePage > 0 ? m_fontCodePage : codePageForCharset(m_fontCharset, m_documentCodePage);
    m_fonts.insert(m_fontNumber, entry);
    m_fontName.clear();
}

void Interpreter::finishColor()
{
    if (m_colorHasComponents)
        m_colors.emplace_back(Color(m_red / 255.0, m_green / 255.0, m_blue / 255.0));
    else
        m_colors.emplace_back(std::nullopt);
    m_red = m_green = m_blue = 0;
    m_colorHasComponents = false;
}

// ---------------------------------------------------------------- attributes

int Interpreter::formatIndex(const CharFormat& format)
{
    auto it = m_formatIndex.find(format);
    if (it != m_formatIndex.end())
        return it->second;
    const int index = int(m_formats.size());
    m_formats.push_back(format);
    m_formatAttributes.push_back(characterAttributes(format));
    m_formatIndex.emplace(format, index);
    return index;
}

Attributes Interpreter::characterAttributes(const CharFormat& f) const
{
    Attributes attributes;
    const int number = f.font >= 0 ? f.font : m_defaultFont;
    auto entry = m_fonts.constFind(number);
    const QString name = entry != m_fonts.constEnd() && !entry->name.isEmpty() ? entry->name : DefaultFontName;
    const double size = f.halfPoints / 2.0;
    const Font named(name, size);
    const unsigned traits = named.traits() | (f.bold ? BoldFontMask : 0u) | (f.italic ? ItalicFontMask : 0u);
    attributes.insert(FontAttributeName, QVariant::fromValue(Font::fromFamily(named.familyName(), size, traits)));

    auto color = [this](int index) -> std::optional<Color> {
        if (index <= 0 || index >= int(m_colors.size()))
            return std::nullopt;
        return m_colors[size_t(index)];
    };
    if (const auto c = color(f.foreground))
        attributes.insert(ForegroundColorAttributeName, QVariant::fromValue(*c));
    if (const auto c = color(f.background))
        attributes.insert(BackgroundColorAttributeName, QVariant::fromValue(*c));
    if (f.underline) {
        attributes.insert(UnderlineStyleAttributeName, int(f.underline));
        if (const auto c = color(f.underlineColor))
            attributes.insert(UnderlineColorAttributeName, QVariant::fromValue(*c));
    }
    if (f.strike)
        attributes.insert(StrikethroughStyleAttributeName, int(f.strike));
    if (f.script)
        attributes.insert(SuperscriptAttributeName, int(f.script));
    if (f.baselineHalfPoints)
        attributes.insert(BaselineOffsetAttributeName, f.baselineHalfPoints / 2.0);
    if (f.kernTwips)
        attributes.insert(KernAttributeName, f.kernTwips / TwipsPerPoint);
    if (f.link >= 0 && f.link < m_links.size())
        attributes.insert(LinkAttributeName, m_links.at(f.link));
    return attributes;
}

QVector<TextBlock> Interpreter::currentBlocks(int depth)
{
    while (int(m_tables.size()) > depth)
        m_tables.pop_back();
    while (int(m_tables.size()) < depth)
        m_tables.push_back(TableLevel{std::make_shared<TextTable>(), 0, 0});
    QVector<TextBlock> blocks;
    blocks.reserve(depth);
    for (int level = 0; level < depth; ++level) {
        TableLevel& t = m_tables[size_t(level)];
        TextBlock block;
        block.table = t.table;
        block.startingRow = t.row;
        block.startingColumn = t.column;
        int columns = t.column + 1;
        if (level == 0) {
            columns = std::max(columns, int(m_rowCells.size()));
            if (t.column < int(m_rowCells.size())) {
                const CellDef& cell = m_rowCells[size_t(t.column)];
                if (cell.widthType == 3 && cell.width > 0)
                    block.contentWidth = cell.width / TwipsPerPoint;
                if (cell.background > 0 && cell.background < int(m_colors.size()) && m_colors[size_t(cell.background)])
                    block.backgroundColor = *m_colors[size_t(cell.background)];
            }
        }
        t.table->numberOfColumns = std::max(t.table->numberOfColumns, columns);
        blocks.append(block);
    }
    return blocks;
}

ParagraphStyle Interpreter::paragraphStyle(const ParaFormat& p, const QVector<TextBlock>& blocks)
{
    ParagraphStyle style;
    style.setAlignment(p.alignment);
    style.setHeadIndent(p.leftIndent / TwipsPerPoint);
    style.setFirstLineHeadIndent((p.leftIndent + p.firstIndent) / TwipsPerPoint);
    style.setTailIndent(p.rightIndent != 0 ? -p.rightIndent / TwipsPerPoint : 0.0);
    style.setParagraphSpacingBefore(p.spaceBefore / TwipsPerPoint);
    style.setParagraphSpacing(p.spaceAfter / TwipsPerPoint);
    if (p.lineMultiple) {
        if (p.lineRule > 0)
            style.setLineHeightMultiple(p.lineRule / TwipsPerLine);
    } else if (p.lineRule > 0) {
        style.setMinimumLineHeight(p.lineRule / TwipsPerPoint);
    } else if (p.lineRule < 0) {
        style.setMinimumLineHeight(-double(p.lineRule) / TwipsPerPoint);
        style.setMaximumLineHeight(-double(p.lineRule) / TwipsPerPoint);
    }
    if (p.minHeight >= 0)
        style.setMinimumLineHeight(p.minHeight / TwipsPerPoint);
    if (p.maxHeight >= 0)
        style.setMaximumLineHeight(p.maxHeight / TwipsPerPoint);
    style.setLineSpacing(p.leading / TwipsPerPoint);
    style.setTabStops(p.tabs);
    if (p.list > 0)
        style.setTextLists(textListsFor(p.list, p.level));
    style.setTextBlocks(blocks);
    if (p.outlineLevel >= 0 && p.outlineLevel < MaxListLevels)
        style.setHeaderLevel(p.outlineLevel + 1);
    return style;
}

// ---------------------------------------------------------------- lists

QVector<TextList> Interpreter::textListsFor(int list, int level)
{
    level = std::clamp(level, 0, MaxListLevels - 1);
    const quint64 key = (quint64(quint32(list)) << 32) | quint32(level);
    auto cached = m_textLists.constFind(key);
    if (cached != m_textLists.constEnd())
        return *cached;
    QVector<TextList> lists;
    const auto found = m_listIndex.constFind(m_overrides.value(list, -1));
    if (found != m_listIndex.constEnd() && !m_lists[size_t(*found)].levels.empty()) {
        const ListDef& def = m_lists[size_t(*found)];
        const int deepest = std::min(level, int(def.levels.size()) - 1);
        for (int k = 0; k <= deepest; ++k)
            lists.append(textListForLevel(def, k));
    }
    m_textLists.insert(key, lists);
    return lists;
}

namespace {

// The template of a level: the \leveltext contents after the length unit, cut to that length and
// never including the closing semicolon (some writers count wrongly).
QString levelTemplate(const QString& levelText)
{
    if (levelText.isEmpty())
        return {};
    const qsizetype length = levelText.at(0).unicode();
    QString body = levelText.mid(1);
    if (body.endsWith(QLatin1Char(';')))
        body.chop(1);
    return body.left(length);
}

bool isPlaceholder(QChar c) { return c.unicode() < MaxListLevels; }

QString withoutPlaceholders(QStringView text)
{
    QString out;
    for (QChar c : text) {
        if (!isPlaceholder(c))
            out.append(c);
    }
    return out;
}

} // namespace

TextList Interpreter::textListForLevel(const ListDef& list, int level) const
{
    const ListLevelDef& def = list.levels[size_t(level)];
    TextList result;
    result.startingItemNumber = def.startAt;
    const QString tmpl = levelTemplate(def.text);
    const qsizetype own = tmpl.indexOf(QChar(char16_t(level)));
    const bool numbered = def.numberFormat != BulletNumberFormat && def.numberFormat != NoNumberFormat;
    if (!numbered || own < 0) {
        result.markerFormat = markerFormatForBulletText(withoutPlaceholders(tmpl));
        return result;
    }
    // Numbers of enclosing levels in front of this level's own mean the marker includes theirs.
    qsizetype ownStart = 0;
    if (level > 0) {
        const QString parent = levelTemplate(list.levels[size_t(level) - 1].text);
        bool hasEnclosing = false;
        for (qsizetype i = 0; i < own; ++i)
            hasEnclosing = hasEnclosing || isPlaceholder(tmpl.at(i));
        if (hasEnclosing) {
            result.options = 1;
            if (!parent.isEmpty() && tmpl.startsWith(parent) && parent.size() <= own) {
                ownStart = parent.size();
            } else {
                for (qsizetype i = own - 1; i >= 0; --i) {
                    if (isPlaceholder(tmpl.at(i))) {
                        ownStart = i + 1;
                        break;
                    }
                }
            }
        }
    }
    result.markerFormat = markerFormatForNumberedLevel(
        def.numberFormat, withoutPlaceholders(QStringView(tmpl).mid(ownStart, own - ownStart)),
        withoutPlaceholders(QStringView(tmpl).mid(own + 1)));
    return result;
}

// ---------------------------------------------------------------- fields

QString Interpreter::linkTargetFromInstruction(const QString& instruction) const
{
    const QString trimmed = instruction.trimmed();
    static const QLatin1String hyperlink("HYPERLINK");
    if (!trimmed.startsWith(hyperlink, Qt::CaseInsensitive))
        return {};
    // Arguments: quoted strings or words; switches start with a backslash, \l takes a bookmark.
    QString url, bookmark;
    bool nextIsBookmark = false, skipNext = false;
    qsizetype i = hyperlink.size();
    while (i < trimmed.size()) {
        while (i < trimmed.size() && trimmed.at(i).isSpace())
            ++i;
        if (i >= trimmed.size())
            break;
        QString argument;
        bool isSwitch = false;
        if (trimmed.at(i) == QLatin1Char('"')) {
            const qsizetype close = trimmed.indexOf(QLatin1Char('"'), i + 1);
            const qsizetype end = close < 0 ? trimmed.size() : close;
            argument = trimmed.mid(i + 1, end - i - 1);
            i = end + 1;
        } else {
            const qsizetype start = i;
            while (i < trimmed.size() && !trimmed.at(i).isSpace())
                ++i;
            argument = trimmed.mid(start, i - start);
            isSwitch = argument.startsWith(QLatin1Char('\\'));
        }
        if (isSwitch) {
            const QString name = argument.mid(1).toLower();
            nextIsBookmark = name == QLatin1String("l");
            skipNext = name == QLatin1String("o") || name == QLatin1String("t");
            continue;
        }
        if (nextIsBookmark)
            bookmark = argument;
        else if (!skipNext && url.isEmpty())
            url = argument;
        nextIsBookmark = skipNext = false;
    }
    if (!bookmark.isEmpty())
        return url + QLatin1Char('#') + bookmark;
    return url;
}

// ---------------------------------------------------------------- document

QVariantMap Interpreter::documentAttributes() const
{
    QVariantMap attributes = m_documentAttributes;
    if (m_paperWidth > 0 || m_paperHeight > 0) {
        attributes.insert(PaperSizeDocumentAttribute,
                          QSizeF(m_paperWidth > 0 ? m_paperWidth / TwipsPerPoint : DefaultPaperWidth,
                                 m_paperHeight > 0 ? m_paperHeight / TwipsPerPoint : DefaultPaperHeight));
    }
    if (m_hasAuthor)
        attributes.insert(AuthorDocumentAttribute, m_author.trimmed());
    return attributes;
}

} // namespace qly::rtf

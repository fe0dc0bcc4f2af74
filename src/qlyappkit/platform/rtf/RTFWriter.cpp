#include <qlyappkit/platform/rtf/RTFWriter.h>

#include <QSizeF>
#include <QUrl>
#include <algorithm>
#include <cmath>
#include <vector>

#include <qlyappkit/platform/rtf/RTFOutput_p.h>
#include <qlyappkit/platform/rtf/RTFWriterTables_p.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly {

namespace {

using rtf::Word;

// The document header: the platform's RTF flavour, version word included, as the extended passes
// expect to find it.
// Font 0 is the default font: readers use it for text that names none.
constexpr const char* DocumentHeader = "{\\rtf1\\ansi\\ansicpg1252\\cocoartf1038\\deff0";
constexpr const char* HyperlinkStart = "{\\field{\\*\\fldinst{HYPERLINK \"";
constexpr const char* HyperlinkResult = "\"}}{\\fldrslt ";
constexpr const char* NestedRowStart = "{\\*\\nesttableprops";
constexpr const char* NestedRowEnd = "}{\\nonesttables\\par}";

constexpr int DefaultTableWidthTwips = 8640; // six inches
constexpr int CellGapTwips = 108;
constexpr int MaxListTextLength = 24;

// RTF parameters are integers. Measures no document holds (NaN, infinities, anything an int cannot
// hold) are first brought within a range small enough that the sum, difference or negation of two
// still fits: NaN gives 0, the rest saturates.
constexpr double ParameterLimit = (1 << 30) - 1;

double saturated(double value) { return std::isnan(value) ? 0.0 : std::clamp(value, -ParameterLimit, ParameterLimit); }
int rounded(double value) { return int(std::lround(saturated(value))); }
int twips(double points) { return rounded(points * 20.0); }
int halfPoints(double points) { return int(std::floor(saturated(points * 2.0 + 1e-7))); }

struct CharState {
    int font = 0;
    int halfPoints = 24;
    bool bold = false, italic = false;
    int underline = 0, underlineColor = 0;
    int strike = 0;
    int foreground = 0, background = 0;
    int script = 0;
    int baseline = 0; // half-points
    int kern = 0; // twips
    friend bool operator==(const CharState&, const CharState&) = default;
};

struct Paragraph {
    qsizetype start = 0, contentEnd = 0, end = 0; // [contentEnd, end) is the terminator
    ParagraphStyle style;
    QVector<TextBlock> tables; // the blocks that are table cells, outermost first
    int list = 0; // \ls number; 0 outside lists
};

struct Run {
    qsizetype start = 0, end = 0;
    Attributes attributes;
};

bool sameCell(const TextBlock& a, const TextBlock& b)
{
    return a.table == b.table && a.startingRow == b.startingRow && a.startingColumn == b.startingColumn;
}

bool sameRow(const TextBlock& a, const TextBlock& b) { return a.table == b.table && a.startingRow == b.startingRow; }

// The index of the tab that ends a list item's marker text ("\t•\t", "•\t", " 1.\t", "iv)\t"), or -1
// when the item does not start with one: a marker is short and holds no blank after its first sign.
qsizetype listMarkerEnd(const QString& s, const Paragraph& p)
{
    if (p.list <= 0 || p.start >= p.contentEnd)
        return -1;
    qsizetype from = p.start;
    while (from < p.contentEnd && (s.at(from) == QLatin1Char(' ') || s.at(from) == QLatin1Char('\t'))
           && from - p.start < 2)
        ++from;
    const qsizetype tab = s.indexOf(QLatin1Char('\t'), from);
    if (tab <= from || tab >= p.contentEnd || tab - p.start > MaxListTextLength)
        return -1;
    for (qsizetype i = from; i < tab; ++i) {
        if (s.at(i).isSpace())
            return -1;
    }
    return tab;
}

QString linkTarget(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QUrl>())
        return value.toUrl().toString(QUrl::FullyEncoded);
    if (value.metaType() == QMetaType::fromType<QString>())
        return value.toString();
    return {};
}

class Writer {
public:
    Writer(const AttributedString& text, Range range, const QVariantMap& documentAttributes)
        : m_text(text), m_range(range), m_documentAttributes(documentAttributes), m_out(m_bytes)
    {
    }

    QByteArray write();

private:
    void collect();
    void writeHeader();
    void writeParagraph(size_t index);
    void writeParagraphProperties(const Paragraph& p);
    void writeRowDefinition(size_t index, int level, bool nested);
    void writeTerminator(size_t index);
    void writeRunText(const Run& run, qsizetype from, qsizetype to);
    CharState charStateFor(const Attributes& attributes);
    void switchTo(const CharState& next);
    void openLink(const QString& target);
    void closeLink();

    const AttributedString& m_text;
    Range m_range;
    const QVariantMap& m_documentAttributes;
    QByteArray m_bytes;
    rtf::Output m_out;

    QString m_string;
    std::vector<Run> m_runs;
    std::vector<Paragraph> m_paragraphs;
    rtf::FontTable m_fonts;
    rtf::ColorTable m_colors;
    rtf::ListTable m_lists;

    CharState m_state;
    CharState m_stateOutsideLink;
    QString m_link;
    bool m_linkOpen = false;
    size_t m_runCursor = 0;
};

QByteArray Writer::write()
{
    collect();
    // Font, size and colour are written in front of the first text whatever their values: the
    // extended passes look back from any point of the text for the font and size in force.
    m_state.font = m_state.halfPoints = m_state.foreground = -1;
    m_bytes.reserve(m_string.size() + m_string.size() / 4 + 1024);
    writeHeader();
    for (size_t i = 0; i < m_paragraphs.size(); ++i)
        writeParagraph(i);
    closeLink();
    m_out.raw("}");
    return m_bytes;
}

// Everything the header needs (fonts, colours and lists in order of first use) and the paragraphs.
void Writer::collect()
{
    m_string = m_text.substring(m_range);
    m_text.enumerateAttributes(m_range, [this](const Attributes& attributes, Range run) {
        m_runs.push_back(Run{run.location - m_range.location, run.end() - m_range.location, attributes});
        return true;
    });

    const qsizetype n = m_string.size();
    const QChar* s = m_string.constData();
    qsizetype start = 0;
    size_t run = 0;
    auto styleAt = [&](qsizetype index) -> ParagraphStyle {
        while (run + 1 < m_runs.size() && m_runs[run].end <= index)
            ++run;
        if (run < m_runs.size()) {
            const QVariant v = m_runs[run].attributes.value(ParagraphStyleAttributeName);
            if (v.metaType() == QMetaType::fromType<ParagraphStyle>())
                return v.value<ParagraphStyle>();
        }
        return ParagraphStyle::defaultParagraphStyle();
    };
    for (qsizetype i = 0; i <= n; ++i) {
        qsizetype terminator = 0;
        if (i < n) {
            const char16_t c = s[i].unicode();
            if (c == u'\n' || c == 0x2029)
                terminator = 1;
            else if (c == u'\r')
                terminator = (i + 1 < n && s[i + 1] == QLatin1Char('\n')) ? 2 : 1;
            if (!terminator)
                continue;
        } else if (start == n) {
            break; // no empty paragraph after a final break
        }
        Paragraph p;
        p.start = start;
        p.contentEnd = i;
        p.end = i + terminator;
        p.style = styleAt(start);
        for (const TextBlock& block : p.style.textBlocks()) {
            if (!block.table)
                break;
            p.tables.append(block);
        }
        p.list = m_lists.listFor(p.style.textLists());
        for (const TextBlock& block : p.tables) {
            if (block.backgroundColor.alphaComponent() > 0)
                m_colors.indexOf(block.backgroundColor);
        }
        m_paragraphs.push_back(std::move(p));
        start = i + terminator;
        i = start - 1;
    }

    for (const Run& r : m_runs)
        charStateFor(r.attributes); // registers fonts and colours in order of use
}

void Writer::writeHeader()
{
    m_out.raw(DocumentHeader);
    m_out.newline();
    m_fonts.write(m_out);
    m_colors.write(m_out);
    if (!m_lists.isEmpty())
        m_lists.write(m_out);
    const QVariant author = m_documentAttributes.value(AuthorDocumentAttribute);
    if (author.isValid() && !author.toString().isEmpty()) {
        m_out.raw("{");
        m_out.word(Word::Info);
        m_out.newline();
        m_out.raw("{");
        m_out.word(Word::Author);
        m_out.text(author.toString());
        m_out.raw("}}");
        m_out.newline();
    }
    const QVariant paper = m_documentAttributes.value(PaperSizeDocumentAttribute);
    if (paper.canConvert<QSizeF>() && paper.toSizeF().isValid()) {
        m_out.word(Word::PaperW, twips(paper.toSizeF().width()));
        m_out.word(Word::PaperH, twips(paper.toSizeF().height()));
    }
    const std::pair<const QString*, Word> margins[] = {{&LeftMarginDocumentAttribute, Word::MargL},
                                                       {&RightMarginDocumentAttribute, Word::MargR},
                                                       {&TopMarginDocumentAttribute, Word::MargT},
                                                       {&BottomMarginDocumentAttribute, Word::MargB}};
    for (const auto& [key, word] : margins) {
        const QVariant margin = m_documentAttributes.value(*key);
        if (margin.isValid())
            m_out.word(word, twips(margin.toDouble()));
    }
    m_out.word(Word::ViewKind, m_documentAttributes.value(ViewModeDocumentAttribute, 0).toInt());
    m_out.newline();
}

// ---------------------------------------------------------------- character runs

CharState Writer::charStateFor(const Attributes& a)
{
    CharState c;
    const QVariant fontValue = a.value(FontAttributeName);
    const Font font = fontValue.metaType() == QMetaType::fromType<Font>() ? fontValue.value<Font>() : Font::userFont();
    c.font = m_fonts.indexOf(font);
    c.halfPoints = std::max(1, halfPoints(font.pointSize() > 0 ? font.pointSize() : 12.0));
    c.bold = font.isBold();
    c.italic = font.isItalic();
    auto color = [&](const QString& name) {
        const QVariant v = a.value(name);
        return v.metaType() == QMetaType::fromType<Color>() ? m_colors.indexOf(v.value<Color>()) : 0;
    };
    c.foreground = color(ForegroundColorAttributeName);
    c.background = color(BackgroundColorAttributeName);
    c.underline = a.value(UnderlineStyleAttributeName).toInt();
    if (c.underline)
        c.underlineColor = color(UnderlineColorAttributeName);
    c.strike = a.value(StrikethroughStyleAttributeName).toInt();
    c.script = std::clamp(a.value(SuperscriptAttributeName).toInt(), -1, 1);
    c.baseline = rounded(a.value(BaselineOffsetAttributeName).toDouble() * 2.0);
    c.kern = twips(a.value(KernAttributeName).toDouble());
    return c;
}

void Writer::switchTo(const CharState& n)
{
    const CharState& o = m_state;
    if (n == o)
        return;
    if (n.font != o.font)
        m_out.word(Word::F, n.font);
    if (n.halfPoints != o.halfPoints)
        m_out.word(Word::Fs, n.halfPoints);
    if (n.bold != o.bold)
        n.bold ? m_out.word(Word::B) : m_out.word(Word::B, 0);
    if (n.italic != o.italic)
        n.italic ? m_out.word(Word::I) : m_out.word(Word::I, 0);
    if (n.underline != o.underline) {
        switch (n.underline) {
        case 0:
            m_out.word(Word::UlNone);
            break;
        case 2:
            m_out.word(Word::UlTh);
            break;
        case 9:
            m_out.word(Word::UlDb);
            break;
        default:
            m_out.word(Word::Ul);
            break;
        }
    }
    if (n.underlineColor != o.underlineColor)
        m_out.word(Word::UlC, n.underlineColor);
    if (n.strike != o.strike) {
        if (o.strike == 9)
            m_out.word(Word::StrikeD, 0);
        else if (o.strike)
            m_out.word(Word::Strike, 0);
        if (n.strike == 9)
            m_out.word(Word::StrikeD, 1);
        else if (n.strike)
            m_out.word(Word::Strike);
    }
    if (n.foreground != o.foreground)
        m_out.word(Word::Cf, n.foreground);
    if (n.background != o.background)
        m_out.word(Word::Cb, n.background);
    if (n.script != o.script)
        m_out.word(n.script > 0 ? Word::Super : n.script < 0 ? Word::Sub : Word::NoSuperSub);
    if (n.baseline != o.baseline)
        n.baseline >= 0 ? m_out.word(Word::Up, n.baseline) : m_out.word(Word::Dn, -n.baseline);
    if (n.kern != o.kern) {
        // Quarter points for older readers, then the exact value in twips.
        m_out.word(Word::Expnd, int(std::lround(n.kern / 5.0)));
        m_out.word(Word::ExpndTw, n.kern);
    }
    m_state = n;
}

void Writer::openLink(const QString& target)
{
    m_stateOutsideLink = m_state;
    m_out.raw(HyperlinkStart);
    QString quoted = target;
    quoted.replace(QLatin1Char('"'), QLatin1String("%22"));
    m_out.text(quoted);
    m_out.raw(HyperlinkResult);
    m_link = target;
    m_linkOpen = true;
}

void Writer::closeLink()
{
    if (!m_linkOpen)
        return;
    m_out.raw("}}");
    m_state = m_stateOutsideLink;
    m_linkOpen = false;
    m_link.clear();
}

// Writes the run's characters in [from, to) (paragraph terminators excluded by the caller).
void Writer::writeRunText(const Run& run, qsizetype from, qsizetype to)
{
    const QString target = linkTarget(run.attributes.value(LinkAttributeName));
    if (m_linkOpen && target != m_link)
        closeLink();
    if (!m_linkOpen && !target.isEmpty())
        openLink(target);
    switchTo(charStateFor(run.attributes));

    const bool attachment = run.attributes.contains(AttachmentAttributeName);
    qsizetype i = from;
    while (i < to) {
        qsizetype j = i;
        while (j < to && m_string.at(j).unicode() != AttachmentCharacter)
            ++j;
        // Line separators and the like fall to "\uc0\uN " with everything else outside ASCII.
        m_out.text(QStringView(m_string).mid(i, j - i));
        if (j < to) {
            if (!attachment)
                m_out.unicode(AttachmentCharacter); // attachments themselves are not written
            ++j;
        }
        i = j;
    }
}

// ---------------------------------------------------------------- paragraphs

void Writer::writeParagraphProperties(const Paragraph& p)
{
    const ParagraphStyle& s = p.style;
    m_out.word(Word::Pard);
    for (const TextTab& tab : s.tabStops()) {
        if (tab.alignment == RightTextAlignment)
            m_out.word(Word::Tqr);
        else if (tab.alignment == CenterTextAlignment)
            m_out.word(Word::Tqc);
        m_out.word(Word::Tx, twips(tab.location));
    }
    if (s.headIndent() != 0)
        m_out.word(Word::Li, twips(s.headIndent()));
    if (s.firstLineHeadIndent() != s.headIndent())
        m_out.word(Word::Fi, twips(s.firstLineHeadIndent()) - twips(s.headIndent()));
    if (s.tailIndent() < 0)
        m_out.word(Word::Ri, twips(-s.tailIndent()));
    if (s.paragraphSpacingBefore() != 0)
        m_out.word(Word::Sb, twips(s.paragraphSpacingBefore()));
    if (s.paragraphSpacing() != 0)
        m_out.word(Word::Sa, twips(s.paragraphSpacing()));

    // Line heights: the standard \sl forms first; what they cannot say goes in the explicit words.
    const double multiple = s.lineHeightMultiple(), minimum = s.minimumLineHeight(), maximum = s.maximumLineHeight();
    bool minimumWritten = false, maximumWritten = false;
    if (multiple > 0) {
        m_out.word(Word::Sl, rounded(multiple * 240));
        m_out.word(Word::SlMult, 1);
    } else if (minimum > 0 && maximum == minimum) {
        m_out.word(Word::Sl, -twips(minimum));
        m_out.word(Word::SlMult, 0);
        minimumWritten = maximumWritten = true;
    } else if (minimum > 0) {
        m_out.word(Word::Sl, twips(minimum));
        m_out.word(Word::SlMult, 0);
        minimumWritten = true;
    }
    if (minimum > 0 && !minimumWritten)
        m_out.word(Word::MinLineHeight, twips(minimum));
    if (maximum > 0 && !maximumWritten)
        m_out.word(Word::MaxLineHeight, twips(maximum));
    if (s.lineSpacing() > 0)
        m_out.word(Word::LineSpacing, twips(s.lineSpacing()));

    switch (s.alignment()) {
    case LeftTextAlignment:
        m_out.word(Word::Ql);
        break;
    case RightTextAlignment:
        m_out.word(Word::Qr);
        break;
    case CenterTextAlignment:
        m_out.word(Word::Qc);
        break;
    case JustifiedTextAlignment:
        m_out.word(Word::Qj);
        break;
    default:
        break; // natural: no control
    }
    if (s.headerLevel() > 0)
        m_out.word(Word::OutlineLevel, s.headerLevel() - 1);
    if (p.list > 0) {
        m_out.word(Word::Ls, p.list);
        m_out.word(Word::Ilvl, int(std::min<qsizetype>(s.textLists().size(), 9)) - 1);
    }
    if (!p.tables.isEmpty()) {
        m_out.word(Word::InTbl);
        m_out.word(Word::Itap, int(p.tables.size()));
    }
    m_out.newline();
}

// The row definition: one \cellx per cell of the row, at the right edge of the cell.
void Writer::writeRowDefinition(size_t index, int level, bool nested)
{
    const TextBlock& first = m_paragraphs[index].tables.at(level);
    std::vector<TextBlock> cells;
    for (size_t i = index; i < m_paragraphs.size(); ++i) {
        const Paragraph& p = m_paragraphs[i];
        if (p.tables.size() <= level || !sameRow(p.tables.at(level), first))
            break;
        bool outerSame = true;
        for (int k = 0; k < level; ++k)
            outerSame = outerSame && sameCell(p.tables.at(k), m_paragraphs[index].tables.at(k));
        if (!outerSame)
            break;
        if (cells.empty() || cells.back().startingColumn != p.tables.at(level).startingColumn)
            cells.push_back(p.tables.at(level));
    }
    if (nested)
        m_out.raw(NestedRowStart);
    m_out.word(Word::Trowd);
    m_out.word(Word::TrGaph, CellGapTwips);
    m_out.word(Word::TrLeft, -CellGapTwips);
    const int columns =
        std::max<int>(1, first.table->numberOfColumns > 0 ? first.table->numberOfColumns : int(cells.size()));
    int edge = 0;
    for (const TextBlock& cell : cells) {
        if (cell.backgroundColor.alphaComponent() > 0)
            m_out.word(Word::ClCbPat, m_colors.indexOf(cell.backgroundColor));
        int width = DefaultTableWidthTwips / columns * std::max(1, cell.columnSpan);
        if (cell.contentWidth > 0) {
            width = twips(cell.contentWidth);
            m_out.word(Word::ClWWidth, width);
            m_out.word(Word::ClFtsWidth, 3);
        }
        edge += width;
        m_out.word(Word::CellX, edge);
    }
    if (!nested)
        m_out.newline();
}

void Writer::writeParagraph(size_t index)
{
    const Paragraph& p = m_paragraphs[index];
    const Paragraph* previous = index > 0 ? &m_paragraphs[index - 1] : nullptr;

    // A new row of the outermost table is defined in front of its first paragraph.
    if (!p.tables.isEmpty()
        && (!previous || previous->tables.isEmpty() || !sameRow(previous->tables.front(), p.tables.front()))) {
        closeLink();
        writeRowDefinition(index, 0, false);
    }
    const bool tables = !p.tables.isEmpty() || (previous && !previous->tables.isEmpty());
    if (!previous || tables || !(p.style == previous->style) || p.list != previous->list) {
        closeLink();
        writeParagraphProperties(p);
    }

    qsizetype position = p.start;
    // Marker text at the start of a list item ("\t•\t", or "1.\t" as other programs write it) goes in a
    // group that list-aware readers skip: as body text they would show it beside their own marker.
    if (const qsizetype second = listMarkerEnd(m_string, p); second > 0) {
        while (m_runCursor + 1 < m_runs.size() && m_runs[m_runCursor].end <= position)
            ++m_runCursor;
        const Run& run = m_runs[m_runCursor];
        if (run.end > second && linkTarget(run.attributes.value(LinkAttributeName)).isEmpty()) {
            closeLink();
            switchTo(charStateFor(run.attributes));
            m_out.raw("{");
            m_out.word(Word::ListText);
            writeRunText(run, position, second + 1);
            m_out.raw("}");
            position = second + 1;
        }
    }
    while (position < p.end) {
        while (m_runCursor + 1 < m_runs.size() && m_runs[m_runCursor].end <= position)
            ++m_runCursor;
        if (m_runCursor >= m_runs.size())
            break;
        const Run& run = m_runs[m_runCursor];
        const qsizetype to = std::min(run.end, p.contentEnd);
        if (position < to) {
            writeRunText(run, position, to);
            position = to;
        } else {
            // The terminator: it takes the formatting of its own run.
            if (position < p.end) {
                const QString target = linkTarget(run.attributes.value(LinkAttributeName));
                if (m_linkOpen && target != m_link)
                    closeLink();
                switchTo(charStateFor(run.attributes));
            }
            break;
        }
    }
    writeTerminator(index);
}

void Writer::writeTerminator(size_t index)
{
    const Paragraph& p = m_paragraphs[index];
    if (p.tables.isEmpty()) {
        if (p.end > p.contentEnd)
            m_out.paragraphBreak();
        closeLink();
        return;
    }
    closeLink();
    const Paragraph* next = index + 1 < m_paragraphs.size() ? &m_paragraphs[index + 1] : nullptr;
    const int depth = int(p.tables.size());
    // Cells end from the innermost level outwards; a cell ends where the next paragraph is not in it.
    auto cellContinues = [&](int level) {
        if (!next || next->tables.size() <= level)
            return false;
        for (int k = 0; k <= level; ++k) {
            if (!sameCell(next->tables.at(k), p.tables.at(k)))
                return false;
        }
        return true;
    };
    auto rowContinues = [&](int level) {
        if (!next || next->tables.size() <= level)
            return false;
        for (int k = 0; k < level; ++k) {
            if (!sameCell(next->tables.at(k), p.tables.at(k)))
                return false;
        }
        return sameRow(next->tables.at(level), p.tables.at(level));
    };
    if (cellContinues(depth - 1)) {
        m_out.paragraphBreak();
        return;
    }
    for (int level = depth - 1; level >= 0; --level) {
        if (level < depth - 1 && cellContinues(level))
            break;
        if (level > 0) {
            m_out.word(Word::NestCell);
            if (!rowContinues(level)) {
                // Nested rows are defined after their cells.
                size_t first = index;
                while (first > 0 && m_paragraphs[first - 1].tables.size() > level
                       && sameRow(m_paragraphs[first - 1].tables.at(level), p.tables.at(level)))
                    --first;
                writeRowDefinition(first, level, true);
                m_out.word(Word::NestRow);
                m_out.raw(NestedRowEnd);
            }
        } else {
            m_out.word(Word::Cell);
            if (!rowContinues(0))
                m_out.word(Word::Row);
        }
    }
    m_out.newline();
}

} // namespace

QByteArray RTFFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes)
{
    const qsizetype length = text.length();
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length);
    const qsizetype end = std::clamp<qsizetype>(range.location + std::max<qsizetype>(range.length, 0), start, length);
    Writer writer(text, Range{start, end - start}, documentAttributes);
    return writer.write();
}

} // namespace qly

#include <qlyappkit/platform/html/HTMLWriter.h>

#include <QStringList>
#include <algorithm>
#include <vector>

#include <qlyappkit/platform/html/HTMLStyles_p.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly {

namespace {

const QString XHTMLNamespace = QStringLiteral("http://www.w3.org/1999/xhtml");
const QString ExcludedXML = QStringLiteral("XML");
const QString ExcludedDoctype = QStringLiteral("DOCTYPE");
const QString ExcludedStyle = QStringLiteral("STYLE");
const QString ExcludedSpan = QStringLiteral("SPAN");
const QString ExcludedLink = QStringLiteral("A");
const char* const UntitledTitle = "Untitled"; // the title of a page whose document has none
constexpr char16_t PageBreak = 0x000C;
constexpr int MaxListTextLength = 24; // "\t1.\t" and the like in front of list items
constexpr int MaxHeaderLevel = 6;

struct Options {
    bool xhtml = false;
    bool doctype = true;
    bool styleSheet = true;
    bool spans = true;
    bool links = true;

    static Options from(const QVariantMap& documentAttributes)
    {
        Options o;
        const QVariant excluded = documentAttributes.value(ExcludedElementsDocumentAttribute);
        if (!excluded.isValid())
            return o;
        const QStringList names = excluded.toStringList();
        auto has = [&](const QString& name) { return names.contains(name, Qt::CaseInsensitive); };
        o.xhtml = !has(ExcludedXML);
        o.doctype = !has(ExcludedDoctype);
        o.styleSheet = !has(ExcludedStyle);
        o.spans = !has(ExcludedSpan);
        o.links = !has(ExcludedLink);
        return o;
    }
};

struct Run {
    qsizetype start = 0, end = 0;
    Attributes attributes;
};

struct Paragraph {
    qsizetype start = 0, contentEnd = 0, end = 0;
    ParagraphStyle style;
    QVector<TextBlock> tables; // the blocks that are table cells, outermost first
};

bool sameCell(const TextBlock& a, const TextBlock& b)
{
    return a.table == b.table && a.startingRow == b.startingRow && a.startingColumn == b.startingColumn;
}

struct OpenList {
    TextList list;
    QString tag;
};

class Writer {
public:
    Writer(const AttributedString& text, Range range, const QVariantMap& documentAttributes)
        : m_text(text), m_range(range), m_documentAttributes(documentAttributes),
          m_options(Options::from(documentAttributes)),
          m_lineBreak(m_options.xhtml ? QStringLiteral("<br />") : QStringLiteral("<br>"))
    {
    }

    QByteArray write();

private:
    void collect();
    void writeParagraph(const Paragraph& p);
    void enterTables(const QVector<TextBlock>& tables);
    void openCell(const TextBlock& block);
    void closeTableLevel();
    void enterLists(const QVector<TextList>& lists);
    void closeListsAbove(size_t depth);
    /// Writes [from, to) of the text; false when nothing visible was written.
    bool writeContent(qsizetype from, qsizetype to);
    void closeLink();
    /// The attributes of the run holding index (which must lie in the text).
    const Attributes& attributesAt(qsizetype index);
    /// ' class="x1"' (or ' style="…"' without a style sheet) for the declarations.
    QString styleAttribute(QChar prefix, const QString& declarations);
    QString head() const;

    const AttributedString& m_text;
    Range m_range;
    const QVariantMap& m_documentAttributes;
    Options m_options;
    QString m_lineBreak;

    QString m_string;
    std::vector<Run> m_runs;
    std::vector<Paragraph> m_paragraphs;
    size_t m_runCursor = 0;

    QString m_body;
    html::StyleClasses m_classes;
    std::vector<TextBlock> m_openCells;
    std::vector<OpenList> m_openLists;
    bool m_afterItem = false; // the last thing written in the innermost list is a closed item
    bool m_linkOpen = false;
    QString m_link;
};

QByteArray Writer::write()
{
    collect();
    m_body.reserve(m_string.size() + m_string.size() / 3 + 256);
    for (const Paragraph& p : m_paragraphs)
        writeParagraph(p);
    closeListsAbove(0);
    while (!m_openCells.empty())
        closeTableLevel();
    QString page = head();
    page += QLatin1String("<body>\n");
    page += m_body;
    page += QLatin1String("</body>\n</html>\n");
    return page.toUtf8();
}

void Writer::collect()
{
    m_string = m_text.substring(m_range);
    m_text.enumerateAttributes(m_range, [this](const Attributes& attributes, Range run) {
        m_runs.push_back(Run{run.location - m_range.location, run.end() - m_range.location, attributes});
        return true;
    });
    const qsizetype n = m_string.size();
    const QChar* s = m_string.constData();
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
    qsizetype start = 0;
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
        m_paragraphs.push_back(std::move(p));
        start = i + terminator;
        i = start - 1;
    }
}

QString Writer::head() const
{
    const QString end = m_options.xhtml ? QStringLiteral(" />") : QStringLiteral(">");
    QString head;
    if (m_options.doctype)
        head += QLatin1String("<!DOCTYPE html>\n");
    head += m_options.xhtml ? QStringLiteral("<html xmlns=\"%1\">\n").arg(XHTMLNamespace) : QStringLiteral("<html>\n");
    head += QLatin1String("<head>\n<meta charset=\"UTF-8\"") + end + QLatin1Char('\n');
    const QString author = m_documentAttributes.value(AuthorDocumentAttribute).toString();
    if (!author.isEmpty()) {
        head += QLatin1String("<meta name=\"author\" content=\"");
        html::appendEscapedAttribute(head, author);
        head += QLatin1Char('"') + end + QLatin1Char('\n');
    }
    QString title = m_documentAttributes.value(TitleDocumentAttribute).toString().trimmed();
    if (title.isEmpty())
        title = localized(UntitledTitle);
    head += QLatin1String("<title>");
    html::appendEscapedText(head, title, QStringLiteral(" "));
    head += QLatin1String("</title>\n");
    if (m_options.styleSheet) {
        head += QLatin1String("<style>\n");
        head += m_classes.styleSheet();
        head += QLatin1String("</style>\n");
    }
    head += QLatin1String("</head>\n");
    return head;
}

QString Writer::styleAttribute(QChar prefix, const QString& declarations)
{
    if (!m_options.styleSheet) {
        QString attribute = QStringLiteral(" style=\"");
        html::appendEscapedAttribute(attribute, declarations);
        return attribute + QLatin1Char('"');
    }
    return QStringLiteral(" class=\"%1\"").arg(m_classes.classFor(prefix, declarations));
}

// ---------------------------------------------------------------- blocks

void Writer::writeParagraph(const Paragraph& p)
{
    enterTables(p.tables);
    const QVector<TextList>& lists = p.style.textLists();
    enterLists(lists);

    qsizetype from = p.start;
    if (!lists.isEmpty() && from < p.contentEnd && m_string.at(from) == QLatin1Char('\t')) {
        // The marker text in front of an item: the list element shows its own marker.
        const qsizetype second = m_string.indexOf(QLatin1Char('\t'), from + 1);
        if (second > from && second < p.contentEnd && second - from <= MaxListTextLength)
            from = second + 1;
    }
    // A page break in front of the text starts the paragraph on a new printed page; one after it
    // starts the next paragraph there.
    const QStringView content = QStringView(m_string).mid(p.start, p.contentEnd - p.start);
    const qsizetype breakAt = content.indexOf(QChar(PageBreak));
    const bool breakBefore = breakAt >= 0 && content.left(breakAt).trimmed().isEmpty();
    const bool breakAfter = breakAt >= 0 && !breakBefore;
    const QString font = p.end > p.start ? html::fontDeclarations(attributesAt(std::min(from, p.end - 1))) : QString();
    QString declarations = html::paragraphDeclarations(p.style, font, !lists.isEmpty(), breakBefore, breakAfter);
    QString tag = QStringLiteral("p");
    if (!lists.isEmpty()) {
        tag = QStringLiteral("li");
    } else if (p.style.headerLevel() > 0) {
        tag = QStringLiteral("h%1").arg(std::min(p.style.headerLevel(), MaxHeaderLevel));
        declarations += QLatin1String("; font-weight: normal"); // the text's own fonts say what is bold
    }
    const QString style = styleAttribute(u'p', declarations);
    m_body += QLatin1Char('<') + tag + style + QLatin1Char('>');
    if (!writeContent(from, p.contentEnd))
        m_body += m_lineBreak; // an empty paragraph still takes its line
    m_body += QLatin1String("</") + tag + QLatin1String(">\n");
    m_afterItem = !lists.isEmpty();
}

void Writer::enterTables(const QVector<TextBlock>& tables)
{
    size_t same = 0;
    while (same < m_openCells.size() && same < size_t(tables.size()) && sameCell(m_openCells[same], tables[same]))
        ++same;
    if (same == m_openCells.size() && same == size_t(tables.size()))
        return;
    closeListsAbove(0); // lists live inside the innermost cell
    while (m_openCells.size() > same + 1)
        closeTableLevel();
    if (m_openCells.size() == same + 1) {
        TextBlock& open = m_openCells.back();
        if (same < size_t(tables.size()) && open.table == tables[same].table) {
            m_body += open.startingRow == tables[same].startingRow ? QStringLiteral("</td>\n")
                                                                   : QStringLiteral("</td>\n</tr>\n<tr>\n");
            open = tables[same];
            openCell(open);
            ++same;
        } else {
            closeTableLevel();
        }
    }
    for (size_t level = same; level < size_t(tables.size()); ++level) {
        m_body +=
            QLatin1String("<table") + styleAttribute(u't', html::tableDeclarations()) + QLatin1String(">\n<tr>\n");
        m_openCells.push_back(tables[level]);
        openCell(tables[level]);
    }
}

void Writer::openCell(const TextBlock& block)
{
    m_body += QLatin1String("<td");
    if (block.columnSpan > 1)
        m_body += QStringLiteral(" colspan=\"%1\"").arg(block.columnSpan);
    if (block.rowSpan > 1)
        m_body += QStringLiteral(" rowspan=\"%1\"").arg(block.rowSpan);
    m_body += styleAttribute(u'c', html::cellDeclarations(block)) + QLatin1String(">\n");
}

void Writer::closeTableLevel()
{
    m_body += QLatin1String("</td>\n</tr>\n</table>\n");
    m_openCells.pop_back();
}

void Writer::enterLists(const QVector<TextList>& lists)
{
    size_t same = 0;
    while (same < m_openLists.size() && same < size_t(lists.size()) && m_openLists[same].list == lists[same])
        ++same;
    closeListsAbove(same);
    for (size_t level = same; level < size_t(lists.size()); ++level) {
        // A nested list follows the item it belongs to; where the text has none (a level skipped, or
        // a second list after a nested one), an empty item without marker holds it.
        if (level > 0 && !m_afterItem)
            m_body +=
                QLatin1String("<li") + styleAttribute(u'l', html::emptyItemDeclarations()) + QLatin1String("></li>\n");
        const html::ListElement element = html::listElementFor(lists[int(level)]);
        m_body += QLatin1Char('<') + element.tag;
        if (element.tag == QLatin1String("ol") && element.start != 1)
            m_body += QStringLiteral(" start=\"%1\"").arg(element.start);
        m_body += styleAttribute(u'l', element.declarations) + QLatin1String(">\n");
        m_openLists.push_back(OpenList{lists[int(level)], element.tag});
        m_afterItem = false;
    }
}

void Writer::closeListsAbove(size_t depth)
{
    while (m_openLists.size() > depth) {
        m_body += QLatin1String("</") + m_openLists.back().tag + QLatin1String(">\n");
        m_openLists.pop_back();
        m_afterItem = false;
    }
}

// ---------------------------------------------------------------- runs

bool Writer::writeContent(qsizetype from, qsizetype to)
{
    bool visible = false;
    bool spanOpen = false;
    QString openSpan; // the style attribute of the open span: runs that look alike share it
    QString escaped;
    qsizetype position = from;
    while (position < to) {
        while (m_runCursor + 1 < m_runs.size() && m_runs[m_runCursor].end <= position)
            ++m_runCursor;
        while (m_runCursor > 0 && m_runs[m_runCursor].start > position)
            --m_runCursor;
        if (m_runCursor >= m_runs.size())
            break;
        const Run& run = m_runs[m_runCursor];
        const qsizetype end = std::min(run.end, to);
        escaped.clear();
        html::appendEscapedText(escaped, QStringView(m_string).mid(position, end - position), m_lineBreak);
        position = end;
        if (escaped.isEmpty())
            continue; // nothing to show: no empty span or link

        const std::optional<QString> href =
            m_options.links ? html::linkHref(run.attributes.value(LinkAttributeName)) : std::nullopt;
        const bool linkChanges = m_linkOpen ? (!href || *href != m_link) : href.has_value();
        const QString span =
            m_options.spans ? styleAttribute(u's', html::characterDeclarations(run.attributes)) : QString();
        if (spanOpen && (linkChanges || span != openSpan)) {
            m_body += QLatin1String("</span>");
            spanOpen = false;
        }
        if (linkChanges) {
            closeLink();
            if (href) {
                m_body += QLatin1String("<a href=\"");
                html::appendEscapedAttribute(m_body, *href);
                m_body += QLatin1String("\">");
                m_link = *href;
                m_linkOpen = true;
            }
        }
        if (m_options.spans && !spanOpen) {
            m_body += QLatin1String("<span") + span + QLatin1Char('>');
            openSpan = span;
            spanOpen = true;
        }
        m_body += escaped;
        visible = true;
    }
    if (spanOpen)
        m_body += QLatin1String("</span>");
    closeLink();
    return visible;
}

const Attributes& Writer::attributesAt(qsizetype index)
{
    static const Attributes none;
    if (m_runs.empty())
        return none;
    size_t i = std::min(m_runCursor, m_runs.size() - 1);
    while (i + 1 < m_runs.size() && m_runs[i].end <= index)
        ++i;
    while (i > 0 && m_runs[i].start > index)
        --i;
    return m_runs[i].attributes;
}

void Writer::closeLink()
{
    if (!m_linkOpen)
        return;
    m_body += QLatin1String("</a>");
    m_linkOpen = false;
    m_link.clear();
}

} // namespace

QByteArray HTMLFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes)
{
    const qsizetype length = text.length();
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length);
    const qsizetype end = std::clamp<qsizetype>(range.location + std::max<qsizetype>(range.length, 0), start, length);
    Writer writer(text, Range{start, end - start}, documentAttributes);
    return writer.write();
}

} // namespace qly

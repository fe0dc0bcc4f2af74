#pragma once
// Asks the office suite what a document holds: it converts the files (RTF, DOCX, ...) to flat ODF in
// one call, and the census counts the notes, comments and pictures of each flat ODF file and takes its
// body text. Tests compare that with what our own readers make of the same files.
#include <pugixml.hpp>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstring>
#include <functional>
#include <optional>

#include "support/OfficeSuite.h"

namespace qly::testsupport {

/// One comment (office:annotation): its text, author (dc:creator), date (dc:date as written) and the
/// body text between it and the office:annotation-end of the same name (empty when it has no end).
struct CensusComment {
    QString text;
    QString author;
    QString date;
    QString rangeText;
};

/// One picture (a draw:frame holding a draw:image): its displayed size in points and the image's
/// format, "PNG" or "JPEG" (another upper-case name such as "GIF" or "SVG", empty when unknown).
struct CensusPicture {
    double width = 0;
    double height = 0;
    QString format;
};

/// What one document holds, in document order. Note and comment texts are their paragraphs joined by
/// "\n". The body text is every body paragraph (headings, list items, table cells) followed by "\n",
/// without notes and comments; a picture anchored as a character stands as U+FFFC, other pictures and
/// the contents of text frames are left out.
struct DocumentCensus {
    QString source;
    QString error; // empty when the document was read
    QStringList footnotes;
    QStringList endnotes;
    QList<CensusComment> comments;
    QList<CensusPicture> pictures;
    QString bodyText;
};

/// An ODF length ("1.5in", "2.54cm", "72pt", "10mm", "1pc", "96px") in points; nullopt when it is not one.
inline std::optional<double> odfLengthInPoints(QStringView length)
{
    length = length.trimmed();
    qsizetype numberEnd = 0;
    while (numberEnd < length.size()
           && (length[numberEnd].isDigit() || length[numberEnd] == u'.' || length[numberEnd] == u'-'
               || length[numberEnd] == u'+'))
        ++numberEnd;
    bool ok = false;
    const double number = length.left(numberEnd).toDouble(&ok);
    if (!ok)
        return std::nullopt;
    static const QHash<QString, double> pointsPerUnit{
        {QStringLiteral("pt"), 1.0},         {QStringLiteral("in"), 72.0}, {QStringLiteral("cm"), 72.0 / 2.54},
        {QStringLiteral("mm"), 72.0 / 25.4}, {QStringLiteral("pc"), 12.0}, {QStringLiteral("px"), 0.75},
    };
    const auto unit = pointsPerUnit.constFind(length.mid(numberEnd).trimmed().toString().toLower());
    if (unit == pointsPerUnit.constEnd())
        return std::nullopt;
    return number * unit.value();
}

/// The image format of the bytes by their signature: "PNG", "JPEG", "GIF", "BMP", "SVG"; empty otherwise.
inline QString imageFormatOf(const QByteArray& bytes)
{
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return QStringLiteral("PNG");
    if (bytes.startsWith("\xff\xd8\xff"))
        return QStringLiteral("JPEG");
    if (bytes.startsWith("GIF8"))
        return QStringLiteral("GIF");
    if (bytes.startsWith("BM"))
        return QStringLiteral("BMP");
    if (bytes.left(512).contains("<svg"))
        return QStringLiteral("SVG");
    return QString();
}

namespace census_detail {

inline bool named(pugi::xml_node node, const char* name) { return std::strcmp(node.name(), name) == 0; }

/// Visits the subtree below root in document order without recursion (flat ODF from outside may
/// nest deeply). enter says whether to descend into an element; leave follows every entered node.
inline void walk(pugi::xml_node root, const std::function<bool(pugi::xml_node)>& enter,
                 const std::function<void(pugi::xml_node)>& leave)
{
    pugi::xml_node node = root.first_child();
    while (node) {
        if (enter(node) && node.first_child()) {
            node = node.first_child();
            continue;
        }
        leave(node);
        while (!node.next_sibling()) {
            node = node.parent();
            if (!node || node == root)
                return;
            leave(node);
        }
        node = node.next_sibling();
    }
}

/// Collects paragraph text with ODF's white-space rules: runs of spaces, tabs and line ends in
/// character data count as one space and are dropped at a paragraph's start; text:s, text:tab
/// and text:line-break are kept as they are.
class TextCollector {
public:
    QString text;

    void beginParagraph()
    {
        if (m_depth++ == 0)
            m_afterSpace = true;
    }
    void endParagraph()
    {
        if (m_depth > 0 && --m_depth == 0)
            text.append(QLatin1Char('\n'));
    }
    void addCharacterData(const char* data)
    {
        if (m_depth == 0)
            return;
        for (const QChar c : QString::fromUtf8(data)) {
            if (c == u' ' || c == u'\t' || c == u'\n' || c == u'\r') {
                if (!m_afterSpace)
                    text.append(QLatin1Char(' '));
                m_afterSpace = true;
            } else {
                text.append(c);
                m_afterSpace = false;
            }
        }
    }
    void addLiteral(const QString& s)
    {
        if (m_depth == 0)
            return;
        text.append(s);
        m_afterSpace = false;
    }

private:
    int m_depth = 0;
    bool m_afterSpace = true;
};

inline bool isParagraph(pugi::xml_node node) { return named(node, "text:p") || named(node, "text:h"); }

/// Handles the elements every text shares (paragraphs, spaces, tabs, breaks); false for the rest.
inline bool enterCommon(TextCollector& collector, pugi::xml_node node, bool& descend)
{
    descend = false;
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
        collector.addCharacterData(node.value());
        return true;
    }
    if (node.type() != pugi::node_element)
        return true;
    if (isParagraph(node)) {
        collector.beginParagraph();
        descend = true;
        return true;
    }
    if (named(node, "text:s")) {
        // A count from outside is bounded, so that a broken file cannot ask for gigabytes of spaces.
        collector.addLiteral(QString(qBound(1, node.attribute("text:c").as_int(1), 4096), QLatin1Char(' ')));
        return true;
    }
    if (named(node, "text:tab")) {
        collector.addLiteral(QStringLiteral("\t"));
        return true;
    }
    if (named(node, "text:line-break")) {
        collector.addLiteral(QStringLiteral("\n"));
        return true;
    }
    return false;
}

/// The paragraphs below node joined by "\n", without notes, comments, frames, or a comment's
/// author and date.
inline QString plainText(pugi::xml_node node)
{
    TextCollector collector;
    walk(
        node,
        [&](pugi::xml_node n) {
            bool descend = false;
            if (enterCommon(collector, n, descend))
                return descend;
            return !(named(n, "text:note") || named(n, "office:annotation") || named(n, "draw:frame")
                     || named(n, "dc:creator") || named(n, "dc:date") || named(n, "meta:date-string"));
        },
        [&](pugi::xml_node n) {
            if (isParagraph(n))
                collector.endParagraph();
        });
    if (collector.text.endsWith(QLatin1Char('\n')))
        collector.text.chop(1);
    return collector.text;
}

inline CensusPicture picture(pugi::xml_node frame, pugi::xml_node image)
{
    CensusPicture result;
    result.width = odfLengthInPoints(QString::fromUtf8(frame.attribute("svg:width").value())).value_or(0);
    result.height = odfLengthInPoints(QString::fromUtf8(frame.attribute("svg:height").value())).value_or(0);
    if (const pugi::xml_node data = image.child("office:binary-data")) {
        result.format = imageFormatOf(QByteArray::fromBase64(QByteArray(data.child_value())));
    } else {
        const QString suffix = QFileInfo(QString::fromUtf8(image.attribute("xlink:href").value())).suffix().toUpper();
        result.format = suffix == QLatin1String("JPG") ? QStringLiteral("JPEG") : suffix;
    }
    return result;
}

} // namespace census_detail

/// The census of a flat ODF text document given as its XML.
inline DocumentCensus censusOfFlatODFData(const QByteArray& xml, const QString& source = QString())
{
    using namespace census_detail;
    DocumentCensus census;
    census.source = source;
    pugi::xml_document document;
    const pugi::xml_parse_result parsed =
        document.load_buffer(xml.constData(), size_t(xml.size()), pugi::parse_default | pugi::parse_ws_pcdata);
    if (!parsed) {
        census.error = QStringLiteral("not XML: %1 at offset %2")
                           .arg(QString::fromUtf8(parsed.description()))
                           .arg(qint64(parsed.offset));
        return census;
    }
    const pugi::xml_node text = document.child("office:document").child("office:body").child("office:text");
    if (!text) {
        census.error = QStringLiteral("no office:document/office:body/office:text");
        return census;
    }

    TextCollector body;
    QHash<QString, qsizetype> openRanges; // comment name -> index, while its range is open
    QList<qsizetype> rangeStarts;
    walk(
        text,
        [&](pugi::xml_node node) {
            bool descend = false;
            if (enterCommon(body, node, descend))
                return descend;
            if (named(node, "text:note")) {
                const QString noteText = plainText(node.child("text:note-body"));
                if (std::strcmp(node.attribute("text:note-class").value(), "endnote") == 0)
                    census.endnotes.append(noteText);
                else
                    census.footnotes.append(noteText);
                return false;
            }
            if (named(node, "office:annotation")) {
                census.comments.append({plainText(node), QString::fromUtf8(node.child_value("dc:creator")),
                                        QString::fromUtf8(node.child_value("dc:date")), QString()});
                rangeStarts.append(body.text.size());
                const QString name = QString::fromUtf8(node.attribute("office:name").value());
                if (!name.isEmpty())
                    openRanges.insert(name, census.comments.size() - 1);
                return false;
            }
            if (named(node, "office:annotation-end")) {
                const auto open = openRanges.constFind(QString::fromUtf8(node.attribute("office:name").value()));
                if (open != openRanges.constEnd()) {
                    census.comments[open.value()].rangeText = body.text.mid(rangeStarts[open.value()]);
                    openRanges.erase(open);
                }
                return false;
            }
            if (named(node, "draw:frame")) {
                if (const pugi::xml_node image = node.child("draw:image")) {
                    census.pictures.append(picture(node, image));
                    if (std::strcmp(node.attribute("text:anchor-type").value(), "as-char") == 0)
                        body.addLiteral(QString(QChar(0xFFFC)));
                }
                return false;
            }
            // Declarations and change records hold no body text.
            return !(named(node, "text:sequence-decls") || named(node, "text:variable-decls")
                     || named(node, "text:user-field-decls") || named(node, "text:tracked-changes")
                     || named(node, "office:forms"));
        },
        [&](pugi::xml_node node) {
            if (isParagraph(node))
                body.endParagraph();
        });
    census.bodyText = body.text;
    return census;
}

/// The census of a flat ODF text document file.
inline DocumentCensus censusOfFlatODF(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        DocumentCensus census;
        census.source = path;
        census.error = QStringLiteral("cannot read %1").arg(path);
        return census;
    }
    return censusOfFlatODFData(file.readAll(), path);
}

/// The census of every file as the office suite reads it, in the order given, with one call of the
/// suite. A file it could not convert has its error set; error (when given) says why none could be
/// taken, in which case the list is empty.
inline QList<DocumentCensus> officeCensus(const QStringList& files, QString* error = nullptr)
{
    auto fail = [&](const QString& why) {
        if (error)
            *error = why;
        return QList<DocumentCensus>();
    };
    if (officeSuite().isEmpty())
        return fail(QStringLiteral("soffice is missing: run scripts/bootstrap"));
    QTemporaryDir folder;
    if (!folder.isValid() || !QDir(folder.path()).mkdir(QStringLiteral("in")))
        return fail(QStringLiteral("no temporary folder"));

    // Copies with numbered names, so that files of the same name from different folders, or in
    // different formats, do not overwrite each other's output.
    QStringList copies;
    for (qsizetype i = 0; i < files.size(); ++i) {
        const QFileInfo info(files[i]);
        const QString copy = folder.filePath(QStringLiteral("in/%1-%2").arg(i).arg(info.fileName()));
        if (!QFile::copy(files[i], copy))
            return fail(QStringLiteral("cannot read %1").arg(files[i]));
        copies.append(copy);
    }
    // The outputs are checked one by one below, so a partial failure still gives the others.
    convertWithOfficeSuite(folder.path(), copies, QStringLiteral("fodt"));

    QList<DocumentCensus> result;
    for (qsizetype i = 0; i < files.size(); ++i) {
        const QString output = folder.filePath(QFileInfo(copies[i]).completeBaseName() + QStringLiteral(".fodt"));
        DocumentCensus census;
        if (QFileInfo::exists(output)) {
            census = censusOfFlatODF(output);
        } else {
            census.error = QStringLiteral("the office suite did not convert %1").arg(files[i]);
        }
        census.source = files[i];
        result.append(census);
    }
    if (error)
        error->clear();
    return result;
}

} // namespace qly::testsupport

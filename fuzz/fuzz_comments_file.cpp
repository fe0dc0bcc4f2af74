// Fuzz target for the comments side file: the input is stored as a file and read with
// commentsFromURL, and parsed in memory for commentsInfoFromXMLRepresentation. Neither may crash,
// hang or recurse on the document's depth. The file reader gives comments exactly when the input is
// XML rooted in "Comments", and then the same comments as the in-memory reader. The comments read are
// then written as writeCommentsToURL writes them and read again: every one comes back under its ID
// (less what XML cannot hold) with the same footnote flag, number (when positive), collapsed flag,
// colour (in its written form) and text (after the paragraph breaks RTF makes line feeds).
#include "FuzzSupport.h"

#include <QFile>
#include <sstream>

#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/xml/XMLValues.h>
#include <qlyappkit/platform/xml/XMLElement.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

using namespace qly;

namespace {

const QString& scratchPath()
{
    static QTemporaryDir dir;
    static const QString path = dir.filePath(QStringLiteral("comments.xml"));
    return path;
}

void writeFile(const QString& path, const std::uint8_t* data, std::size_t size)
{
    QFile file(path);
    QLY_FUZZ_CHECK(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QLY_FUZZ_CHECK(file.write(reinterpret_cast<const char*>(data), qint64(size)) == qint64(size));
}

void checkSameComment(const XQComment& a, const XQComment& b)
{
    QLY_FUZZ_CHECK(a.uniqueID() == b.uniqueID());
    QLY_FUZZ_CHECK(a.isFootnote() == b.isFootnote());
    QLY_FUZZ_CHECK(a.footnoteNumber() == b.footnoteNumber());
    QLY_FUZZ_CHECK(a.isCollapsed() == b.isCollapsed());
    QLY_FUZZ_CHECK(a.color() == b.color());
    QLY_FUZZ_CHECK(a.text().string() == b.text().string()); // tables read twice are two tables
}

// Writes the comments of a text holding each on a character of its own, reads them back and compares.
void checkRoundTrip(const XQCommentsByID& comments)
{
    AttributedString text;
    QHash<QString, int> written; // IDs as XML holds them, and how many comments share each
    for (const XQCommentPtr& comment : comments) {
        text.append(QStringLiteral("x"), {{XQCommentAttributeName, variantFromComment(comment)}});
        text.append(QStringLiteral(" "), {});
        ++written[xmlValidString(comment->uniqueID())];
    }
    // Saved as writeCommentsToURL saves it (indented), in memory: committing a file to disk for every
    // input would slow the run tenfold.
    const std::unique_ptr<pugi::xml_document> document = commentsXMLRepresentation(text);
    QLY_FUZZ_CHECK(bool(document) == !comments.isEmpty());
    if (!document)
        return;
    std::ostringstream saved;
    document->save(saved, "    ", pugi::format_indent);
    pugi::xml_document reread;
    QLY_FUZZ_CHECK(reread.load_string(saved.str().c_str(), pugi::parse_default | pugi::parse_ws_pcdata));
    QLY_FUZZ_CHECK(fromPugiString(reread.document_element().name()) == XQCommentsXMLRootElementName);
    const XQCommentsByID back = commentsInfoFromXMLRepresentation(reread.document_element());
    static const int unnumbered = XQComment::create()->footnoteNumber();
    for (const XQCommentPtr& comment : comments) {
        const QString id = xmlValidString(comment->uniqueID());
        if (written.value(id) != 1)
            continue; // IDs that differed only in characters XML cannot hold
        const XQCommentPtr read = back.value(id);
        QLY_FUZZ_CHECK(read);
        QLY_FUZZ_CHECK(read->isFootnote() == comment->isFootnote());
        QLY_FUZZ_CHECK(read->footnoteNumber()
                       == (comment->footnoteNumber() > 0 ? comment->footnoteNumber() : unnumbered));
        QLY_FUZZ_CHECK(read->isCollapsed() == comment->isCollapsed());
        if (comment->color())
            QLY_FUZZ_CHECK(XQXMLStringValueFromColor(read->color()) == XQXMLStringValueFromColor(comment->color()));
        QLY_FUZZ_CHECK(read->text().string() == fuzz::withParagraphBreaksAsLineFeeds(comment->text().string()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    const QString& path = scratchPath();
    writeFile(path, data, size);
    const std::optional<XQCommentsByID> fromFile = commentsFromURL(path);

    // The same bytes parsed in memory as the file reader parses them (text between elements kept).
    pugi::xml_document document;
    const bool parsed = document.load_buffer(data, size, pugi::parse_default | pugi::parse_ws_pcdata);
    const pugi::xml_node root = document.document_element();
    QLY_FUZZ_CHECK(fromFile.has_value()
                   == (parsed && root && fromPugiString(root.name()) == XQCommentsXMLRootElementName));
    if (!parsed || !root)
        return 0;
    // Any element's children read as comments, whatever its name.
    const XQCommentsByID inMemory = commentsInfoFromXMLRepresentation(root);
    for (auto it = inMemory.begin(); it != inMemory.end(); ++it) {
        QLY_FUZZ_CHECK(it.value() && it.value()->uniqueID() == it.key());
        QLY_FUZZ_CHECK(it.value()->text().checkInvariants());
    }
    if (!fromFile)
        return 0;
    QLY_FUZZ_CHECK(fromFile->size() == inMemory.size());
    for (auto it = fromFile->begin(); it != fromFile->end(); ++it) {
        const XQCommentPtr other = inMemory.value(it.key());
        QLY_FUZZ_CHECK(other);
        checkSameComment(*it.value(), *other);
    }
    checkRoundTrip(*fromFile);
    return 0;
}

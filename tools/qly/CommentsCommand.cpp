// qly comments: lists the comments of a comments side file in file order.
#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/xml/XMLValues.h>
#include <qlyappkit/platform/xml/XMLFile.h>

#include <QFileInfo>
#include <QRegularExpression>

#include "Commands.h"

namespace qly::tool {

namespace {

QString yesNo(bool value) { return value ? QStringLiteral("yes") : QStringLiteral("no"); }

QString oneLine(QString text)
{
    static const QRegularExpression breaks(QStringLiteral("\r\n|[\r\n\u2028\u2029\u0085]"));
    return text.replace(breaks, QStringLiteral("\\n"));
}

} // namespace

int runComments(const QStringList& args)
{
    if (args.size() != 1) {
        printError(QStringLiteral("comments needs exactly one file"));
        return 2;
    }
    const QString path = args.first();
    if (!QFileInfo(path).isFile()) {
        printError(QStringLiteral("%1: no such file").arg(path));
        return 1;
    }
    const std::optional<XQCommentsByID> comments = commentsFromURL(path);
    if (!comments) {
        printError(QStringLiteral("%1: not a comments file").arg(path));
        return 1;
    }
    // The map has no order; the file's own order comes from its elements.
    pugi::xml_document document;
    loadXMLDocument(path, document, true);
    const QByteArray commentName = XQCommentsXMLCommentElementName.toUtf8();
    const QByteArray idName = XQCommentsXMLIDAttributeName.toUtf8();
    for (pugi::xml_node child : document.document_element().children(commentName.constData())) {
        const QString id = QString::fromUtf8(child.attribute(idName.constData()).value());
        const XQCommentPtr comment = comments->value(id);
        if (!comment)
            continue;
        printOut(QStringLiteral("%1\t%2\t%3\t%4\t%5\t%6\n")
                     .arg(comment->uniqueID(), yesNo(comment->isFootnote()))
                     .arg(comment->footnoteNumber())
                     .arg(yesNo(comment->isCollapsed()), XQXMLStringValueFromColor(comment->color()),
                          oneLine(comment->string())));
    }
    return 0;
}

} // namespace qly::tool

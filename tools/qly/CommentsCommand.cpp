// qly comments: lists the comments of a comments side file in file order.
#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/xml/XMLValues.h>

#include "CommandLine.h"
#include "Commands.h"

namespace qly::tool {

namespace {

QString yesNo(bool value) { return value ? QStringLiteral("yes") : QStringLiteral("no"); }

} // namespace

int runComments(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("comments"), QStringLiteral("FILE"),
        QStringLiteral("Lists the comments of a comments side file (\"-\" reads standard input), one per\n"
                       "line in file order: ID<TAB>footnote<TAB>number<TAB>collapsed<TAB>colour<TAB>text."));
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;
    const QString path = line.arguments().constFirst();
    QByteArray bytes;
    if (!readInput(path, bytes))
        return ExitFailure;
    const std::optional<std::vector<XQCommentPtr>> comments = commentListFromXMLData(bytes);
    if (!comments) {
        printError(QStringLiteral("%1: not a comments file").arg(path));
        return ExitFailure;
    }
    for (const XQCommentPtr& comment : *comments) {
        printOut(QStringLiteral("%1\t%2\t%3\t%4\t%5\t%6\n")
                     .arg(comment->uniqueID(), yesNo(comment->isFootnote()))
                     .arg(comment->footnoteNumber())
                     .arg(yesNo(comment->isCollapsed()), XQXMLStringValueFromColor(comment->color()),
                          oneLine(comment->string())));
    }
    return ExitSuccess;
}

} // namespace qly::tool

// qly screenplay: the elements of a plain-text screenplay, one per line.
#include <qlyappkit/formats/screenplay/ScreenplayLines.h>

#include "CommandLine.h"
#include "Commands.h"
#include "convert/ConvertFormats.h"

namespace qly::tool {

int runScreenplay(const QStringList& args)
{
    CommandLine line(QStringLiteral("screenplay"), QStringLiteral("FILE"),
                     QStringLiteral("Prints the elements of a plain-text screenplay (UTF-8), one per line:\n"
                                    "TYPE<TAB>text, TYPE one of SceneHeading, Action, Character, Parenthetical,\n"
                                    "Dialogue, Transition, Shot. Hard-wrapped lines of one element are joined."));
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;
    QByteArray bytes;
    if (!readInput(line.arguments().constFirst(), bytes))
        return ExitFailure;
    QString out;
    for (const QVariantMap& record : screenplayLinesAndElementTypesFromString(textFromUTF8(bytes))) {
        out += record.value(XQScreenplayTypeKey).toString() + u'\t'
            + oneLine(record.value(XQScreenplayStringKey).toString()) + u'\n';
    }
    printOut(out);
    return ExitSuccess;
}

} // namespace qly::tool

// qly notes: the notes held by the tags of a text, one line per note in text order.
#include <qlyappkit/interchange/export/Documents.h>
#include <qlyappkit/text/notes/NoteRuns.h>
#include <qlyappkit/text/notes/NoteTags.h>

#include "CommandLine.h"
#include "Commands.h"

namespace qly::tool {

namespace {

QString kindName(InlineNoteKind kind)
{
    switch (kind) {
    case InlineNoteKind::Annotation:
        return QStringLiteral("annotation");
    case InlineNoteKind::Footnote:
        return QStringLiteral("footnote");
    case InlineNoteKind::PreserveFormatting:
        break;
    }
    return QStringLiteral("preserve");
}

} // namespace

int runNotes(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("notes"), QStringLiteral("FILE"),
        QStringLiteral("Lists the notes tagged in a UTF-8 text (\"-\" reads standard input), one per line\n"
                       "in text order: annotation|footnote|preserve<TAB>start<TAB>length<TAB>text\n"
                       "(UTF-16 units of the text without its tags; line breaks as \\n)."));
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;
    QByteArray bytes;
    if (!readInput(line.arguments().constFirst(), bytes))
        return ExitFailure;
    const AttributedString text = attributedStringByConvertingTagsToAttributes(
        attributedStringFromDocumentData(bytes, DocumentFormat::PlainText).value_or(AttributedString()));
    QString out;
    for (const InlineNoteRun& run : inlineNoteRuns(text)) {
        out += QStringLiteral("%1\t%2\t%3\t%4\n")
                   .arg(kindName(run.kind))
                   .arg(run.range.location)
                   .arg(run.range.length)
                   .arg(oneLine(text.substring(run.range)));
    }
    printOut(out);
    return ExitSuccess;
}

} // namespace qly::tool

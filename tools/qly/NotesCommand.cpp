// qly notes: the notes held by the tags of a text, one line per note in text order.
#include <QFileInfo>
#include <algorithm>
#include <vector>

#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/notes/NoteTags.h>

#include "Commands.h"

namespace qly::tool {

namespace {

struct NoteLine {
    Range range;
    int kindOrder; // annotation, footnote, preserve: the order of notes that start together
    QString kind;
};

// Line breaks as the two characters "\n", so that every note stays on one output line.
QString oneLine(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'\r' && i + 1 < text.size() && text.at(i + 1) == u'\n')
            continue; // CR LF is one break
        if (c == u'\n' || c == u'\r' || c == QChar(0x2028) || c == QChar(0x2029))
            out += QStringLiteral("\\n");
        else
            out += c;
    }
    return out;
}

} // namespace

int runNotes(const QStringList& args)
{
    if (args.size() != 1) {
        printError(QStringLiteral("notes needs exactly one file"));
        return 2;
    }
    QString source, message;
    if (!readTextFile(args.first(), source, message)) {
        printError(message);
        return 1;
    }
    const AttributedString text = attributedStringByConvertingTagsToAttributes(AttributedString(source));

    const struct {
        const QString& attribute;
        const char* kind;
    } kinds[] = {{XQAnnotationAttributeName, "annotation"},
                 {XQFootnoteAttributeName, "footnote"},
                 {XQPreserveFormattingAttributeName, "preserve"}};
    std::vector<NoteLine> lines;
    for (int k = 0; k < 3; ++k) {
        text.enumerateAttribute(kinds[k].attribute, Range{0, text.length()}, [&](const QVariant& value, Range range) {
            if (value.isValid())
                lines.push_back(NoteLine{range, k, QLatin1String(kinds[k].kind)});
            return true;
        });
    }
    std::stable_sort(lines.begin(), lines.end(), [](const NoteLine& a, const NoteLine& b) {
        return a.range.location != b.range.location ? a.range.location < b.range.location : a.kindOrder < b.kindOrder;
    });
    QString out;
    for (const NoteLine& line : lines) {
        out += QStringLiteral("%1\t%2\t%3\t%4\n")
                   .arg(line.kind)
                   .arg(line.range.location)
                   .arg(line.range.length)
                   .arg(oneLine(text.substring(line.range)));
    }
    printOut(out);
    return 0;
}

} // namespace qly::tool

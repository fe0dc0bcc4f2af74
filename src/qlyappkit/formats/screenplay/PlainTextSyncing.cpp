#include <qlyappkit/formats/screenplay/PlainTextSyncing.h>

namespace qly {

namespace {

const QString LineSeparator = QStringLiteral("\n");
const QString SpaceSeparator = QStringLiteral(" ");
const QString BlankLineSeparator = QStringLiteral("\n\n");

bool isLineBreak(QChar c)
{
    const char16_t u = c.unicode();
    return u == u'\n' || u == u'\r' || u == 0x2028 || u == 0x2029;
}

// A line of spaces is not empty: only lines with no character at all before their break are dropped.
QString joinedNonEmptyLines(const QString& string, const QString& separator)
{
    QString result;
    result.reserve(string.size());
    const qsizetype n = string.size();
    qsizetype start = 0;
    bool first = true;
    while (start < n) {
        qsizetype end = start;
        while (end < n && !isLineBreak(string.at(end)))
            ++end;
        if (end > start) {
            if (!first)
                result += separator;
            result += QStringView(string).mid(start, end - start);
            first = false;
        }
        qsizetype next = end + 1;
        if (end < n && string.at(end) == u'\r' && next < n && string.at(next) == u'\n')
            ++next;
        start = next;
    }
    return result;
}

} // namespace

QString stringByRemovingExtraNewlines(const QString& string) { return joinedNonEmptyLines(string, LineSeparator); }

QString stringByReplacingNewlinesWithSpaces(const QString& string)
{
    return joinedNonEmptyLines(string, SpaceSeparator);
}

QString stringByInsertingExtraNewlines(const QString& string)
{
    return joinedNonEmptyLines(string, BlankLineSeparator);
}

} // namespace qly

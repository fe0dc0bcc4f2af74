#include <qlyappkit/formats/outline/TitleOrdering.h>

namespace qly {

namespace {

bool isAsciiDigit(QChar c) { return c >= u'0' && c <= u'9'; }

// The code point at i (a surrogate pair read as one), lower-cased when asked; i moves past it.
char32_t nextCodePoint(QStringView text, qsizetype& i, bool lower)
{
    char32_t c = text[i].unicode();
    ++i;
    if (QChar::isHighSurrogate(c) && i < text.size() && text[i].isLowSurrogate()) {
        c = QChar::surrogateToUcs4(char16_t(c), text[i].unicode());
        ++i;
    }
    return lower ? QChar::toLower(c) : c;
}

// Compares the digit runs starting at i and j by value and moves both past their runs.
int compareDigitRuns(QStringView a, qsizetype& i, QStringView b, qsizetype& j)
{
    while (i < a.size() && a[i] == u'0' && i + 1 < a.size() && isAsciiDigit(a[i + 1]))
        ++i;
    while (j < b.size() && b[j] == u'0' && j + 1 < b.size() && isAsciiDigit(b[j + 1]))
        ++j;
    qsizetype endA = i, endB = j;
    while (endA < a.size() && isAsciiDigit(a[endA]))
        ++endA;
    while (endB < b.size() && isAsciiDigit(b[endB]))
        ++endB;
    int result = 0;
    if (endA - i != endB - j) {
        result = endA - i < endB - j ? -1 : 1; // more significant digits: larger
    } else {
        for (qsizetype k = 0; k < endA - i && result == 0; ++k) {
            if (a[i + k] != b[j + k])
                result = a[i + k] < b[j + k] ? -1 : 1;
        }
    }
    i = endA;
    j = endB;
    return result;
}

} // namespace

ComparisonResult compareTitlesNumerically(QStringView a, QStringView b, bool caseInsensitive)
{
    qsizetype i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        char16_t ua = a[i].unicode(), ub = b[j].unicode();
        if (isAsciiDigit(ua) && isAsciiDigit(ub)) {
            if (const int result = compareDigitRuns(a, i, b, j))
                return result < 0 ? OrderedAscending : OrderedDescending;
            continue;
        }
        if (ua < 0x80 && ub < 0x80) { // the common case, without a case table
            if (caseInsensitive) {
                ua = ua >= u'A' && ua <= u'Z' ? char16_t(ua + (u'a' - u'A')) : ua;
                ub = ub >= u'A' && ub <= u'Z' ? char16_t(ub + (u'a' - u'A')) : ub;
            }
            if (ua != ub)
                return ua < ub ? OrderedAscending : OrderedDescending;
            ++i;
            ++j;
            continue;
        }
        const char32_t ca = nextCodePoint(a, i, caseInsensitive);
        const char32_t cb = nextCodePoint(b, j, caseInsensitive);
        if (ca != cb) {
            // Order by UTF-16 code unit, as the platform does: a code point above the BMP sorts by its
            // high surrogate.
            const auto unit = [](char32_t c) { return c > 0xFFFF ? char32_t(QChar::highSurrogate(c)) : c; };
            const char32_t ua = unit(ca), ub = unit(cb);
            if (ua != ub)
                return ua < ub ? OrderedAscending : OrderedDescending;
            return ca < cb ? OrderedAscending : OrderedDescending;
        }
    }
    if (i < a.size())
        return OrderedDescending;
    if (j < b.size())
        return OrderedAscending;
    return OrderedSame;
}

} // namespace qly

#include <qlyappkit/pagelayout/XQPagePlaceholders.h>

#include <qlyappkit/interchange/rtf/RTFHeadersFooters.h>
#include <qlyappkit/platform/strings/StringSearch.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/text/editing/AttributedStringEditing.h>
#include <qlyappkit/text/notes/FootnoteNumbering.h>

namespace qly {

int XQPrintedPageNumber(int page, bool countsFirstPages, int firstPageForRegularHeaderAndFooter)
{
    return countsFirstPages ? page : page + 1 - firstPageForRegularHeaderAndFooter;
}

AttributedString XQAttributedStringBySubstitutingPagePlaceholders(const AttributedString& text, int page, int pageCount,
                                                                  bool countsFirstPages,
                                                                  int firstPageForRegularHeaderAndFooter)
{
    if (text.length() == 0 || !text.string().contains(QLatin1Char('<')))
        return text;
    const int n = XQPrintedPageNumber(page, countsFirstPages, firstPageForRegularHeaderAndFooter);
    const QString number = n >= 1 ? QString::asprintf("%i", n) : QString();
    const QString count = QString::asprintf("%i", n - page + pageCount);
    const int romanNumber = n < 1 ? n + firstPageForRegularHeaderAndFooter - 1 : n;
    const QString roman = romanNumeralsFromInt(romanNumber);

    MutableAttributedString copy(text);
    const auto replace = [&copy](const QString& placeholder, const QString& value, unsigned options) {
        replaceUnescapedOccurrencesOfString(copy, placeholder, value, options, Range{0, copy.length()}, false);
    };
    replace(XQPageNumberPlaceholder, number, CaseInsensitiveSearch);
    replace(XQPageCountPlaceholder, count, CaseInsensitiveSearch);
    // The upper-case form first, so that the case-blind search that follows finds only the others.
    replace(XQUpperRomanPageNumberPlaceholder, roman.toUpper(), 0);
    replace(XQLowerRomanPageNumberPlaceholder, roman, CaseInsensitiveSearch);
    // Escapes go last: an escaped "<$P-R>" freed earlier would be taken by the case-blind "<$p-r>".
    for (const QString& placeholder : {XQPageNumberPlaceholder, XQPageCountPlaceholder,
                                       XQUpperRomanPageNumberPlaceholder, XQLowerRomanPageNumberPlaceholder})
        removeEscapesForString(copy, placeholder, false);
    return copy.attributedString();
}

} // namespace qly

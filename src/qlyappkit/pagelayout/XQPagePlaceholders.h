#pragma once
// Page numbers in printed headers and footers: "<$p>" (the printed page number), "<$pagecount>" (the
// number of printed pages), "<$P-R>" and "<$p-r>" (the page number in upper- and lower-case roman
// numerals). A backslash in front of a placeholder keeps it as text (the backslash is dropped).
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The printed number of physical page p (1-based): p itself when the first pages are counted, else
/// p + 1 − firstPageForRegularHeaderAndFooter (so the first regular page is 1).
int XQPrintedPageNumber(int page, bool countsFirstPages, int firstPageForRegularHeaderAndFooter);

/// A copy of text with its unescaped placeholders replaced for physical page `page` of `pageCount`.
/// "<$p>" (any case) becomes the printed number n, or nothing when n < 1; "<$pagecount>" (any case)
/// n − page + pageCount. The roman numerals show n, or n + firstPageForRegularHeaderAndFooter − 1 when
/// n < 1; "<$P-R>" (exactly so) is replaced first, in upper case, then "<$p-r>" (any other case) in
/// lower case.
AttributedString XQAttributedStringBySubstitutingPagePlaceholders(const AttributedString& text, int page, int pageCount,
                                                                  bool countsFirstPages,
                                                                  int firstPageForRegularHeaderAndFooter);

} // namespace qly

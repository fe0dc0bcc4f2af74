#pragma once
// A stored text (notes as attributes, comments on their anchors) made ready to be read as a page:
// what a reader of the page should see, with nothing left that only the application understands.
#include <QString>
#include <QStringList>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The text of the page: pictures linked by "qlypicture:FILE" put in (FILE only inside
/// resourceFolder; a refused or unreadable one is left out with a warning); linked comments and
/// footnotes, annotations and inline footnotes written inline (annotations between brackets in their
/// colour, footnotes numbered and gathered after the text below a rule); and links a browser cannot
/// follow (comment and document links, bookmarks, page references) removed, their text kept.
AttributedString attributedStringForHTMLPage(const AttributedString& storedText, const QString& resourceFolder,
                                             QStringList* warnings = nullptr);

} // namespace qly

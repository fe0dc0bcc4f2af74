#pragma once
// Whether a text fits on one printed page. Answered with Qt's document pagination for now: the text
// is laid out in its fonts at one layout unit per point.
#include <QSizeF>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// True when the text, set in the page's width less the horizontal margins, is no taller than the
/// page less the vertical margins. Needs a QGuiApplication (fonts).
bool fitsOnOnePageWithPageSize(const AttributedString& text, QSizeF pageSize, double leftMargin, double rightMargin,
                               double topMargin, double bottomMargin);

} // namespace qly

#pragma once
// Centring the body of an HTML page in a column of fixed width.
#include <QByteArray>

namespace qly {

/// The page with everything inside its body wrapped in a centred "div" of the given width in pixels.
/// Data that is not UTF-8, or has no "<body" (any case) with its ">" and a later "</body>", comes
/// back unchanged.
QByteArray HTMLDataWithBodyTableOfWidth(int width, const QByteArray& data);

} // namespace qly

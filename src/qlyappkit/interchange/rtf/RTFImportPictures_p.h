#pragma once
// Pictures read from word-processor RTF: the size they are shown at, and their re-encoding when that
// size asks for fewer pixels than they have.
#include <QByteArray>
#include <QSize>
#include <QSizeF>
#include <optional>

namespace qly::rtfimport {

/// The size a picture is shown at: goal sizes in twips (one missing one follows the image's aspect),
/// else the image's own size; scales between 1 and 99 percent reduce it, larger ones are ignored.
QSizeF pictureDisplaySize(QSizeF ownSize, int goalWidth, int goalHeight, int scaleX, int scaleY);

/// Pixels per point the image file states (PNG "pHYs", JPEG "JFIF" density); nothing when it states
/// none or only an aspect ratio.
std::optional<double> statedPixelsPerPoint(const QByteArray& data);

/// The picture re-encoded (as JPEG or PNG) at the pixel size it needs to be shown at displaySize with
/// its own resolution (pixelsPerPoint) kept. Nothing when that is the pixel size it has, when it would
/// need more pixels than it has (a picture is never given pixels it does not hold), or when it does not
/// decode.
std::optional<QByteArray> resizedPictureMaintainingResolution(const QByteArray& data, QSize pixels,
                                                              double pixelsPerPoint, QSizeF displaySize,
                                                              bool isJPEG);

} // namespace qly::rtfimport

#pragma once
// The temporary text markers of package RTF: the writer puts them in the text in place of each picture and
// style identifier change before it asks the platform for RTF, and then replaces them in the RTF by their
// groups; the reader puts them in the RTF in place of each group before the platform reads it, and then
// replaces them in the text. Neither kind survives. Each marker is a prefix, a number and a suffix; the
// numbers start above any that the text already holds in a marker's shape, so that text which happens
// to look like a marker is left alone.
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace qly::packagemarkers {

// The writer's.
inline const QString WriterPictureStart = QStringLiteral("<<**JVT_IMG_TAG");
inline const QString WriterPictureEnd = QStringLiteral("**>>");
inline const QString WriterStyleStart = QStringLiteral("<<**QLY_STYLE_ID_TAG");
inline const QString& WriterStyleEnd = WriterPictureEnd;

// The reader's.
inline const QString ReaderPictureStart = QStringLiteral("<IMG");
inline const QString ReaderStyleStart = QStringLiteral("<STYLE");
inline const QString ReaderEnd = QStringLiteral("_QLRY_TAG>");

/// One more than the largest number that stands between start and end anywhere in text (0 when none).
qsizetype firstFreeMarkerNumber(QStringView text, QStringView start, QStringView end);
qsizetype firstFreeMarkerNumber(QByteArrayView text, QByteArrayView start, QByteArrayView end);

/// The number of the marker that starts at index (start, decimal digits, end); -1 when there is none there.
/// *length receives the marker's length.
qsizetype markerNumberAt(QStringView text, qsizetype index, QStringView start, QStringView end, qsizetype* length);
qsizetype markerNumberAt(QByteArrayView text, qsizetype index, QByteArrayView start, QByteArrayView end,
                         qsizetype* length);

} // namespace qly::packagemarkers

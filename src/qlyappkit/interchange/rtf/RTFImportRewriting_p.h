#pragma once
// The extended reader's rewrite of word-processor RTF, before the platform reads it: footnote and
// annotation groups become the groups that read as inline note tags, comment-range groups become
// text markers, the old readers' alternative pictures go, and each picture that can be decoded
// becomes a numbered placeholder. One scan over the RTF, whatever the number of notes and pictures.
#include <QByteArray>
#include <QSize>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace qly::rtfimport {

/// A picture taken out of the RTF.
struct ImportedPicture {
    QByteArray data; ///< the bytes as decoded from the RTF's hexadecimal
    QString fileName; ///< with its extension, "jpg" or "png"
    bool isJPEG = false;
    QSizeF size; ///< the size it is shown at, in points
    QSize pixels; ///< the image's own pixel size
    double pixelsPerPoint = 1.0; ///< the resolution its file states, else a pixel a point
};

/// What the rewrite made.
struct RewrittenRTF {
    QString rtf;
    /// Indexed by placeholder number less one.
    std::vector<ImportedPicture> pictures;
    /// The ids written in the range groups and the annotations' references, in document order (an
    /// empty id where a group has none).
    QStringList rangeStartIds, rangeEndIds, annotationRefs;
    int footnotes = 0;
    int endnotes = 0;
    /// Groups still open at the end of the RTF (closed by the rewrite).
    int unclosedGroups = 0;
};

/// Rewrites rtf (RTF text, one character per byte). With commentsInline the range groups stay.
RewrittenRTF rewriteWordProcessorRTF(const QString& rtf, bool commentsInline);

/// Bytes from hexadecimal digits, white space between them allowed; nothing for any other character
/// or an odd number of digits.
std::optional<QByteArray> bytesFromHexadecimal(QStringView hex);

} // namespace qly::rtfimport

#pragma once
// The groups of package RTF that the reader takes out before the platform reads the RTF: pictures
// ("\pict" groups, widened to an enclosing "\shppict" group and then to an enclosing "\object" group),
// PDF pictures ("\quillerypdf" groups, alone or inside a picture group whose bitmap is their rendering),
// the platform's fallback pictures ("\nonshppict" groups, dropped) and style identifier groups.
//
// One pass over the bytes with a stack of open groups finds them all: its cost grows with the RTF, whatever
// the number of pictures, and nothing recurses on the nesting depth. Control words are read as RTF reads
// them, so escaped text ("\\pict") is never taken for a group, and "\binN" data is skipped as data.
#include <QByteArrayView>
#include <optional>
#include <vector>

namespace qly::packagegroups {

enum class GroupKind { Picture, PDF, Fallback, ParagraphStyleID, CharacterStyleID };

struct Group {
    GroupKind kind = GroupKind::Picture;
    qsizetype start = 0; ///< the group's "{"
    qsizetype end = 0; ///< just after its "}", or the end of the RTF when it does not close
    bool closed = true;

    // Picture: the last text directly inside the "\pict" group (hexadecimal), or the bytes of "\binN".
    QByteArrayView data;
    bool binaryData = false;
    bool jpeg = false;
    int pixelWidth = 0, pixelHeight = 0;
    int goalWidth = 0, goalHeight = 0; ///< twips
    int scaleX = 0, scaleY = 0; ///< percent; 0 when not given
    std::optional<QByteArrayView> fileName; ///< RTF text of the "\nisusfilename" group

    // PDF (a group of its own, or inside a picture group).
    bool hasPDF = false;
    QByteArrayView pdfData;
    std::optional<QByteArrayView> pdfFileName; ///< RTF text of the "\pdffilename" group

    // Style identifier: the RTF text after the control word.
    QByteArrayView value;
};

/// The groups in RTF order; none lies inside another. A group that runs past the end of the RTF is the
/// last one (closed is false).
std::vector<Group> scanPackageGroups(QByteArrayView rtf);

} // namespace qly::packagegroups

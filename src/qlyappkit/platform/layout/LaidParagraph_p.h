#pragma once
// Internal to the layout engine: one paragraph as the layout manager keeps it — its QTextLayout and
// line breaks for a given width, and where its lines were placed.
#include <QSizeF>
#include <QTextLayout>
#include <memory>
#include <vector>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly {

/// A line as broken, before it is placed: offsets into the paragraph, metrics in points.
struct ShapedLine {
    qsizetype start = 0; ///< first character, relative to the paragraph
    qsizetype length = 0; ///< characters, the paragraph's terminator included on the last line
    int textLine = 0; ///< index of the QTextLine
    double x = 0; ///< left of the glyphs, relative to the text's left edge (alignment applied)
    double width = 0; ///< width the glyphs use
    double height = 0; ///< line height after the style's multiple, minimum and maximum
    double baseline = 0; ///< baseline below the top of the line
};

struct AttachmentBox {
    qsizetype offset = 0; ///< relative to the paragraph
    QSizeF size;
    TextAttachment attachment;
};

struct LaidParagraph {
    Range range; ///< characters, terminator or breaking character included
    Range separator; ///< the terminator or breaking character (empty at the end of the text)
    int endAction = 0; ///< the separator's control-character action
    bool continuesParagraph = false; ///< follows a container break that did not end the paragraph

    // ---- shape: valid for shapedWidth and shapedPadding
    bool shaped = false;
    double shapedWidth = -1;
    double shapedPadding = -1;
    ParagraphStyle style;
    std::unique_ptr<QTextLayout> layout;
    std::vector<ShapedLine> lines;
    std::vector<AttachmentBox> attachments;

    // ---- placement: valid while trusted, for a start at startContainer/startY
    bool trusted = false;
    int startContainer = -1;
    double startY = 0;
    int endContainer = -1;
    double endY = 0;
    std::vector<LineFragment> placed; ///< glyph ranges relative to the paragraph
};

} // namespace qly

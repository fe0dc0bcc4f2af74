#pragma once
// One emphasis pass over a paragraph, shared by the Markdown and MultiMarkdown imports: find a marker,
// pair an opener with the next closer, format the pair's range and delete both markers.
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/values/Font.h>

#include <functional>

namespace qly::markdown {

struct EmphasisPass {
    QString marker;
    /// MultiMarkdown's single underscore: an opener must not be followed by another marker character.
    bool openerMustNotRepeat = false;
    /// Formats a closed pair: formatted runs from the opener's first character to the closer's last,
    /// closer is the closing marker; both still in the text.
    std::function<void(MutableAttributedString& text, Range formatted, Range closer)> format;
};

/// The font at position (the user font where there is none).
Font fontAt(const MutableAttributedString& text, qsizetype position);
/// font.convertedToHaveTrait(trait), remembering the last answer: emphasis repeats the same few
/// fonts thousands of times in a long text.
std::optional<Font> fontWithTrait(const Font& font, unsigned trait);

/// Runs the pass over paragraph (a range of text) and returns the paragraph's range after the
/// markers it paired were removed. Time is linear in the paragraph's length.
Range runEmphasisPass(MutableAttributedString& text, Range paragraph, const EmphasisPass& pass);

/// The paragraph loop of both imports: each paragraph's ranges flow through the passes in order, and
/// the next paragraph is the one holding the end of the last pass's range.
void runEmphasisPasses(MutableAttributedString& text, const std::vector<EmphasisPass>& passes);

} // namespace qly::markdown

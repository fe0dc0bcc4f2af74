#pragma once
// The emphasis passes shared by the Markdown and MultiMarkdown imports: find a marker, pair an opener
// with the next closer, format the text between them and delete both markers.
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/values/Font.h>

#include <optional>
#include <vector>

namespace qly::markdown {

/// What a closed pair does to its text.
enum class EmphasisFormat {
    /// The font at the opener with the trait added, on the whole pair (mixed fonts are flattened).
    TraitFromOpener,
    /// Each run's own font with the trait added (MultiMarkdown).
    TraitPerRun,
    /// The double underline on the whole pair.
    DoubleUnderline,
    /// The single underline on the closing marker alone, which is then deleted: no visible change.
    UnderlineOnCloser,
};

struct EmphasisPass {
    QString marker;
    EmphasisFormat format;
    unsigned trait = 0; ///< for the trait formats: ItalicFontMask or BoldFontMask
    /// MultiMarkdown's single underscore: an opener must not be followed by another marker character.
    bool openerMustNotRepeat = false;
};

/// The font at position (the user font where there is none).
Font fontAt(const MutableAttributedString& text, qsizetype position);
/// font.convertedToHaveTrait(trait), remembering the last answer: emphasis repeats the same few
/// fonts thousands of times in a long text.
std::optional<Font> fontWithTrait(const Font& font, unsigned trait);

/// Runs the passes in order over paragraph (a range of text), each on the range the one before
/// left, and returns the paragraph's range once the paired markers are gone. The paragraph is
/// edited as a copy and written back once, so time is linear in its length however many pairs it holds.
Range runEmphasisPasses(MutableAttributedString& text, Range paragraph, const std::vector<EmphasisPass>& passes);

/// The paragraph loop of both imports: every paragraph through the passes, the next paragraph being
/// the one that holds the end of the range the passes left.
void runEmphasisPasses(MutableAttributedString& text, const std::vector<EmphasisPass>& passes);

} // namespace qly::markdown

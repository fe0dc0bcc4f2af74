#pragma once
// Reading the comparison tool's output back: the chunks rejoined into running text, and the stretches
// its tags marked as removed or added.
#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

#include <qlyappkit/platform/text/Range.h>

namespace qly::diffoutput {

struct MergedText {
    QString text;
    std::vector<Range> removed; ///< ascending, in text
    std::vector<Range> added; ///< ascending, in text
};

/// Deletes the chunk separators from the tool's output as it arrives, block by block. The separator
/// is ASCII and ends with the only line feed it holds, so every occurrence ends a line and no two
/// overlap; the output is kept only once stripped, about a tenth of its size when cut into words.
class SeparatorStripper {
public:
    void feed(const char* data, qsizetype size);
    void feed(const QByteArray& bytes) { feed(bytes.constData(), bytes.size()); }
    /// The output without separators; nothing when the output was not UTF-8.
    std::optional<QByteArray> finish();

private:
    QByteArray m_buffer; ///< [0, m_stripped) done; the rest a line still open
    qsizetype m_stripped = 0;
    bool m_checkNextByte = false; ///< a separator ended the last block
    bool m_splitCharacter = false; ///< a separator stood inside a character's bytes
};

/// From the output without separators: from the start, each old start tag and the next old end tag
/// after it are deleted and the text between them recorded as removed (a start tag without an end
/// tag ends that pass: it is deleted, later tags stay in the text); then the same for the new tags.
/// Linear in the text.
MergedText mergedTextFromStrippedOutput(const QByteArray& stripped);

/// The whole output: SeparatorStripper, then mergedTextFromStrippedOutput(). Nothing when the output
/// is not UTF-8.
std::optional<MergedText> mergedTextFromDiffOutput(const QByteArray& output);

} // namespace qly::diffoutput

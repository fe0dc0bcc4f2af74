#pragma once
// Internals of AttributedString: leaves of text with their attribute runs, indexed by a Fenwick tree
// of leaf lengths. Not installed.
#include <QSharedData>
#include <QString>
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

struct TextRun {
    qsizetype start; ///< offset inside the leaf (or inside a flat piece)
    Attributes attributes;
};

struct TextLeaf : QSharedData {
    QString text;
    std::vector<TextRun> runs;

    qsizetype length() const { return text.size(); }
    /// Index of the run holding offset (offset < length()).
    qsizetype runIndex(qsizetype offset) const;
    qsizetype runEnd(qsizetype r) const { return r + 1 < qsizetype(runs.size()) ? runs[r + 1].start : text.size(); }
};

using LeafPtr = QExplicitlySharedDataPointer<TextLeaf>;

/// A flat stretch of text with runs relative to its start, used to move text between leaves.
struct TextPiece {
    QString text;
    std::vector<TextRun> runs;
    /// Appends text carrying one attribute dictionary, merging with the last run when equal.
    void append(QStringView more, const Attributes& attributes);
};

class AttributedStringData : public QSharedData {
public:
    std::vector<LeafPtr> leaves;
    std::vector<qsizetype> tree; ///< Fenwick tree over leaf lengths, 1-based
    qsizetype total = 0;
    int capacity = 0;
    mutable QString cache;
    mutable bool cacheValid = false;

    AttributedStringData();

    void rebuildTree();
    /// After leaves from index `first` on were replaced (those before it untouched): recomputes the tree
    /// nodes that cover them only, so that filling the last leaf costs no walk over all the others.
    void rebuildTreeFrom(qsizetype first);
    void treeAdd(qsizetype leaf, qsizetype delta);
    /// Sum of the lengths of the leaves before `leaf`.
    qsizetype leafStart(qsizetype leaf) const;
    /// The leaf holding pos (pos < total) and the offset inside it.
    std::pair<qsizetype, qsizetype> locate(qsizetype pos) const;
    TextLeaf& mutableLeaf(qsizetype k)
    {
        leaves[size_t(k)].detach();
        return *leaves[size_t(k)];
    }
    const TextLeaf& leaf(qsizetype k) const { return *leaves[size_t(k)]; }
    qsizetype leafCount() const { return qsizetype(leaves.size()); }
    int fillSize() const { return capacity * 3 / 4; }

    /// Replaces range by the piece (whose runs cover its text).
    void replace(Range range, const TextPiece& piece);
    /// Applies fn to the attributes of every run inside range.
    template <typename Fn> void modifyAttributes(Range range, Fn fn);
    /// Attributes that text inserted over `range` takes.
    Attributes attributesForReplacing(Range range) const;
    /// Calls visit(attributes, start, end) for each leaf run inside range, in order, clipped to range
    /// (equal runs on either side of a leaf boundary come separately); visit returns false to stop.
    template <typename Visit> void forEachRun(Range range, Visit visit) const;
    /// Makes a batch of replacements (as AttributedString::replaceRanges) leaf by leaf: leaves no
    /// replacement touches carry over as they are, the others are made anew one at a time.
    void replaceRanges(const std::vector<AttributedString::Replacement>& replacements);
    /// Appends the text and runs of range to piece.
    void copyToPiece(Range range, TextPiece& piece) const;
    /// Splits the piece into new leaves of at most the fill size (its dictionaries move to them).
    std::vector<LeafPtr> makeLeaves(TextPiece&& piece) const;
    void invalidate()
    {
        cacheValid = false;
        cache = QString();
    }

private:
    void replaceInLeaf(qsizetype k, qsizetype offset, qsizetype removeLength, const TextPiece& piece);
    void replaceAcrossLeaves(qsizetype k0, qsizetype k1, Range range, const TextPiece& piece);
};

/// The ranges of a batch of replacements as replacingRanges makes them: within the text, and each
/// starting no earlier than the end of the one before.
std::vector<Range> clippedReplacementRanges(const std::vector<AttributedString::Replacement>& replacements,
                                            qsizetype length);

/// Appends the text and runs of the leaf's [from, to) to piece.
void copyFromLeaf(const TextLeaf& leaf, qsizetype from, qsizetype to, TextPiece& piece);

/// Drops empty runs among runs[from..to] (indexes clamped) and merges equal neighbours there (the
/// first with the run before the window too), in one pass.
void normalizeRuns(std::vector<TextRun>& runs, qsizetype textLength, qsizetype from, qsizetype to);

} // namespace qly

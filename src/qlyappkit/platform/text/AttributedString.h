#pragma once
// AttributedString: UTF-16 text with runs of attribute dictionaries, as an implicitly shared value.
//
// Storage is a sequence of leaves (text chunks of at most a few thousand units, each with its own
// attribute runs) indexed by a Fenwick tree of leaf lengths, so locating a position costs
// O(log leaves) and a small edit touches one leaf: its cost does not grow with the text.
// Leaves are shared between copies and copied only when a copy writes to them.
//
// Invariants (checkInvariants()): no empty leaf and no leaf over capacity; every leaf's runs start
// at 0, are strictly increasing and cover the leaf; two neighbouring runs inside a leaf never hold
// equal attributes (equal runs on either side of a leaf boundary are one logical run, and every
// query reports them as one); the Fenwick totals equal the leaf lengths.
#include <QExplicitlySharedDataPointer>
#include <QString>
#include <functional>
#include <vector>

#include <qlyappkit/platform/text/Attributes.h>
#include <qlyappkit/platform/text/Range.h>

namespace qly {

class AttributedStringData;

class AttributedString {
public:
    AttributedString();
    explicit AttributedString(const QString& text, const Attributes& attributes = {});
    AttributedString(const AttributedString&);
    AttributedString(AttributedString&&) noexcept;
    AttributedString& operator=(const AttributedString&);
    AttributedString& operator=(AttributedString&&) noexcept;
    ~AttributedString();

    // ---- characters
    qsizetype length() const;
    bool isEmpty() const { return length() == 0; }
    /// The whole text. Assembled on first use after an edit and cached; never call it on a per-edit path.
    QString string() const;
    QChar characterAt(qsizetype index) const;
    QString substring(Range range) const;

    // ---- attributes
    /// Attributes at index (which must be < length()); the effective range is the whole run holding them.
    Attributes attributes(qsizetype index, Range* effectiveRange = nullptr) const;
    /// Attributes at index; longestRange is the longest stretch with equal attributes, clipped to inRange.
    Attributes attributes(qsizetype index, Range* longestRange, Range inRange) const;
    QVariant attribute(const QString& name, qsizetype index, Range* effectiveRange = nullptr) const;
    /// One attribute's value; longestRange spans the neighbouring runs whose value is equal, within inRange.
    QVariant attribute(const QString& name, qsizetype index, Range* longestRange, Range inRange) const;
    AttributedString attributedSubstring(Range range) const;

    /// Calls fn for each run of attributes inside range, in order (runs clipped to range). fn returns
    /// false to stop.
    void enumerateAttributes(Range range, const std::function<bool(const Attributes&, Range)>& fn) const;
    /// The range walk: for each longest stretch of one attribute's value inside range (an invalid
    /// QVariant where it is absent), in order, clipped to range. fn returns false to stop.
    void enumerateAttribute(const QString& name, Range range,
                            const std::function<bool(const QVariant&, Range)>& fn) const;
    /// Number of attribute runs (merged runs count once).
    qsizetype runCount() const;

    // ---- editing (the receiver is detached from its copies first)
    /// Replaces characters; the new text takes the attributes of the first replaced character, or for
    /// an insertion those of the character before (the one after at index 0); none in an empty text.
    void replaceCharacters(Range range, const QString& text);
    void replaceCharacters(Range range, const AttributedString& text);
    void setAttributes(const Attributes& attributes, Range range);
    void addAttribute(const QString& name, const QVariant& value, Range range);
    struct Mark;
    /// Adds the attribute over each mark's range with the mark's value, as addAttribute one by one
    /// (a later mark wins where two overlap). Runs that shared a dictionary and get equal values share
    /// the new one too, so marking many notes does not make a dictionary for each.
    void addAttributeInRanges(const QString& name, const std::vector<Mark>& marks);
    void addAttributes(const Attributes& attributes, Range range);
    void removeAttribute(const QString& name, Range range);
    void insert(const AttributedString& text, qsizetype index) { replaceCharacters(Range{index, 0}, text); }
    void append(const AttributedString& text) { replaceCharacters(Range{length(), 0}, text); }
    void append(const QString& text, const Attributes& attributes);
    void deleteCharacters(Range range) { replaceCharacters(range, QString()); }
    struct Replacement;
    /// A copy with all the replacements made at once, in one pass over the text whatever their number.
    /// Ranges are in this string's positions and in increasing order; one starting inside the one
    /// before is clipped to its end, and replacements at the same position go in in order.
    AttributedString replacingRanges(const std::vector<Replacement>& replacements) const;
    /// Makes the replacements in this string, as replacingRanges does. Leaves that no replacement
    /// touches are kept as they are, so a string that shares nothing is edited where it lies.
    void replaceRanges(const std::vector<Replacement>& replacements);

    // ---- paragraphs and words
    /// The paragraphs touching range, terminators included (LF, CR, CR LF, U+2029 end a paragraph).
    Range paragraphRange(Range range) const;
    /// Like paragraphRange, but U+2028 and U+0085 also end a line.
    Range lineRange(Range range) const;
    /// Forward: the end of the word holding index or following it (length() when none follows).
    /// Backward: the start of the word that holds index - 1 or precedes it (0 when none).
    qsizetype nextWordFromIndex(qsizetype index, bool forward) const;
    /// The word-boundary segment holding index (a word, a run of spaces or one punctuation mark).
    Range doubleClickAtIndex(qsizetype index) const;

    /// Equal characters and equal attributes everywhere.
    friend bool operator==(const AttributedString& a, const AttributedString& b);

    /// Verifies the invariants above; returns false (and logs why) when one is broken.
    bool checkInvariants() const;
    /// Leaf capacity in UTF-16 units for strings created afterwards; tests make it tiny so that
    /// splits and merges happen in small texts. 0 restores the default.
    static void setLeafCapacityForTesting(int units);

private:
    friend class AttributedStringData;
    void detach();
    QExplicitlySharedDataPointer<AttributedStringData> d;
};

/// One range of addAttributeInRanges and the value it takes.
struct AttributedString::Mark {
    Range range;
    QVariant value;
};

/// One replacement of a batch: a range of the string and the text that takes its place.
struct AttributedString::Replacement {
    Range range;
    AttributedString text;
};

} // namespace qly

Q_DECLARE_METATYPE(qly::AttributedString)

#pragma once
// MutableAttributedString: the polymorphic editable text. Subclasses (text storages) override the
// four primitives — string(), attributes(), replaceCharacters(range, QString), setAttributes() — and
// everything else here is built on them. By default the text lives in a backing AttributedString.
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

class MutableAttributedString {
public:
    MutableAttributedString();
    explicit MutableAttributedString(const QString& text, const Attributes& attributes = {});
    explicit MutableAttributedString(const AttributedString& text);
    virtual ~MutableAttributedString();
    MutableAttributedString(const MutableAttributedString&) = delete;
    MutableAttributedString& operator=(const MutableAttributedString&) = delete;

    // ---- primitives
    virtual QString string() const;
    virtual Attributes attributes(qsizetype index, Range* effectiveRange = nullptr) const;
    virtual void replaceCharacters(Range range, const QString& text);
    virtual void setAttributes(const Attributes& attributes, Range range);

    // ---- read from the backing string by default; a subclass that keeps its text elsewhere overrides
    // these too (attributedStringFromPrimitives() helps with the last)
    virtual qsizetype length() const;
    virtual QChar characterAt(qsizetype index) const;
    virtual QString substring(Range range) const;
    /// A snapshot of the whole text as a value (cheap for the default backing: it shares storage).
    virtual AttributedString attributedString() const;
    // ---- built on the primitives
    virtual void addAttribute(const QString& name, const QVariant& value, Range range);
    virtual void removeAttribute(const QString& name, Range range);
    virtual void replaceCharacters(Range range, const AttributedString& text);
    virtual void beginEditing() { }
    virtual void endEditing() { }

    // ---- conveniences
    bool isEmpty() const { return length() == 0; }
    QVariant attribute(const QString& name, qsizetype index, Range* effectiveRange = nullptr) const;
    /// Longest stretch of equal attributes around index, clipped to inRange.
    Attributes attributes(qsizetype index, Range* longestRange, Range inRange) const;
    QVariant attribute(const QString& name, qsizetype index, Range* longestRange, Range inRange) const;
    AttributedString attributedSubstring(Range range) const;
    void addAttributes(const Attributes& attributes, Range range);
    void insert(const AttributedString& text, qsizetype index) { replaceCharacters(Range{index, 0}, text); }
    void append(const AttributedString& text) { replaceCharacters(Range{length(), 0}, text); }
    void deleteCharacters(Range range) { replaceCharacters(range, QString()); }
    /// Replaces the whole text.
    void setAttributedString(const AttributedString& text) { replaceCharacters(Range{0, length()}, text); }
    /// Makes a batch of replacements, as AttributedString::replacingRanges does: in one pass over a
    /// plain text, one edit each (from the end) in a subclass, so that it hears of every change.
    void replaceRanges(const std::vector<AttributedString::Replacement>& replacements);

    /// The backing string when this is the plain class, which keeps its text nowhere else: passes that
    /// edit a whole text may edit it directly. Null for subclasses, whose edits go through the primitives.
    AttributedString* plainBacking();

protected:
    /// The whole text assembled through string() and attributes().
    AttributedString attributedStringFromPrimitives() const;

    AttributedString m_backing;
};

/// Runs beginEditing() now and endEditing() when the scope ends.
class EditingBatch {
public:
    explicit EditingBatch(MutableAttributedString& text) : m_text(text) { m_text.beginEditing(); }
    ~EditingBatch() { m_text.endEditing(); }
    EditingBatch(const EditingBatch&) = delete;
    EditingBatch& operator=(const EditingBatch&) = delete;

private:
    MutableAttributedString& m_text;
};

} // namespace qly

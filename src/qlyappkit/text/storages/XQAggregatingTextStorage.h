#pragma once
// XQAggregatingTextStorage: several component text storages shown as one text, joined by a
// separator, so one editor can edit several documents at once.
//
// Edits made in the joined text are forwarded to the component that holds them (an edit that no
// single component holds, such as one in a separator, is refused); edits made directly in a
// component are copied into the joined text. Components are observed as TextStorageObservers (the
// same moment as their did-process-editing notification), and attribute fixing a component does
// after a forwarded edit is copied back, so each component's text always equals its slice. The
// forwarding, mirroring and range keeping are the core it shares with XQAggregateTextStorage
// (ComponentCore_p.h); this class adds the one separator.
//
// Invariants (checkInvariants()): component i occupies textRanges()[i] and its text equals that
// slice, attributes included; one separator follows every component but the last; ranges start at 0
// and each next one starts after the previous one and a separator; the word count is the
// components' total.
#include <memory>
#include <vector>

#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

namespace storage_detail {
template <typename Component> class ComponentCore;
}

class XQAggregatingTextStorage : public TextStorage {
public:
    using Component = std::shared_ptr<TextStorage>;

    /// Empty, separator "\n", word count 0.
    XQAggregatingTextStorage();
    /// A copy of text and no components (so nothing in it can be edited until components are set).
    explicit XQAggregatingTextStorage(const AttributedString& text);
    ~XQAggregatingTextStorage() override;

    // ---- components
    /// Rebuilds the joined text from the components.
    void setTextStorageComponents(const std::vector<Component>& components);
    const std::vector<Component>& textStorageComponents() const;
    /// index 0 … number of components; otherwise (or without a component) logs and does nothing.
    void insertTextStorageComponent(const Component& component, qsizetype index);
    void addTextStorageComponent(const Component& component);
    /// Logs and does nothing for an index outside the components.
    void removeTextStorageComponentAtIndex(qsizetype index);

    // ---- separator
    void setComponentSeparator(const QString& separator);
    void setComponentSeparator(const AttributedString& separator);
    /// Accepts a QString or an AttributedString; anything else is logged and ignored.
    void setComponentSeparator(const QVariant& separator);
    /// A QString or an AttributedString.
    QVariant componentSeparator() const { return m_separator; }

    // ---- ranges
    const std::vector<Range>& textRanges() const;
    /// Recomputes the ranges and the word count from the components and posts the statistics
    /// notification.
    void updateTextRanges();
    /// The first component whose range holds range (ends included); -1 when none.
    qsizetype indexOfTextStorageContainingRange(Range range) const;
    /// Not found for an index outside the components.
    Range rangeOfTextStorageAtIndex(qsizetype index) const;
    /// By identity; -1 when absent.
    qsizetype indexOfTextStorageComponent(const TextStorage* component) const;
    bool rangeIsEditable(Range range) const;
    bool rangesAreEditable(const std::vector<Range>& ranges) const;

    // ---- statistics
    /// The components' total, or 0 when some component does not count words.
    qsizetype wordCount() const { return m_wordCount; }
    qsizetype wordCountForRange(Range range) const;

    // ---- primitives
    void replaceCharacters(Range range, const QString& text) override;
    using TextStorage::replaceCharacters;
    void setAttributes(const Attributes& attributes, Range range) override;
    void addAttribute(const QString& name, const QVariant& value, Range range) override;

    /// Checks the invariants in the class comment (tests call it after every operation); on failure
    /// tells which in *failure. Reads the whole text: not for use while editing.
    bool checkInvariants(QString* failure = nullptr) const;

private:
    qsizetype separatorLength() const;
    /// Replaces range of the backing text by the separator and reports the edit.
    void writeSeparator(Range range, const QVariant& separator);
    /// The ranges laid out again from the components' lengths, the word count taken again.
    void relayout();
    /// After an edit of delta characters in component index: ranges moved, word count taken, the
    /// statistics notification posted.
    void componentTextChanged(qsizetype index, qsizetype delta);
    void postStatistics();

    qsizetype m_wordCount = 0;
    QVariant m_separator;
    std::unique_ptr<storage_detail::ComponentCore<Component>> m_core;
};

} // namespace qly

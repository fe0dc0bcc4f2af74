#pragma once
// XQTextStorage: the editors' text storage. It counts words as it is edited (see
// XQWordCountingTextStorage) and keeps the ordered list of the linked comments in its text.
//
// Comment bookkeeping is lazy: edits only note that the list must be rebuilt (a comment anchor was
// created, removed or cut in two), and the rebuild happens when the edit is processed, starting from
// the last comment before the edit so the list in front of it is kept. A comment that turns up on a
// second run (a pasted copy of its anchor) is replaced there by a copy with a fresh unique ID.
// Every comment run also carries the comment as its link and the comment's tool tip.
//
// Fixing after an edit also spreads keep-with-next and paragraph-style identifiers over whole
// paragraphs: the value at a paragraph's first character decides for all of it.
#include <memory>
#include <vector>

#include <qlyappkit/text/comments/XQCommentedTextStorageMethods.h>
#include <qlyappkit/text/storages/XQAggregateTextStorageComponent.h>
#include <qlyappkit/text/storages/XQWordCountingTextStorage.h>

namespace qly {

class XQComment;

/// Posted (object: the storage) after every character replacement; see
/// XQWordCountingTextStorageStatisticsDidChangeNotification (the same string).
inline const QString XQTextStorageStatisticsDidChangeNotification =
    QStringLiteral("XQTextStorageStatisticsDidChangeNotification");
/// Posted (object: the storage) after each rebuild of the comments list; no user info.
inline const QString XQTextStorageCommentsDidChangeNotification =
    QStringLiteral("XQTextStorageCommentsDidChangeNotification");

class XQTextStorage : public XQWordCountingTextStorage,
                      public XQCommentedTextStorageMethods,
                      public XQAggregateTextStorageComponent {
public:
    XQTextStorage();
    explicit XQTextStorage(const QString& text, const Attributes& attributes = {});
    explicit XQTextStorage(const AttributedString& text);
    XQTextStorage(const AttributedString& text, qsizetype wordCount);

    // ---- primitives
    void replaceCharacters(Range range, const QString& text) override;
    using XQWordCountingTextStorage::replaceCharacters;
    /// A comment in the attributes brings its link and tool tip along.
    void setAttributes(const Attributes& attributes, Range range) override;
    /// Removing the comment attribute also removes the comment's link and tool tip.
    void removeAttribute(const QString& name, Range range) override;
    void fixAttributesInRange(Range range) override;

    // ---- comments
    const std::vector<std::shared_ptr<XQComment>>& comments() const override { return m_comments; }
    std::shared_ptr<XQComment> addComment(const AttributedString& text, Range range) override;
    std::shared_ptr<XQComment> addFootnoteComment(const AttributedString& text, Range range) override;
    void setCommentText(const AttributedString& text, Range range) override;
    void removeCommentsAtRange(Range range) override;
    Range rangeOfComment(const std::shared_ptr<XQComment>& comment) const override;

    /// Rebuilds the comments list from the last comment run before start (see the class comment) and
    /// posts XQTextStorageCommentsDidChangeNotification.
    void rebuildCommentsFromRange(qsizetype start);
    /// True when range holds a comment run that does not continue outside it: editing the range may
    /// remove a comment from the text or cut it in two. False for an empty range.
    bool rangeContainsUniqueCommentAttributes(Range range) const;
    /// True between an edit that changed the comment runs and the rebuild that follows it.
    bool commentsNeedRebuilding() const { return m_commentsNeedRebuilding; }

    // ---- fixing
    void fixCommentAttributeInRange(Range range);
    void fixKeepWithNextAttributeInRange(Range range);
    void fixStyleIDAttributesInRange(Range range);
    /// Makes every comment run in range carry its comment as link and its tool tip, and drops comment
    /// links and their tool tips where no comment lies.
    static void fixUpCommentAttributesInText(MutableAttributedString& text, Range range);
    /// Over the paragraphs range touches: a true keep-with-next value on a paragraph's first character
    /// is spread over the paragraph; otherwise the attribute is removed from it.
    static void fixUpKeepWithNextAttributesInText(MutableAttributedString& text, Range range);
    /// Over the paragraphs range touches: the paragraph-style identifier on a paragraph's first
    /// character is spread over the paragraph; with none there it is removed from the paragraph.
    static void fixUpStyleIDAttributesInText(MutableAttributedString& text, Range range);

    // ---- aggregate membership (a counter: one storage may be shown by several aggregates)
    void addToAggregateTextStorage() override { ++m_aggregateCount; }
    void removeFromAggregateTextStorage() override { --m_aggregateCount; }
    bool isAggregateTextStorageComponent() const override { return m_aggregateCount != 0; }

private:
    std::shared_ptr<XQComment> addCommentObject(const std::shared_ptr<XQComment>& comment, Range range);
    /// The stretch of the comment attribute holding index (not found when no comment lies there).
    Range commentRunAt(qsizetype index) const;

    std::vector<std::shared_ptr<XQComment>> m_comments;
    bool m_commentsNeedRebuilding = false;
    int m_aggregateCount = 0;
    bool m_fixing = false; ///< attribute fixing in progress: its own changes do not ask for a rebuild
};

} // namespace qly

#pragma once
// XQAggregateTextStorage: several documents ("components") shown as one continuous text that the
// user edits in a single editor. Each component may be preceded by its title (followed by "\n"), and
// components are divided by a section separator ("\n\n", or "\n" with single-line separators) or a
// page-break separator ("\n" U+000C) when the next component asks for a page break before it.
//
// Routing: characters typed into a component's text go into its text storage; typed into a title,
// they rename the component (the title notification follows 0.1 s after the last keystroke of a
// burst); edits in separators, or across parts, change only this text and are refused beforehand by
// rangeIsEditable(). Attribute changes are passed to every component text they touch. Edits made in
// a component elsewhere are mirrored here. Components are observed as TextStorageObservers (heard at
// the same moment as their did-process-editing notification), and whatever a component's own
// attribute fixing changes after a forwarded edit is copied back, so each component's text always
// equals its slice of this text, attributes included.
//
// Invariants: componentRanges() are contiguous and cover the text; textRanges()[i] holds component
// i's text; titleRanges() (only while titles are shown) hold the titles, the "\n" after each title
// outside them; a component range ends after the separator that follows it.
#include <QStringList>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/comments/XQCommentedTextStorageMethods.h>
#include <qlyappkit/text/storages/XQTextComponent.h>

class QObject;
class QTimer;

namespace qly {

class XQWordCountingTextStorage;
namespace storage_detail {
class EditForwardingObserver;
}

/// Marks separator text (value: true).
inline const QString XQAggregatedSeparatorAttributeName = QStringLiteral("XQAggregatedSeparatorAttributeName");
/// Marks title text (value: true).
inline const QString XQAggregatedTitleAttributeName = QStringLiteral("XQAggregatedTitleAttributeName");
/// Posted (object: the storage) 0.1 s after typing in a title stops. User info: "newTitle", "componentIndex".
inline const QString XQAggregateTextStorageComponentTitleDidChangeNotification =
    QStringLiteral("XQAggregateTextStorageComponentTitleDidChangeNotification");
/// Posted (object: the storage) when edits were made that an undo stack of the text cannot replay.
inline const QString XQAggregateTextStorageDidInvalidateUndoStackNotification =
    QStringLiteral("XQAggregateTextStorageDidInvalidateUndoStackNotification");
/// User-info keys of the title notification.
inline const QString XQAggregateNewTitleKey = QStringLiteral("newTitle");
inline const QString XQAggregateComponentIndexKey = QStringLiteral("componentIndex");

class XQAggregateTextStorage : public TextStorage, public XQCommentedTextStorageMethods {
public:
    /// What part of a component a range lies in.
    enum Element { SeparatorElement = 0, TitleElement = 1, TextElement = 2 };

    /// Empty; titles shown (bold, centred), two-line section separators.
    XQAggregateTextStorage();
    ~XQAggregateTextStorage() override;

    // ---- components
    /// Rebuilds the whole text (nothing happens for an equal array). Throws NamedException for a
    /// component without text storage or whose storage is not an XQAggregateTextStorageComponent,
    /// before anything changes.
    void setComponents(const std::vector<XQTextComponent>& components);
    const std::vector<XQTextComponent>& components() const { return m_components; }
    qsizetype numberOfComponents() const { return qsizetype(m_components.size()); }
    std::vector<std::shared_ptr<TextStorage>> componentTextStorages() const;
    const std::vector<Range>& componentRanges() const { return m_componentRanges; }
    const std::vector<Range>& textRanges() const { return m_textRanges; }
    /// Empty while titles are hidden.
    const std::vector<Range>& titleRanges() const { return m_titleRanges; }

    // ---- titles and separators
    void setShowsTitles(bool showsTitles);
    bool showsTitles() const { return m_showsTitles; }
    void setTitleAttributes(const Attributes& attributes);
    const Attributes& titleAttributes() const { return m_titleAttributes; }
    void setUsesSingleLineSeparators(bool singleLine);
    bool usesSingleLineSeparators() const { return m_usesSingleLineSeparators; }
    /// The base of every separator's attributes (the font is taken from the text around it when it has one).
    void setSeparatorAttributes(const Attributes& attributes);
    const Attributes& separatorAttributes() const { return m_separatorAttributes; }
    /// True when the title attributes' paragraph style is centred.
    bool titlesAreCentered() const;
    /// Renames a component (logs a bad index).
    void setTitle(const QString& title, qsizetype index);
    /// Colours a component's title (logs a bad index); nothing clears it back to the title attributes.
    void setTitleColor(const std::optional<Color>& color, qsizetype index);
    /// Logs a bad index. Component 0's flag is kept but governs no separator.
    void setPageBreakBefore(bool pageBreak, qsizetype index);

    // ---- locating
    Range rangeOfEntireComponentAtIndex(qsizetype index) const;
    Range rangeOfTitleForComponentAtIndex(qsizetype index) const;
    Range rangeOfTextStorageForComponentAtIndex(qsizetype index) const;
    qsizetype indexOfComponent(const XQTextComponent& component) const;
    qsizetype indexOfComponentContainingTextStorage(const TextStorage* storage) const;
    std::shared_ptr<TextStorage> textStorageForComponentAtIndex(qsizetype index) const;
    /// The storage whose text holds range; null otherwise.
    std::shared_ptr<TextStorage> textStorageForRange(Range range) const;
    std::vector<std::shared_ptr<TextStorage>>
    componentTextStoragesIntersectingRanges(const std::vector<Range>& ranges) const;
    /// The pieces of the ranges that lie in component texts.
    std::vector<Range> rangesLimitedToTextRanges(const std::vector<Range>& ranges) const;
    /// The component whose range holds range (an empty range at a component's end belongs to the next
    /// one, unless it is the last), or NotFound. element receives an Element.
    qsizetype indexOfComponentContainingRange(Range range, int* element = nullptr) const;
    /// With a replacement: titles and texts can be typed into, separators and ranges across parts
    /// can't. Without (an attribute change): anything but a shown title.
    bool rangeIsEditable(Range range, const std::optional<QString>& replacement) const;
    bool rangesAreEditable(const std::vector<Range>& ranges, const std::optional<QStringList>& replacements) const;

    // ---- separators
    /// The separator after component index by its own page-break flag; empty for the last.
    QString separatorStringForComponentAtIndex(qsizetype index) const;
    static QString pageBreakSeparatorString();
    QString sectionSeparatorString() const;
    /// The default paragraph style with a line-height multiple of 1.2.
    static ParagraphStyle separatorParagraphStyle();
    /// Replaces range of text with a separator and gives it separator attributes.
    void insertSeparatorWithPageBreak(bool pageBreak, Range range, MutableAttributedString& text);

    // ---- primitives (addAttribute and removeAttribute reach the components through setAttributes)
    void replaceCharacters(Range range, const QString& text) override;
    using TextStorage::replaceCharacters;
    void setAttributes(const Attributes& attributes, Range range) override;
    void fixAttributesInRange(Range range) override;
    /// Gives titles, the newlines after them and separators in range back their own attributes.
    void fixAggregatedTitlesAndSeparatorsInRange(Range range);

    // ---- statistics
    /// The components' total, or 0 when some component does not count words.
    qsizetype wordCount() const { return m_wordCount; }
    qsizetype wordCountForRange(Range range) const;

    // ---- comments: the components' lists in order; operations go to the component holding the range
    const std::vector<std::shared_ptr<XQComment>>& comments() const override { return m_comments; }
    std::shared_ptr<XQComment> addComment(const AttributedString& text, Range range) override;
    std::shared_ptr<XQComment> addFootnoteComment(const AttributedString& text, Range range) override;
    void setCommentText(const AttributedString& text, Range range) override;
    void removeCommentsAtRange(Range range) override;
    Range rangeOfComment(const std::shared_ptr<XQComment>& comment) const override;
    /// True when every component keeps a comments list.
    bool componentsHaveComments() const { return m_componentsHaveComments; }

    // ---- re-entrancy state, for observers that must tell the storage's own edits apart
    bool isChangeInstigatedBySelf() const { return m_changeInstigatedBySelf; }
    bool isChangeInstigatedByComponent() const { return m_changeInstigatedByComponent; }
    bool isInTitleChange() const { return m_inTitleChange; }
    bool isRebuildingTitles() const { return m_isRebuildingTitles; }
    bool isUpdatingSeparator() const { return m_isUpdatingSeparator; }

private:
    struct PendingSync {
        TextStorage* component;
        Range range;
    };
    Attributes titleAttributesForComponent(qsizetype index) const;
    Attributes titleNewlineAttributesForComponent(qsizetype index) const;
    qsizetype separatorLengthBefore(qsizetype index) const;
    Range separatorRangeAfter(qsizetype index) const;
    void updateRanges();
    /// Moves the ranges after an edit of delta characters in component index's title or text.
    void shiftRanges(qsizetype index, int element, qsizetype delta);
    void postStatistics();
    void postUndoInvalidation();
    void scheduleUndoInvalidation();
    void scheduleTitleNotification(qsizetype index);
    void titleNotificationFired(qsizetype index);
    void rewriteSeparators();
    /// Sets attributes on the parts of range whose attributes differ, without routing.
    void setAttributesWhereDifferent(const Attributes& attributes, Range range);
    /// Index of the first range in ranges that ends after location (ranges sorted and contiguous).
    static qsizetype firstRangeEndingAfter(const std::vector<Range>& ranges, qsizetype location);
    void stopObservingComponents();
    void componentEdited(TextStorage& component, int mask, Range editedRange, qsizetype delta);
    void applyPendingSyncs();
    void rebuildComments();
    XQCommentedTextStorageMethods* commentedComponentForRange(Range range, Range* relative) const;

    qsizetype m_wordCount = 0;
    std::vector<XQTextComponent> m_components;
    std::vector<const XQWordCountingTextStorage*> m_counters; ///< per component; null when it counts no words
    std::vector<qsizetype> m_componentWords; ///< each component's count when the total was last formed
    bool m_allComponentsCount = true;
    qsizetype m_mirroredComponent = NotFound; ///< the component whose edit is being mirrored
    std::vector<Range> m_componentRanges, m_textRanges, m_titleRanges;
    bool m_showsTitles = true;
    bool m_usesSingleLineSeparators = false;
    Attributes m_titleAttributes, m_separatorAttributes;
    bool m_changeInstigatedBySelf = false;
    bool m_changeInstigatedByComponent = false;
    bool m_inTitleChange = false;
    bool m_isRebuildingTitles = false;
    bool m_isUpdatingSeparator = false;
    std::vector<std::shared_ptr<XQComment>> m_comments;
    bool m_componentsHaveComments = false;

    std::vector<PendingSync> m_pendingSyncs;
    std::unique_ptr<storage_detail::EditForwardingObserver> m_observer;
    ScopedObserver m_commentsObserver;
    std::map<qsizetype, std::unique_ptr<QTimer>> m_titleTimers;
    std::unique_ptr<QObject> m_timerContext; ///< cancels the zero-delay calls when the storage goes
};

} // namespace qly

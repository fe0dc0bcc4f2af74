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
// The components, their ranges here, the forwarding of edits, the mirroring of component edits and
// the re-entrancy guards are the core this class shares with XQAggregatingTextStorage
// (ComponentCore_p.h); this class adds titles, section and page-break separators and comments.
//
// Invariants (checkInvariants()): componentRanges() are contiguous and cover the text; textRanges()[i]
// holds component i's text, attributes included; titleRanges() (only while titles are shown) hold the
// titles, in title attributes, the "\n" after each title outside them; a component range ends after
// the separator that follows it, which is the separator its next component asks for and carries the
// separator mark; the word count is the components' total (0 when one does not count words); the
// comments list is the components' lists in order (while every component keeps one).
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
template <typename Component> class ComponentCore;
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
    const std::vector<XQTextComponent>& components() const;
    qsizetype numberOfComponents() const;
    std::vector<std::shared_ptr<TextStorage>> componentTextStorages() const;
    const std::vector<Range>& componentRanges() const;
    const std::vector<Range>& textRanges() const;
    /// Empty while titles are hidden.
    const std::vector<Range>& titleRanges() const;

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
    bool isChangeInstigatedBySelf() const;
    bool isChangeInstigatedByComponent() const;
    bool isInTitleChange() const { return m_inTitleChange > 0; }
    bool isRebuildingTitles() const { return m_rebuildingTitles > 0; }
    bool isUpdatingSeparator() const { return m_updatingSeparator > 0; }

    /// Checks the invariants in the class comment (tests call it after every operation); on failure
    /// tells which in *failure. Reads the whole text: not for use while editing.
    bool checkInvariants(QString* failure = nullptr) const;

private:
    Attributes titleAttributesForComponent(qsizetype index) const;
    Attributes titleNewlineAttributesForComponent(qsizetype index) const;
    qsizetype separatorLengthBefore(qsizetype index) const;
    Range separatorRangeAfter(qsizetype index) const;
    /// Lays the ranges out again and takes the word count afresh.
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
    void stopObservingComponents();
    void rebuildComments();
    XQCommentedTextStorageMethods* commentedComponentForRange(Range range, Range* relative) const;

    qsizetype m_wordCount = 0;
    bool m_showsTitles = true;
    bool m_usesSingleLineSeparators = false;
    Attributes m_titleAttributes, m_separatorAttributes;
    // Re-entrancy depths, held by storage_detail::Holding scopes.
    int m_inTitleChange = 0;
    int m_rebuildingTitles = 0;
    int m_updatingSeparator = 0;
    std::vector<std::shared_ptr<XQComment>> m_comments;
    bool m_componentsHaveComments = false;

    std::unique_ptr<storage_detail::ComponentCore<XQTextComponent>> m_core;
    ScopedObserver m_commentsObserver;
    std::map<qsizetype, std::unique_ptr<QTimer>> m_titleTimers;
    std::unique_ptr<QObject> m_timerContext; ///< cancels the zero-delay calls when the storage goes
};

} // namespace qly

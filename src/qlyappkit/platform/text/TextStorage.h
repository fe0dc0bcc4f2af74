#pragma once
// TextStorage: an editable text with the editing protocol. Edits inside a beginEditing()/endEditing()
// batch are collected (edited mask, edited range, change in length); when the outermost batch ends, or
// at once for an edit outside any batch, processEditing() fixes attributes over the edited range, posts
// the did-process-editing notification (the edited values are readable during the post), tells the
// attached layout observers, and resets.
#include <QString>
#include <vector>

#include <qlyappkit/platform/text/MutableAttributedString.h>

namespace qly {

class TextStorage;

/// Posted (object: the storage) when a batch of edits has been processed.
extern const QString TextStorageDidProcessEditingNotification;
/// Posted (object: the storage) before a batch of edits is processed.
extern const QString TextStorageWillProcessEditingNotification;

/// Something that lays the storage's text out and must hear of every processed edit.
class TextStorageObserver {
public:
    virtual ~TextStorageObserver() = default;
    /// newCharRange is in post-edit coordinates; delta is the change in length.
    virtual void textStorageEdited(TextStorage& storage, int editedMask, Range newCharRange, qsizetype delta) = 0;
};

class TextStorage : public MutableAttributedString {
public:
    enum EditedMask { EditedAttributes = 1, EditedCharacters = 2 };

    TextStorage();
    explicit TextStorage(const QString& text, const Attributes& attributes = {});
    explicit TextStorage(const AttributedString& text);
    ~TextStorage() override;

    void replaceCharacters(Range range, const QString& text) override;
    using MutableAttributedString::replaceCharacters;
    void setAttributes(const Attributes& attributes, Range range) override;
    void beginEditing() override;
    void endEditing() override;

    /// Records an edit: range is in pre-edit coordinates, delta the change in length.
    void edited(int mask, Range range, qsizetype delta);
    /// Fixes attributes and announces the batch; called by endEditing() or after an unbatched edit.
    virtual void processEditing();
    /// Repairs attributes after an edit (the base does nothing); subclasses extend it.
    virtual void fixAttributesInRange(Range range);

    /// The batch's edits so far in post-edit coordinates: inside the text, covering every character
    /// whose characters or attributes changed and every place where characters were deleted.
    Range editedRange() const { return m_editedRange; }
    qsizetype changeInLength() const { return m_changeInLength; }
    int editedMask() const { return m_editedMask; }
    int editingDepth() const { return m_editingDepth; }

    void addObserver(TextStorageObserver* observer);
    void removeObserver(TextStorageObserver* observer);
    bool hasObserver(const TextStorageObserver* observer) const;

private:
    int m_editingDepth = 0;
    int m_editedMask = 0;
    Range m_editedRange{NotFound, 0};
    qsizetype m_changeInLength = 0;
    std::vector<TextStorageObserver*> m_observers;
};

} // namespace qly

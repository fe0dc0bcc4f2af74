#pragma once
// Helpers shared by the framework's text storages. Not installed.
#include <functional>

#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly::storage_detail {

/// AttributedString::paragraphRange() over any mutable text, read in blocks through substring() so a
/// long paragraph costs a few copies rather than one lookup per character.
Range paragraphRange(const MutableAttributedString& text, Range range);

/// Equal attribute values; comments compare by identity.
bool sameValue(const QVariant& a, const QVariant& b);

/// The longest stretches of one attribute's value inside range (an invalid QVariant where it is
/// absent), in order, read through the text's primitives. fn returns false to stop.
void enumerateAttribute(const MutableAttributedString& text, const QString& name, Range range,
                        const std::function<bool(const QVariant&, Range)>& fn);

/// Calls set(attributes, targetRange) for every stretch of source's range whose attributes differ from
/// target's at the same place, target's text starting at targetOffset.
void forEachDifferingRun(const MutableAttributedString& source, Range range, const AttributedString& target,
                         qsizetype targetOffset, const std::function<void(const Attributes&, Range)>& set);

/// Hands the processed edits of the storages it is attached to to a callback.
class EditForwardingObserver : public TextStorageObserver {
public:
    using Callback = std::function<void(TextStorage&, int editedMask, Range editedRange, qsizetype delta)>;
    explicit EditForwardingObserver(Callback callback) : m_callback(std::move(callback)) { }
    void textStorageEdited(TextStorage& storage, int editedMask, Range newCharRange, qsizetype delta) override
    {
        m_callback(storage, editedMask, newCharRange, delta);
    }

private:
    Callback m_callback;
};

} // namespace qly::storage_detail

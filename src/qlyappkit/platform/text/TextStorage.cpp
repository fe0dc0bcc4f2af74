#include <qlyappkit/platform/text/TextStorage.h>

#include <algorithm>

#include <qlyappkit/platform/services/NotificationCenter.h>

namespace qly {

const QString TextStorageDidProcessEditingNotification = QStringLiteral("NSTextStorageDidProcessEditingNotification");
const QString TextStorageWillProcessEditingNotification = QStringLiteral("NSTextStorageWillProcessEditingNotification");

TextStorage::TextStorage() = default;
TextStorage::TextStorage(const QString& text, const Attributes& attributes) : MutableAttributedString(text, attributes)
{
}
TextStorage::TextStorage(const AttributedString& text) : MutableAttributedString(text) { }
TextStorage::~TextStorage() = default;

void TextStorage::replaceCharacters(Range range, const QString& text)
{
    const qsizetype before = m_backing.length();
    m_backing.replaceCharacters(range, text);
    edited(EditedCharacters, range, m_backing.length() - before);
}

void TextStorage::setAttributes(const Attributes& attributes, Range range)
{
    m_backing.setAttributes(attributes, range);
    edited(EditedAttributes, range, 0);
}

void TextStorage::beginEditing() { ++m_editingDepth; }

void TextStorage::endEditing()
{
    if (m_editingDepth == 0)
        return;
    if (--m_editingDepth == 0 && m_editedMask != 0)
        processEditing();
}

void TextStorage::edited(int mask, Range range, qsizetype delta)
{
    // The edited range is kept in post-edit coordinates. This edit replaced range (pre-edit) by
    // range.length + delta units, now standing at `now`. Each end of the earlier edited range is
    // carried through it: an end before the edit stays, one after it moves by delta, and one inside
    // the replaced stretch (whose characters are gone) lands on `now`. The union of the carried range
    // and `now` covers both edits and lies inside the new text.
    const Range now{range.location, std::max<qsizetype>(range.length + delta, 0)};
    if (m_editedMask == 0) {
        m_editedRange = now;
        m_changeInLength = delta;
    } else {
        auto carry = [&](qsizetype position, qsizetype inside) {
            if (position <= range.location)
                return position;
            if (position >= range.end())
                return position + delta;
            return inside;
        };
        const qsizetype start = carry(m_editedRange.location, now.location);
        const qsizetype end = std::max(start, carry(m_editedRange.end(), now.end()));
        m_editedRange = unionRange(Range::fromBounds(start, end), now);
        m_changeInLength += delta;
    }
    m_editedMask |= mask;
    if (m_editingDepth == 0)
        processEditing();
}

void TextStorage::processEditing()
{
    NotificationCenter::defaultCenter().post(TextStorageWillProcessEditingNotification, this);
    // Fixing attributes may itself edit; those edits join this batch instead of recursing.
    ++m_editingDepth;
    const qsizetype len = length();
    Range fix = intersectionRange(m_editedRange, Range{0, len});
    fixAttributesInRange(fix);
    --m_editingDepth;
    NotificationCenter::defaultCenter().post(TextStorageDidProcessEditingNotification, this);
    const int mask = m_editedMask;
    const Range range = m_editedRange;
    const qsizetype delta = m_changeInLength;
    for (TextStorageObserver* observer : std::vector<TextStorageObserver*>(m_observers))
        observer->textStorageEdited(*this, mask, range, delta);
    m_editedMask = 0;
    m_editedRange = Range{NotFound, 0};
    m_changeInLength = 0;
}

void TextStorage::fixAttributesInRange(Range) { }

void TextStorage::addObserver(TextStorageObserver* observer)
{
    if (std::find(m_observers.begin(), m_observers.end(), observer) == m_observers.end())
        m_observers.push_back(observer);
}

void TextStorage::removeObserver(TextStorageObserver* observer)
{
    m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer), m_observers.end());
}

bool TextStorage::hasObserver(const TextStorageObserver* observer) const
{
    return std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end();
}

} // namespace qly

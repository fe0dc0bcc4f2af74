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
    // The edited range is kept in post-edit coordinates: an earlier edited range after this edit
    // moves by delta, and the union covers both.
    const Range now{range.location, std::max<qsizetype>(range.length + delta, 0)};
    if (m_editedMask == 0) {
        m_editedRange = now;
        m_changeInLength = delta;
    } else {
        Range previous = m_editedRange;
        if (previous.location >= range.end())
            previous.location += delta;
        else if (previous.end() >= range.end())
            previous.length += delta;
        else if (previous.end() > range.location)
            previous.length = std::max<qsizetype>(range.location - previous.location, 0);
        previous.length = std::max<qsizetype>(previous.length, 0);
        m_editedRange = unionRange(previous, now);
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

#include <qlyappkit/text/storages/XQWordCountingTextStorage.h>

#include <algorithm>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/WordCounting.h>

namespace qly {

XQWordCountingTextStorage::XQWordCountingTextStorage() = default;

XQWordCountingTextStorage::XQWordCountingTextStorage(const QString& text, const Attributes& attributes)
    : TextStorage(text, attributes)
{
    recountWords();
}

XQWordCountingTextStorage::XQWordCountingTextStorage(const AttributedString& text) : TextStorage(text)
{
    recountWords();
}

XQWordCountingTextStorage::XQWordCountingTextStorage(const AttributedString& text, qsizetype wordCount)
    : TextStorage(text), m_wordCount(wordCount)
{
}

void XQWordCountingTextStorage::recountWords()
{
    m_wordCount = qly::wordCount(m_backing, Range{0, m_backing.length()});
}

qsizetype XQWordCountingTextStorage::wordCountForRange(Range range) const { return qly::wordCount(m_backing, range); }

Range XQWordCountingTextStorage::wordRangeForCharRange(Range range) const
{
    if (m_backing.isEmpty())
        return range;
    const qsizetype start = m_backing.nextWordFromIndex(range.location, false);
    const qsizetype end = m_backing.nextWordFromIndex(range.end(), true);
    return Range::fromBounds(start, std::max(end, start));
}

void XQWordCountingTextStorage::replaceCharacters(Range range, const QString& text)
{
    const qsizetype n = m_backing.length();
    range.location = std::clamp<qsizetype>(range.location, 0, n);
    range.length = std::clamp<qsizetype>(range.length, 0, n - range.location);

    const qsizetype oldCount = m_wordCount;
    // Between independent word boundaries clear of the edit: the words outside that stretch are the
    // same before and after, however the edit joins or splits words at its edges (a combining mark
    // joining a letter, a regional indicator changing its pair, a full stop between digits).
    const Range words = wordCountingRangeForEdit(m_backing, range);
    m_wordCount -= wordCountForRange(words);
    m_backing.replaceCharacters(range, text);
    const qsizetype delta = text.size() - range.length;
    m_wordCount += wordCountForRange(Range{words.location, words.length + delta});
    edited(EditedCharacters, range, delta);
    if (m_wordCount < 0)
        recountWords();
    NotificationCenter::defaultCenter().post(XQWordCountingTextStorageStatisticsDidChangeNotification,
                                             static_cast<const TextStorage*>(this),
                                             QVariantMap{{XQChangedWordsCountKey, qlonglong(m_wordCount - oldCount)},
                                                         {XQChangedCharactersCountKey, qlonglong(delta)}});
}

} // namespace qly

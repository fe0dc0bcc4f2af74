#pragma once
// XQWordCountingTextStorage: a text storage that keeps its word count current as it is edited.
//
// Each character replacement recounts only the words it touches: the replaced range widened to the
// neighbouring independent word boundaries (WordCounting.h: the nearest space, punctuation or line
// break beyond the edit that no word-boundary rule looks across, so combining marks, regional
// indicator pairs and emoji sequences at the edit's edges are recounted with it), before and after
// the edit. So the running count always equals a full recount, and a keystroke costs time in
// proportion to the word being typed, not to the document. A full count happens at creation and when
// the running count would go negative. After every replacement the statistics notification tells observers how the count and
// the length changed.
#include <QString>

#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

/// Posted (object: the storage) after every character replacement. User info: "ChangedWordsCount" and
/// "ChangedCharactersCount", signed. Deliberately the same string as XQTextStorageStatisticsDidChangeNotification.
inline const QString XQWordCountingTextStorageStatisticsDidChangeNotification =
    QStringLiteral("XQTextStorageStatisticsDidChangeNotification");
/// User-info key: the change in the word count.
inline const QString XQChangedWordsCountKey = QStringLiteral("ChangedWordsCount");
/// User-info key: the change in length.
inline const QString XQChangedCharactersCountKey = QStringLiteral("ChangedCharactersCount");

class XQWordCountingTextStorage : public TextStorage {
public:
    XQWordCountingTextStorage();
    explicit XQWordCountingTextStorage(const QString& text, const Attributes& attributes = {});
    explicit XQWordCountingTextStorage(const AttributedString& text);
    /// Takes the text and trusts the given count without counting (a count stored with the document).
    XQWordCountingTextStorage(const AttributedString& text, qsizetype wordCount);

    void replaceCharacters(Range range, const QString& text) override;
    using TextStorage::replaceCharacters;

    qsizetype wordCount() const { return m_wordCount; }
    /// Words in range: 0 for an empty range or one that runs past the end.
    qsizetype wordCountForRange(Range range) const;
    /// The range widened to the word boundary before its start and after its end; unchanged in an
    /// empty text.
    Range wordRangeForCharRange(Range range) const;

protected:
    /// Counts the whole text again.
    void recountWords();

private:
    qsizetype m_wordCount = 0;
};

} // namespace qly

#pragma once
// The chunk boundaries the comparison cuts text at, as positions in the text, so that a caller builds
// its output from views of the text without copying each chunk.
#include <QStringView>
#include <QTextBoundaryFinder>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>

namespace qly::diffchunks {

/// fn(start, end) for each clause: the text up to and including the next punctuation character, and
/// the rest after the last one.
template <typename Fn> void forEachClause(QStringView text, Fn&& fn)
{
    const qsizetype n = text.size();
    qsizetype start = 0;
    for (qsizetype i = 0; i < n;) {
        char32_t c = text[i].unicode();
        qsizetype next = i + 1;
        if (QChar::isHighSurrogate(c) && next < n && text[next].isLowSurrogate())
            c = QChar::surrogateToUcs4(text[i], text[next++]);
        if (isPunctuation(c)) {
            fn(start, next);
            start = next;
        }
        i = next;
    }
    if (start < n)
        fn(start, n);
}

/// fn(start, end) for each word-selection segment: a word, a run of spaces, a punctuation mark, as
/// the text system selects on a double click (Unicode word boundaries).
template <typename Fn> void forEachWord(QStringView text, Fn&& fn)
{
    const qsizetype n = text.size();
    if (n == 0)
        return;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text.data(), n);
    qsizetype start = 0;
    for (qsizetype b = finder.toNextBoundary(); b > 0 && b <= n; b = finder.toNextBoundary()) {
        fn(start, b);
        start = b;
    }
    if (start < n)
        fn(start, n);
}

/// fn(start, end) for each paragraph, its terminator (LF, CR, CR LF or U+2029) included.
template <typename Fn> void forEachParagraph(QStringView text, Fn&& fn)
{
    const qsizetype n = text.size();
    qsizetype start = 0;
    for (qsizetype i = 0; i < n; ++i) {
        if (!isParagraphTerminator(text[i]))
            continue;
        if (text[i] == u'\r' && i + 1 < n && text[i + 1] == u'\n')
            ++i;
        fn(start, i + 1);
        start = i + 1;
    }
    if (start < n)
        fn(start, n);
}

} // namespace qly::diffchunks

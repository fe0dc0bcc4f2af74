#include <qlyappkit/formats/comparison/DiffChunking.h>

#include <qlyappkit/formats/comparison/DiffChunking_p.h>
#include <qlyappkit/formats/comparison/DiffConstants.h>

namespace qly {

QString stringWithClausesSeparatedForDiff(const QString& text)
{
    QString out;
    const QStringView view(text);
    diffchunks::forEachClause(view, [&](qsizetype start, qsizetype end) {
        out.append(view.sliced(start, end - start));
        out.append(XQDiffChunkSeparatorString);
    });
    return out;
}

QString stringWithWordsSeparatedForDiff(const QString& text)
{
    QString out;
    const QStringView view(text);
    diffchunks::forEachWord(view, [&](qsizetype start, qsizetype end) {
        out.append(view.sliced(start, end - start));
        out.append(XQDiffChunkSeparatorString);
    });
    return out;
}

QStringList clausesForDiff(const QString& text)
{
    QStringList clauses;
    diffchunks::forEachClause(text,
                              [&](qsizetype start, qsizetype end) { clauses.append(text.sliced(start, end - start)); });
    return clauses;
}

QStringList paragraphsForDiff(const QString& text)
{
    QStringList paragraphs;
    diffchunks::forEachParagraph(
        text, [&](qsizetype start, qsizetype end) { paragraphs.append(text.sliced(start, end - start)); });
    return paragraphs;
}

} // namespace qly

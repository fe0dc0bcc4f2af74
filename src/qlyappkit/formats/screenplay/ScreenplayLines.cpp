#include <qlyappkit/formats/screenplay/ScreenplayLines.h>

#include <qlyappkit/platform/text/ParagraphRanges.h>

#include <array>
#include <limits>

namespace qly {

namespace {

// Before any content line the smallest level is this large, so every real level is smaller.
constexpr int NoLevelYet = 1000;

// Scene headings at the margin. "FADE IN:" and "FULL SHOT" count as scene headings too; scripts
// typed with this rule expect them to open scenes, so they stay.
const std::array<QString, 6> SceneHeadingPrefixes{
    QStringLiteral("INT."),     QStringLiteral("EXT."),      QStringLiteral("I/E"),
    QStringLiteral("FADE IN:"), QStringLiteral("FULL SHOT"), QStringLiteral("P.O.V."),
};
const std::array<QString, 9> SceneHeadingSuffixes{
    QStringLiteral("- DAY"),           QStringLiteral("- NIGHT"),      QStringLiteral("- MORNING"),
    QStringLiteral("- AFTERNOON"),     QStringLiteral("- EVENING"),    QStringLiteral("- LATER"),
    QStringLiteral("- MOMENTS LATER"), QStringLiteral("- CONTINUOUS"), QStringLiteral("- THE NEXT DAY"),
};

bool isSpaceOrTab(QChar c) { return c == u' ' || c == u'\t'; }

bool isCapitals(const QString& text) { return text == text.toUpper(); }

} // namespace

ScreenplayRecords screenplayLinesInfoFromString(const QString& string, int* leftMostLevel, int* rightMostLevel)
{
    ScreenplayRecords records;
    int smallest = NoLevelYet, largest = 0, previousLevel = 0;
    bool blankSeen = false;
    // The element being read stays out of the list until it ends, so that joining hard-wrapped lines
    // appends to it instead of copying it once per line.
    QString pending;
    int pendingLevel = 0;
    bool hasPending = false;
    auto flush = [&] {
        if (hasPending)
            records.append(QVariantMap{{XQScreenplayStringKey, pending}, {XQScreenplayLevelKey, pendingLevel}});
        hasPending = false;
    };
    const qsizetype n = string.size();
    qsizetype lineStart = 0;
    while (lineStart < n) {
        qsizetype lineEnd = lineStart;
        while (lineEnd < n && !isParagraphTerminator(string.at(lineEnd)))
            ++lineEnd;
        qsizetype next = lineEnd < n ? lineEnd + 1 : n;
        if (lineEnd < n && string.at(lineEnd) == u'\r' && next < n && string.at(next) == u'\n')
            ++next;

        qsizetype first = lineStart;
        while (first < lineEnd && isSpaceOrTab(string.at(first)))
            ++first;
        if (first == lineEnd) {
            blankSeen = true;
            previousLevel = smallest;
            lineStart = next;
            continue;
        }
        qsizetype last = lineEnd;
        while (isSpaceOrTab(string.at(last - 1)))
            --last;
        const int level = int(std::min<qsizetype>(first - lineStart, std::numeric_limits<int>::max()));
        const QStringView text = QStringView(string).mid(first, last - first);
        smallest = std::min(smallest, level);
        largest = std::max(largest, level);
        if (hasPending && !blankSeen && level == previousLevel) {
            // A hard-wrapped continuation of the element before.
            pending += u' ';
            pending += text;
        } else {
            flush();
            pending = text.toString();
            pendingLevel = level;
            hasPending = true;
        }
        previousLevel = level;
        blankSeen = false;
        lineStart = next;
    }
    flush();
    if (leftMostLevel)
        *leftMostLevel = smallest;
    if (rightMostLevel)
        *rightMostLevel = largest;
    return records;
}

QString screenplayElementType(const QString& text, int level, int leftMostLevel)
{
    const bool capitals = isCapitals(text);
    if (level == leftMostLevel) {
        if (!capitals)
            return XQPlainTextScreenplayAction;
        for (const QString& prefix : SceneHeadingPrefixes) {
            if (text.startsWith(prefix))
                return XQPlainTextScreenplaySceneHeading;
        }
        for (const QString& suffix : SceneHeadingSuffixes) {
            if (text.endsWith(suffix))
                return XQPlainTextScreenplaySceneHeading;
        }
        return XQPlainTextScreenplayShot;
    }
    if (capitals) {
        return text.endsWith(u'.') || text.endsWith(u':') ? XQPlainTextScreenplayTransition
                                                          : XQPlainTextScreenplayCharacter;
    }
    return text.startsWith(u'(') && text.endsWith(u')') ? XQPlainTextScreenplayParenthetical
                                                        : XQPlainTextScreenplayDialogue;
}

ScreenplayRecords screenplayLinesAndElementTypesFromString(const QString& string)
{
    int leftMost = NoLevelYet;
    const ScreenplayRecords lines = screenplayLinesInfoFromString(string, &leftMost);
    ScreenplayRecords typed;
    typed.reserve(lines.size());
    for (const QVariantMap& line : lines) {
        const QString text = line.value(XQScreenplayStringKey).toString();
        const int level = line.value(XQScreenplayLevelKey).toInt();
        typed.append(QVariantMap{{XQScreenplayStringKey, text},
                                 {XQScreenplayTypeKey, screenplayElementType(text, level, leftMost)}});
    }
    return typed;
}

} // namespace qly

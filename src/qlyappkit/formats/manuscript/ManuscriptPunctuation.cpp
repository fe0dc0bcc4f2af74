#include <qlyappkit/formats/manuscript/ManuscriptPunctuation.h>

#include <vector>

namespace qly {

namespace {

constexpr char16_t EmDash = 0x2014;
constexpr char16_t HorizontalEllipsis = 0x2026;
const QString TwoHyphens = QStringLiteral("--");
const QString ThreeHyphens = QStringLiteral("---");
const QString ThreePeriods = QStringLiteral("...");

// Replaces every occurrence of one character; from the end, so that the positions found stay valid
// and each replacement costs only its own edit.
void replaceEvery(AttributedString& text, char16_t character, const QString& replacement)
{
    const QString string = text.string();
    std::vector<qsizetype> found;
    for (qsizetype at = string.indexOf(QChar(character)); at >= 0; at = string.indexOf(QChar(character), at + 1))
        found.push_back(at);
    for (auto it = found.rbegin(); it != found.rend(); ++it)
        text.replaceCharacters(Range{*it, 1}, replacement);
}

} // namespace

AttributedString attributedStringByConvertingEmDashesToHyphens(const AttributedString& text, int emDashMode,
                                                               bool convertingEllipsesToPeriods)
{
    AttributedString result = text;
    if (emDashMode != XQLeaveEmDashes)
        replaceEvery(result, EmDash, emDashMode == XQEmDashesToThreeHyphens ? ThreeHyphens : TwoHyphens);
    if (convertingEllipsesToPeriods)
        replaceEvery(result, HorizontalEllipsis, ThreePeriods);
    return result;
}

} // namespace qly

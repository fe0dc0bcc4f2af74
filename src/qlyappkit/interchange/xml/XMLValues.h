#pragma once
// Text forms of the values the framework stores in XML elements and attributes. Each writer has a reader that
// accepts what it writes; readers never fail: bad or empty text gives the fallback documented per function.
// Integers are parsed at native 64-bit width (only very old toolkits read them as 32 bits).
#include <qlyappkit/platform/text/Range.h>
#include <qlyappkit/platform/values/Color.h>

#include <QDateTime>
#include <QList>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <QUrl>
#include <QVariant>

#include <optional>
#include <set>

namespace qly {

/// A set of non-negative indexes in ascending order.
using IndexSet = std::set<qsizetype>;

/// The texts of true and false.
inline const QString XQXMLYesString = QStringLiteral("Yes");
inline const QString XQXMLNoString = QStringLiteral("No");
/// Logged by the point and size readers when their text does not hold two parts.
inline const QString XQPointFromXMLStringValueIncorrectClassMessage =
    QStringLiteral("*** XQPointFromXMLStringValue passed incorrect class. ***");
/// The date form: "2026-11-22 14:05:09 +0100".
inline const QString XQXMLDateFormatDescription = QStringLiteral("yyyy-MM-dd HH:mm:ss Z");

/// Index-set and index-array readers stop adding indexes after this many, so that a damaged text such as
/// "0-999999999999" cannot exhaust memory.
inline constexpr qsizetype XQMaximumIndexCountFromXMLStringValue = qsizetype(1) << 20;

// Floating-point numbers.

/// "%f" (six decimals, C rounding), then trailing zeros cut; ".0" when no decimal is left:
/// 2.5 → "2.5", 2 → "2.0", 0.125 → "0.125", 1e-7 → "0.0". Infinity and NaN give "inf" and "nan".
QString XQStringFromFloat(float value);
/// The same form for a double.
QString XQStringFromDouble(double value);
QString XQXMLStringValueFromFloat(float value);
/// Empty → 0; otherwise the text's leading float value.
float XQFloatFromXMLStringValue(const QString& text);
QString XQXMLStringValueFromDouble(double value);
/// Empty → 0; otherwise the text's leading double value.
double XQDoubleFromXMLStringValue(const QString& text);

// Integers.

/// Decimal digits with a leading "-" when negative.
QString XQXMLStringValueFromInteger(qint64 value);
/// Empty → 0; otherwise the leading integer (clamped to the 64-bit limits).
qint64 XQIntegerFromXMLStringValue(const QString& text);
QString XQXMLStringValueFromUnsigned(quint64 value);
/// Empty → 0; otherwise the leading integer; a negative value reads as 0.
quint64 XQUnsignedFromXMLStringValue(const QString& text);

// Truth values.

/// "Yes" for true, "No" for false.
QString XQXMLStringValueFromBool(bool value);
/// True only for "yes" in any letter case; "1", "true" and " yes" are false.
bool XQBoolFromXMLStringValue(const QString& text);

// Colours.

/// Red, green and blue in the float form joined by single blanks ("1.0 0.5 0.0"); alpha is not written.
/// Components are clamped to 0–1 (NaN gives 0), so what is written reads back as written. No colour →
/// empty text.
QString XQXMLStringValueFromColor(const std::optional<Color>& color);
/// Exactly three blank-separated parts → an opaque colour with those components clamped to 0–1, as
/// calibrated colours are ("1e39 -2 0.5" → 1, 0, 0.5); anything else → nothing.
std::optional<Color> XQColorFromXMLStringValue(const QString& text);

// Dates.

/// "yyyy-MM-dd HH:mm:ss Z" in the date's own offset from UTC ("2026-11-22 14:05:09 +0100"); an invalid
/// date → empty text.
QString XQXMLStringValueFromDate(const QDateTime& date);
/// The date with the offset exactly as written ("+hhmm", also "+hh:mm"); empty or unparseable text →
/// the current date and time, never an invalid date.
QDateTime XQDateFromXMLStringValue(const QString& text);

// URLs.

/// A QUrl gives its absolute, fully encoded text; a QString is first percent-escaped as UTF-8 (characters
/// that may not stand in a URL, "%" included) and made a URL. Anything else, or an invalid URL → empty text.
QString XQXMLStringValueFromURL(const QVariant& url);
/// Empty → an empty (invalid) QUrl; otherwise the URL read from the text (leniently: stray blanks are
/// escaped).
QUrl XQURLFromXMLStringValue(const QString& text);

// Ranges, points and sizes.

/// "location,length" in decimal; a negative location or length gives "0,0".
QString XQXMLStringValueFromRange(Range range);
/// Exactly two comma-separated parts, else {0, 0}; a negative location gives {0, 0}; a negative length 0.
Range XQRangeFromXMLStringValue(const QString& text);

/// x and y in the float form joined by "," ("1.5,-2.0").
QString XQXMLStringValueFromPoint(QPointF point);
/// x and y from the first two comma-separated parts' float values (further parts are ignored). When the
/// text does not split into two parts (empty text or no comma) the point-reader message is logged with
/// qWarning() and the missing coordinates are 0.
QPointF XQPointFromXMLStringValue(const QString& text);
/// Width and height as for a point.
QString XQXMLStringValueFromSize(QSizeF size);
/// As the point reader (and the same message).
QSizeF XQSizeFromXMLStringValue(const QString& text);

// Index sets and arrays of indexes.

/// Ascending indexes separated by ", ", each run of consecutive indexes as "first-last": {1,3,4,5,9} →
/// "1, 3-5, 9". Negative indexes cannot be written ("-" is the run separator) and are left out.
QString XQXMLStringValueFromIndexes(const IndexSet& indexes);
/// Parts split at ", ": "a-b" adds a..b (nothing when a > b), any other part its integer value. Empty → {}.
IndexSet XQIndexesFromXMLStringValue(const QString& text);
/// The same form over a list in its own order: a run continues only while each number is the previous
/// plus one ({3,4,4,2} → "3-4, 4, 2"). Entries that are not numbers (strings, bools, non-finite values) and
/// negative numbers are skipped; floating values are truncated toward zero.
QString XQXMLStringValueFromArrayOfIndexes(const QVariantList& numbers);
/// The parts as for index sets, appended in order with duplicates kept. Empty → {}.
QList<qint64> XQArrayOfIndexesFromStringValue(const QString& text);

} // namespace qly

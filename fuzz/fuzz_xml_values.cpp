// Fuzz target for the XML value readers: the input, as UTF-8 text, is given to every reader of
// XMLValues.h, none of which may fail or take more than time and memory bounded by the text (index
// readers stop at their budget). Each value read is written and read again, and must come back
// equal: exactly for integers, truth values, ranges, index sets and lists; for floating values,
// colours, points, sizes, dates and URLs the written text is a fixed point (written again, it is the
// same text), since their text forms round. Colours always read within 0-1.
#include "FuzzSupport.h"

#include <cmath>

#include <qlyappkit/interchange/xml/XMLValues.h>

using namespace qly;

namespace {

// A written text that must be written the same once read back.
template <typename Read, typename Write> void checkFixedPoint(const QString& written, Read read, Write write)
{
    QLY_FUZZ_CHECK(write(read(written)) == written);
}

bool finite(QPointF p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));

    const float f = XQFloatFromXMLStringValue(text);
    if (std::isfinite(f))
        checkFixedPoint(XQXMLStringValueFromFloat(f), XQFloatFromXMLStringValue, XQXMLStringValueFromFloat);
    const double d = XQDoubleFromXMLStringValue(text);
    if (std::isfinite(d))
        checkFixedPoint(XQXMLStringValueFromDouble(d), XQDoubleFromXMLStringValue, XQXMLStringValueFromDouble);

    const qint64 integer = XQIntegerFromXMLStringValue(text);
    QLY_FUZZ_CHECK(XQIntegerFromXMLStringValue(XQXMLStringValueFromInteger(integer)) == integer);
    const quint64 unsignedValue = XQUnsignedFromXMLStringValue(text);
    QLY_FUZZ_CHECK(XQUnsignedFromXMLStringValue(XQXMLStringValueFromUnsigned(unsignedValue)) == unsignedValue);
    const bool truth = XQBoolFromXMLStringValue(text);
    QLY_FUZZ_CHECK(XQBoolFromXMLStringValue(XQXMLStringValueFromBool(truth)) == truth);

    if (const std::optional<Color> colour = XQColorFromXMLStringValue(text)) {
        for (double component : {colour->redComponent(), colour->greenComponent(), colour->blueComponent()})
            QLY_FUZZ_CHECK(component >= 0 && component <= 1);
        QLY_FUZZ_CHECK(colour->alphaComponent() == 1);
        const QString written = XQXMLStringValueFromColor(colour);
        checkFixedPoint(written, XQColorFromXMLStringValue, XQXMLStringValueFromColor);
        const std::optional<Color> back = XQColorFromXMLStringValue(written);
        QLY_FUZZ_CHECK(back);
        QLY_FUZZ_CHECK(std::abs(back->redComponent() - colour->redComponent()) < 1e-6);
        QLY_FUZZ_CHECK(std::abs(back->greenComponent() - colour->greenComponent()) < 1e-6);
        QLY_FUZZ_CHECK(std::abs(back->blueComponent() - colour->blueComponent()) < 1e-6);
    }

    const QDateTime date = XQDateFromXMLStringValue(text);
    QLY_FUZZ_CHECK(date.isValid());
    checkFixedPoint(XQXMLStringValueFromDate(date), XQDateFromXMLStringValue, XQXMLStringValueFromDate);

    const QUrl url = XQURLFromXMLStringValue(text);
    const auto writeURL = [](const QUrl& u) { return XQXMLStringValueFromURL(QVariant(u)); };
    if (const QString written = writeURL(url); !written.isEmpty())
        checkFixedPoint(written, XQURLFromXMLStringValue, writeURL);
    if (const QString escaped = XQXMLStringValueFromURL(QVariant(text)); !escaped.isEmpty())
        checkFixedPoint(escaped, XQURLFromXMLStringValue, writeURL);

    const Range range = XQRangeFromXMLStringValue(text);
    QLY_FUZZ_CHECK(range.location >= 0 && range.length >= 0);
    QLY_FUZZ_CHECK(XQRangeFromXMLStringValue(XQXMLStringValueFromRange(range)) == range);

    const QPointF point = XQPointFromXMLStringValue(text);
    if (finite(point))
        checkFixedPoint(XQXMLStringValueFromPoint(point), XQPointFromXMLStringValue, XQXMLStringValueFromPoint);
    const QSizeF sizeValue = XQSizeFromXMLStringValue(text);
    if (finite(QPointF(sizeValue.width(), sizeValue.height())))
        checkFixedPoint(XQXMLStringValueFromSize(sizeValue), XQSizeFromXMLStringValue, XQXMLStringValueFromSize);

    // A short text can name a million indexes (the readers' budget); those are read, but written and
    // read again only when fewer, to keep the run fast.
    constexpr qsizetype roundTripLimit = 1 << 14;
    const IndexSet indexes = XQIndexesFromXMLStringValue(text);
    QLY_FUZZ_CHECK(qsizetype(indexes.size()) <= XQMaximumIndexCountFromXMLStringValue);
    if (qsizetype(indexes.size()) <= roundTripLimit)
        QLY_FUZZ_CHECK(XQIndexesFromXMLStringValue(XQXMLStringValueFromIndexes(indexes)) == indexes);
    const QList<qint64> list = XQArrayOfIndexesFromStringValue(text);
    QLY_FUZZ_CHECK(list.size() <= XQMaximumIndexCountFromXMLStringValue);
    if (list.size() > roundTripLimit)
        return 0;
    QVariantList numbers;
    numbers.reserve(list.size());
    for (qint64 index : list) {
        QLY_FUZZ_CHECK(index >= 0); // "-" separates a run's bounds, so no part reads negative
        numbers.append(index);
    }
    QLY_FUZZ_CHECK(XQArrayOfIndexesFromStringValue(XQXMLStringValueFromArrayOfIndexes(numbers)) == list);
    return 0;
}

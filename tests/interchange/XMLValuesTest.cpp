#include <qlyappkit/interchange/xml/XMLValues.h>

#include <QStringList>
#include <algorithm>

#include <cmath>
#include <limits>

using namespace qly;

namespace {

// Collects what is logged while it lives.
class LogCapture {
public:
    LogCapture()
    {
        s_messages.clear();
        m_previous = qInstallMessageHandler(&LogCapture::handler);
    }
    ~LogCapture() { qInstallMessageHandler(m_previous); }
    const QStringList& messages() const { return s_messages; }

private:
    static void handler(QtMsgType, const QMessageLogContext&, const QString& message) { s_messages << message; }
    static inline QStringList s_messages;
    QtMessageHandler m_previous = nullptr;
};

} // namespace

TEST(XMLValues, FloatFormCutsTrailingZerosButKeepsOneDecimal)
{
    EXPECT_EQ(XQStringFromFloat(2.5f), u"2.5");
    EXPECT_EQ(XQStringFromFloat(2.0f), u"2.0");
    EXPECT_EQ(XQStringFromFloat(0.125f), u"0.125");
    EXPECT_EQ(XQStringFromFloat(1.0f), u"1.0");
    EXPECT_EQ(XQStringFromFloat(0.1f), u"0.1");
    EXPECT_EQ(XQStringFromFloat(100.25f), u"100.25");
    EXPECT_EQ(XQStringFromFloat(0.0f), u"0.0");
    EXPECT_EQ(XQStringFromFloat(10.0f), u"10.0"); // zeros before the point stay
    EXPECT_EQ(XQStringFromFloat(1e-7f), u"0.0");
    EXPECT_EQ(XQStringFromFloat(-2.5f), u"-2.5");
    EXPECT_EQ(XQStringFromFloat(-1e-7f), u"-0.0");
    EXPECT_EQ(XQStringFromFloat(-300.0f), u"-300.0");
    // The float's own binary value is what gets printed.
    EXPECT_EQ(XQStringFromFloat(123456.789f), u"123456.789062");
    EXPECT_EQ(XQXMLStringValueFromFloat(0.75f), u"0.75");

    EXPECT_EQ(XQStringFromDouble(2.5), u"2.5");
    EXPECT_EQ(XQStringFromDouble(2.0), u"2.0");
    EXPECT_EQ(XQStringFromDouble(0.0000001), u"0.0");
    EXPECT_EQ(XQStringFromDouble(123456.789), u"123456.789");
    EXPECT_EQ(XQStringFromDouble(1e30), u"1000000000000000019884624838656.0");
    EXPECT_EQ(XQStringFromDouble(std::numeric_limits<double>::infinity()), u"inf");
    EXPECT_EQ(XQStringFromDouble(-std::numeric_limits<double>::infinity()), u"-inf");
    EXPECT_EQ(XQXMLStringValueFromDouble(-0.5), u"-0.5");
}

TEST(XMLValues, FloatFormRoundsAsCDoes)
{
    // 0.1234565 as a double lies just below the halfway point, as a float just above it.
    EXPECT_EQ(XQStringFromDouble(0.1234565), u"0.123456");
    EXPECT_EQ(XQStringFromFloat(0.1234565f), u"0.123457");
    EXPECT_EQ(XQStringFromDouble(2.0 / 3.0), u"0.666667");
    EXPECT_EQ(XQStringFromDouble(1.0000005), u"1.000001");
    EXPECT_EQ(XQStringFromFloat(1.0000005f), u"1.0");
    EXPECT_EQ(XQStringFromDouble(0.9999996), u"1.0"); // carries into the integer part
    // 2^-7 is exactly halfway at the seventh decimal: ties go to even.
    EXPECT_EQ(XQStringFromDouble(0.0078125), u"0.007812");
    EXPECT_EQ(XQStringFromDouble(-0.0078125), u"-0.007812");
}

TEST(XMLValues, FloatAndDoubleReaders)
{
    EXPECT_EQ(XQFloatFromXMLStringValue(QString()), 0.0f);
    EXPECT_EQ(XQFloatFromXMLStringValue(u""_qs), 0.0f);
    EXPECT_EQ(XQFloatFromXMLStringValue(u"2.5"_qs), 2.5f);
    EXPECT_EQ(XQFloatFromXMLStringValue(u"-0.125"_qs), -0.125f);
    EXPECT_EQ(XQFloatFromXMLStringValue(u" 12pt"_qs), 12.0f);
    EXPECT_EQ(XQFloatFromXMLStringValue(u"wide"_qs), 0.0f);
    EXPECT_EQ(XQDoubleFromXMLStringValue(u""_qs), 0.0);
    EXPECT_EQ(XQDoubleFromXMLStringValue(u"100.25"_qs), 100.25);
    EXPECT_EQ(XQDoubleFromXMLStringValue(u"1e-3"_qs), 0.001);

    // Writing what was read gives the same text back.
    for (const QString& text : {u"0.1"_qs, u"123456.789"_qs, u"-42.000001"_qs, u"0.333333"_qs, u"7.0"_qs})
        EXPECT_EQ(XQStringFromDouble(XQDoubleFromXMLStringValue(text)), text);
    for (const QString& text : {u"0.1"_qs, u"0.123457"_qs, u"612.0"_qs, u"-0.5"_qs})
        EXPECT_EQ(XQStringFromFloat(XQFloatFromXMLStringValue(text)), text);
}

TEST(XMLValues, IntegersAndUnsigned)
{
    EXPECT_EQ(XQXMLStringValueFromInteger(0), u"0");
    EXPECT_EQ(XQXMLStringValueFromInteger(-42), u"-42");
    EXPECT_EQ(XQXMLStringValueFromInteger(std::numeric_limits<qint64>::min()), u"-9223372036854775808");
    EXPECT_EQ(XQIntegerFromXMLStringValue(u""_qs), 0);
    EXPECT_EQ(XQIntegerFromXMLStringValue(u"  -7 items"_qs), -7);
    EXPECT_EQ(XQIntegerFromXMLStringValue(u"12.9"_qs), 12);
    // Native width: no 32-bit wrap.
    EXPECT_EQ(XQIntegerFromXMLStringValue(u"4294967296"_qs), qint64(4294967296));
    for (qint64 value : {qint64(0), qint64(-1), qint64(2147483648), std::numeric_limits<qint64>::max(),
                         std::numeric_limits<qint64>::min()})
        EXPECT_EQ(XQIntegerFromXMLStringValue(XQXMLStringValueFromInteger(value)), value);

    EXPECT_EQ(XQXMLStringValueFromUnsigned(std::numeric_limits<quint64>::max()), u"18446744073709551615");
    EXPECT_EQ(XQUnsignedFromXMLStringValue(u"18446744073709551615"_qs), std::numeric_limits<quint64>::max());
    EXPECT_EQ(XQUnsignedFromXMLStringValue(u"-5"_qs), 0u);
    EXPECT_EQ(XQUnsignedFromXMLStringValue(u""_qs), 0u);
    EXPECT_EQ(XQUnsignedFromXMLStringValue(u"17"_qs), 17u);
}

TEST(XMLValues, TruthValues)
{
    EXPECT_EQ(XQXMLStringValueFromBool(true), u"Yes");
    EXPECT_EQ(XQXMLStringValueFromBool(false), u"No");
    for (const QString& text : {u"yes"_qs, u"Yes"_qs, u"YES"_qs, u"yEs"_qs})
        EXPECT_TRUE(XQBoolFromXMLStringValue(text)) << text.toStdString();
    for (const QString& text : {u"1"_qs, u"true"_qs, u"Y"_qs, u" yes"_qs, u"yes "_qs, u"No"_qs, u""_qs, u"yess"_qs})
        EXPECT_FALSE(XQBoolFromXMLStringValue(text)) << text.toStdString();
}

TEST(XMLValues, Colours)
{
    EXPECT_EQ(XQXMLStringValueFromColor(Color(1, 0.5, 0.25)), u"1.0 0.5 0.25");
    EXPECT_EQ(XQXMLStringValueFromColor(Color(0.1, 0.2, 0.3)), u"0.1 0.2 0.3");
    EXPECT_EQ(XQXMLStringValueFromColor(std::nullopt), u"");

    // Alpha is not written and the colour reads back opaque.
    const QString half = XQXMLStringValueFromColor(Color(1, 0.5, 0.25, 0.5));
    EXPECT_EQ(half, u"1.0 0.5 0.25");
    EXPECT_EQ(XQColorFromXMLStringValue(half), Color(1, 0.5, 0.25, 1.0));

    const auto read = XQColorFromXMLStringValue(u"0.1 0.2 0.3"_qs);
    ASSERT_TRUE(read);
    EXPECT_DOUBLE_EQ(read->redComponent(), 0.1);
    EXPECT_DOUBLE_EQ(read->greenComponent(), 0.2);
    EXPECT_DOUBLE_EQ(read->blueComponent(), 0.3);
    EXPECT_EQ(read->alphaComponent(), 1.0);
    EXPECT_EQ(XQXMLStringValueFromColor(read), u"0.1 0.2 0.3");

    EXPECT_EQ(XQColorFromXMLStringValue(u"0.2 0.4 x"_qs), Color(0.2, 0.4, 0)); // a bad part reads as 0

    for (const QString& text : {u""_qs, u"1 0"_qs, u"1 0 0 1"_qs, u"1  0 0"_qs, u"1,0,0"_qs, u" 1 0 0"_qs})
        EXPECT_FALSE(XQColorFromXMLStringValue(text)) << text.toStdString();
}

TEST(XMLValues, ColourComponentsStayWithinZeroToOne)
{
    // Read: clamped as calibrated colours are; overflowing exponents are no exception.
    EXPECT_EQ(XQColorFromXMLStringValue(u"1e39 0 0"_qs), Color(1, 0, 0));
    EXPECT_EQ(XQColorFromXMLStringValue(u"-0.5 2 0.25"_qs), Color(0, 1, 0.25));
    EXPECT_EQ(XQColorFromXMLStringValue(u"1e999 -1e999 -0"_qs), Color(1, 0, 0));
    EXPECT_EQ(XQColorFromXMLStringValue(u"inf nan -inf"_qs), Color(0, 0, 0));

    // Written: clamped too, so no component is written as "inf", "nan" or "-0.0".
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(XQXMLStringValueFromColor(Color(1e39, -3, nan)), u"1.0 0.0 0.0");
    EXPECT_EQ(XQXMLStringValueFromColor(Color(infinity, -infinity, -0.0)), u"1.0 0.0 0.0");

    // What is written reads back as what was stored, and writes again the same.
    for (const Color& stored : {Color(1e39, 0, 0), Color(0.123456789, -2, 0.9999996), Color(1.0 / 3, 0.5, nan)}) {
        const QString written = XQXMLStringValueFromColor(stored);
        const std::optional<Color> read = XQColorFromXMLStringValue(written);
        ASSERT_TRUE(read) << written.toStdString();
        EXPECT_EQ(XQXMLStringValueFromColor(read), written);
        for (auto component : {&Color::redComponent, &Color::greenComponent, &Color::blueComponent}) {
            const double value = (stored.*component)();
            EXPECT_NEAR(((*read).*component)(), std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0), 5e-7)
                << written.toStdString();
        }
    }
}

TEST(XMLValues, DatesKeepTheirOffset)
{
    const QDateTime date(QDate(2026, 11, 22), QTime(14, 5, 9), Qt::OffsetFromUTC, 3600);
    EXPECT_EQ(XQXMLStringValueFromDate(date), u"2026-11-22 14:05:09 +0100");

    const QDateTime read = XQDateFromXMLStringValue(u"2026-11-22 14:05:09 +0100"_qs);
    EXPECT_EQ(read, date);
    EXPECT_EQ(read.offsetFromUtc(), 3600);
    EXPECT_EQ(read.time(), QTime(14, 5, 9));
    EXPECT_EQ(XQXMLStringValueFromDate(read), u"2026-11-22 14:05:09 +0100");

    for (const QString& text : {u"1999-01-02 03:04:05 -0930"_qs, u"2024-02-29 23:59:59 +0545"_qs,
                                u"2000-06-30 00:00:00 +0000"_qs, u"0987-12-31 12:00:00 +1400"_qs})
        EXPECT_EQ(XQXMLStringValueFromDate(XQDateFromXMLStringValue(text)), text);
    EXPECT_EQ(XQDateFromXMLStringValue(u"1999-01-02 03:04:05 -0930"_qs).offsetFromUtc(), -(9 * 3600 + 30 * 60));
    EXPECT_EQ(XQDateFromXMLStringValue(u"2026-11-22 14:05:09 +01:00"_qs), date);

    EXPECT_EQ(XQXMLStringValueFromDate(QDateTime(QDate(2020, 5, 6), QTime(7, 8, 9), Qt::UTC)),
              u"2020-05-06 07:08:09 +0000");
    EXPECT_EQ(XQXMLStringValueFromDate(QDateTime()), u"");
}

TEST(XMLValues, EmptyOrBadDatesReadAsNow)
{
    for (const QString& text :
         {u""_qs, u"yesterday"_qs, u"2026-13-01 00:00:00 +0000"_qs, u"2026-02-30 00:00:00 +0000"_qs,
          u"2026-01-01 25:00:00 +0000"_qs, u"2026-01-01 10:00:00 +2500"_qs, u"2026-01-01 10:00:00 +0160"_qs,
          u"2026-01-01 10:00:00"_qs, u"2026-01-01"_qs}) {
        const QDateTime before = QDateTime::currentDateTime();
        const QDateTime read = XQDateFromXMLStringValue(text);
        const QDateTime after = QDateTime::currentDateTime();
        ASSERT_TRUE(read.isValid()) << text.toStdString();
        EXPECT_GE(read, before) << text.toStdString();
        EXPECT_LE(read, after) << text.toStdString();
    }
}

TEST(XMLValues, URLs)
{
    const QString written = XQXMLStringValueFromURL(u"/Users/me/My Résumé.txt"_qs);
    EXPECT_EQ(written, u"/Users/me/My%20R%C3%A9sum%C3%A9.txt");
    EXPECT_EQ(XQURLFromXMLStringValue(written).path(), u"/Users/me/My Résumé.txt");

    EXPECT_EQ(XQXMLStringValueFromURL(u"http://example.com/a b?q=1&r=ü#part"_qs),
              u"http://example.com/a%20b?q=1&r=%C3%BC#part");
    EXPECT_EQ(XQXMLStringValueFromURL(u"100% sure"_qs), u"100%25%20sure");

    const QUrl url(u"https://example.org/folder/file.html?x=1"_qs);
    EXPECT_EQ(XQXMLStringValueFromURL(url), u"https://example.org/folder/file.html?x=1");
    EXPECT_EQ(XQURLFromXMLStringValue(XQXMLStringValueFromURL(url)), url);
    const QUrl file = QUrl::fromLocalFile(u"/tmp/a b/ñ.rtf"_qs);
    EXPECT_EQ(XQURLFromXMLStringValue(XQXMLStringValueFromURL(file)).toLocalFile(), u"/tmp/a b/ñ.rtf");

    EXPECT_EQ(XQXMLStringValueFromURL(QVariant(42)), u"");
    EXPECT_EQ(XQXMLStringValueFromURL(QVariant()), u"");
    EXPECT_EQ(XQXMLStringValueFromURL(QUrl(u"http://exa mple.com"_qs, QUrl::StrictMode)), u"");

    EXPECT_TRUE(XQURLFromXMLStringValue(u""_qs).isEmpty());
    EXPECT_TRUE(XQURLFromXMLStringValue(QString()).isEmpty());
}

TEST(XMLValues, Ranges)
{
    EXPECT_EQ(XQXMLStringValueFromRange({3, 7}), u"3,7");
    EXPECT_EQ(XQXMLStringValueFromRange({0, 0}), u"0,0");
    EXPECT_EQ(XQXMLStringValueFromRange({-1, 2}), u"0,0");
    EXPECT_EQ(XQXMLStringValueFromRange({2, -1}), u"0,0");
    EXPECT_EQ(XQXMLStringValueFromRange(Range::notFound()), u"2147483647,0");
    EXPECT_EQ(XQRangeFromXMLStringValue(XQXMLStringValueFromRange(Range::notFound())), Range::notFound());

    EXPECT_EQ(XQRangeFromXMLStringValue(u"3,7"_qs), (Range{3, 7}));
    EXPECT_EQ(XQRangeFromXMLStringValue(u" 12, 5"_qs), (Range{12, 5}));
    EXPECT_EQ(XQRangeFromXMLStringValue(u"5"_qs), (Range{0, 0}));
    EXPECT_EQ(XQRangeFromXMLStringValue(u""_qs), (Range{0, 0}));
    EXPECT_EQ(XQRangeFromXMLStringValue(u"1,2,3"_qs), (Range{0, 0}));
    EXPECT_EQ(XQRangeFromXMLStringValue(u"-4,3"_qs), (Range{0, 0}));
    EXPECT_EQ(XQRangeFromXMLStringValue(u"4,-3"_qs), (Range{4, 0}));
    EXPECT_EQ(XQRangeFromXMLStringValue(u"x,y"_qs), (Range{0, 0}));
}

TEST(XMLValues, PointsAndSizes)
{
    EXPECT_EQ(XQXMLStringValueFromPoint({1.5, -2}), u"1.5,-2.0");
    EXPECT_EQ(XQXMLStringValueFromSize({612, 792}), u"612.0,792.0");

    LogCapture log;
    EXPECT_EQ(XQPointFromXMLStringValue(u"1.5,-2.0"_qs), QPointF(1.5, -2));
    EXPECT_EQ(XQSizeFromXMLStringValue(u"612.0,792.0"_qs), QSizeF(612, 792));
    EXPECT_EQ(XQPointFromXMLStringValue(u"1,2,3"_qs), QPointF(1, 2));
    EXPECT_EQ(XQPointFromXMLStringValue(u"a,b"_qs), QPointF(0, 0));
    EXPECT_TRUE(log.messages().isEmpty());

    EXPECT_EQ(XQPointFromXMLStringValue(u"3"_qs), QPointF(3, 0));
    EXPECT_EQ(XQSizeFromXMLStringValue(u""_qs), QSizeF(0, 0));
    ASSERT_EQ(log.messages().size(), 2);
    EXPECT_EQ(log.messages()[0], u"*** XQPointFromXMLStringValue passed incorrect class. ***");
    EXPECT_EQ(log.messages()[1], u"*** XQPointFromXMLStringValue passed incorrect class. ***");

    // Coordinates go through float: what was written reads back as the float value.
    const QPointF point(0.1, 1234.5678);
    const QPointF read = XQPointFromXMLStringValue(XQXMLStringValueFromPoint(point));
    EXPECT_EQ(read.x(), double(0.1f));
    EXPECT_EQ(read.y(), double(1234.5678f));
}

TEST(XMLValues, IndexSets)
{
    EXPECT_EQ(XQXMLStringValueFromIndexes({1, 3, 4, 5, 9}), u"1, 3-5, 9");
    EXPECT_EQ(XQXMLStringValueFromIndexes({}), u"");
    EXPECT_EQ(XQXMLStringValueFromIndexes({7}), u"7");
    EXPECT_EQ(XQXMLStringValueFromIndexes({0, 1}), u"0-1");
    EXPECT_EQ(XQXMLStringValueFromIndexes({2, 4, 6}), u"2, 4, 6");
    EXPECT_EQ(XQXMLStringValueFromIndexes({-3, -2, 0}), u"0");

    EXPECT_EQ(XQIndexesFromXMLStringValue(u"1, 3-5, 9"_qs), (IndexSet{1, 3, 4, 5, 9}));
    EXPECT_EQ(XQIndexesFromXMLStringValue(u"5-3"_qs), IndexSet{});
    EXPECT_EQ(XQIndexesFromXMLStringValue(u"2-2"_qs), IndexSet{2});
    EXPECT_EQ(XQIndexesFromXMLStringValue(u""_qs), IndexSet{});
    EXPECT_EQ(XQIndexesFromXMLStringValue(u"9, 1, 3-4, 3"_qs), (IndexSet{1, 3, 4, 9}));
    EXPECT_EQ(XQIndexesFromXMLStringValue(u"1,3"_qs), IndexSet{1}); // the separator is ", "

    for (const IndexSet& set : {IndexSet{0}, IndexSet{0, 1, 2, 10, 11, 20}, IndexSet{5, 1000000}})
        EXPECT_EQ(XQIndexesFromXMLStringValue(XQXMLStringValueFromIndexes(set)), set);
}

TEST(XMLValues, DamagedIndexTextsStayBounded)
{
    EXPECT_EQ(qsizetype(XQIndexesFromXMLStringValue(u"0-999999999999"_qs).size()),
              XQMaximumIndexCountFromXMLStringValue);
    EXPECT_EQ(XQArrayOfIndexesFromStringValue(u"0-999999999999, 5"_qs).size(), XQMaximumIndexCountFromXMLStringValue);
    // A run ending at the largest integer must not wrap around.
    EXPECT_EQ(XQIndexesFromXMLStringValue(u"9223372036854775806-99999999999999999999"_qs),
              (IndexSet{9223372036854775806, 9223372036854775807}));
}

TEST(XMLValues, ArraysOfIndexes)
{
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({1, 3, 4, 5, 9}), u"1, 3-5, 9");
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({3, 4, 4, 2}), u"3-4, 4, 2");
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({5, 4, 3}), u"5, 4, 3");
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({1, 1, 2}), u"1, 1-2");
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({}), u"");
    // Entries that are not numbers are skipped, and a run goes on across them.
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({1, u"x"_qs, 2, QVariant(), true, QVariantList{3}}), u"1-2");
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({qint64(8), 9u, 10.7, std::nan(""), -1, 11.0f}), u"8-11");
    EXPECT_EQ(XQXMLStringValueFromArrayOfIndexes({qint64(4294967296), qint64(4294967297)}), u"4294967296-4294967297");

    EXPECT_EQ(XQArrayOfIndexesFromStringValue(u"3-4, 4, 2"_qs), (QList<qint64>{3, 4, 4, 2}));
    EXPECT_EQ(XQArrayOfIndexesFromStringValue(u"1, 1"_qs), (QList<qint64>{1, 1}));
    EXPECT_EQ(XQArrayOfIndexesFromStringValue(u"5-3, 7"_qs), QList<qint64>{7});
    EXPECT_EQ(XQArrayOfIndexesFromStringValue(u"2-2"_qs), QList<qint64>{2});
    EXPECT_EQ(XQArrayOfIndexesFromStringValue(u""_qs), QList<qint64>{});

    const QVariantList numbers{7, 8, 9, 1, 1, 0, 5, 6};
    QList<qint64> expected;
    for (const QVariant& n : numbers)
        expected << n.toLongLong();
    EXPECT_EQ(XQArrayOfIndexesFromStringValue(XQXMLStringValueFromArrayOfIndexes(numbers)), expected);
}

#include <qlyappkit/platform/strings/NumberParsing.h>

#include <cmath>
#include <limits>

using namespace qly;

TEST(NumberParsing, IntegersReadTheLeadingDigitsAfterBlanksAndSign)
{
    EXPECT_EQ(stringIntValue(u"42"), 42);
    EXPECT_EQ(stringIntValue(u"  \t\n-17xyz"), -17);
    EXPECT_EQ(stringIntValue(u"+8"), 8);
    EXPECT_EQ(stringIntValue(u"\u00A0\u20037"), 7); // Unicode blanks count too
    EXPECT_EQ(stringIntValue(u"12.9"), 12);
    EXPECT_EQ(stringIntValue(u"007"), 7);
    EXPECT_EQ(stringIntValue(u""), 0);
    EXPECT_EQ(stringIntValue(u"abc"), 0);
    EXPECT_EQ(stringIntValue(u"-"), 0);
    EXPECT_EQ(stringIntValue(u"- 5"), 0); // the sign must touch the digits
    EXPECT_EQ(stringIntValue(u"x5"), 0); // digits after other characters are not read
    EXPECT_EQ(stringIntValue(u"\u0663"), 0); // only ASCII digits are digits

    EXPECT_EQ(stringIntegerValue(u"4294967296"), qint64(4294967296));
    EXPECT_EQ(stringIntegerValue(u" -9223372036854775808"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(stringIntegerValue(u"9223372036854775807"), std::numeric_limits<qint64>::max());
}

TEST(NumberParsing, IntegersClampInsteadOfWrapping)
{
    EXPECT_EQ(stringIntValue(u"2147483647"), std::numeric_limits<int>::max());
    EXPECT_EQ(stringIntValue(u"2147483648"), std::numeric_limits<int>::max());
    EXPECT_EQ(stringIntValue(u"-2147483648"), std::numeric_limits<int>::min());
    EXPECT_EQ(stringIntValue(u"-2147483649"), std::numeric_limits<int>::min());
    EXPECT_EQ(stringIntValue(u"99999999999999999999999999"), std::numeric_limits<int>::max());

    EXPECT_EQ(stringIntegerValue(u"9223372036854775808"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(stringIntegerValue(u"-9223372036854775809"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(stringIntegerValue(u"123456789012345678901234567890"), std::numeric_limits<qint64>::max());

    EXPECT_EQ(stringUnsignedIntegerValue(u"18446744073709551615"), std::numeric_limits<quint64>::max());
    EXPECT_EQ(stringUnsignedIntegerValue(u"18446744073709551616"), std::numeric_limits<quint64>::max());
    EXPECT_EQ(stringUnsignedIntegerValue(u"-3"), 0u);
    EXPECT_EQ(stringUnsignedIntegerValue(u" +12x"), 12u);
}

TEST(NumberParsing, DecimalNumbers)
{
    EXPECT_EQ(stringDoubleValue(u"2.5"), 2.5);
    EXPECT_EQ(stringDoubleValue(u"  -0.125 points"), -0.125);
    EXPECT_EQ(stringDoubleValue(u".5"), 0.5);
    EXPECT_EQ(stringDoubleValue(u"-.5"), -0.5);
    EXPECT_EQ(stringDoubleValue(u"3."), 3.0);
    EXPECT_EQ(stringDoubleValue(u"1e3"), 1000.0);
    EXPECT_EQ(stringDoubleValue(u"1.5E-2"), 0.015);
    EXPECT_EQ(stringDoubleValue(u"2e"), 2.0); // an exponent needs digits
    EXPECT_EQ(stringDoubleValue(u"2e+x"), 2.0);
    EXPECT_EQ(stringDoubleValue(u"1,5"), 1.0); // the decimal point is always "."
    EXPECT_EQ(stringDoubleValue(u"0.1"), 0.1); // correctly rounded, not accumulated
    EXPECT_EQ(stringDoubleValue(u""), 0.0);
    EXPECT_EQ(stringDoubleValue(u"."), 0.0);
    EXPECT_EQ(stringDoubleValue(u"inf"), 0.0);
    EXPECT_EQ(stringDoubleValue(u"nan"), 0.0);
    EXPECT_TRUE(std::signbit(stringDoubleValue(u"-0.0")));

    EXPECT_EQ(stringFloatValue(u"0.1"), 0.1f);
    EXPECT_EQ(stringFloatValue(u"16777217"), 16777216.0f);
}

TEST(NumberParsing, DecimalNumbersOutOfRangeSaturate)
{
    EXPECT_EQ(stringDoubleValue(u"1e400"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(stringDoubleValue(u"-1e400"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(stringDoubleValue(u"1e-400"), 0.0);
    EXPECT_EQ(stringDoubleValue(u"1e99999999999999999999999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(stringDoubleValue(u"1e-99999999999999999999999"), 0.0);
    // The fraction's leading zeros count against the exponent: 1e-501 scaled up.
    const QString tiny = u"0."_qs + QString(500, u'0') + u"1"_qs;
    EXPECT_EQ(stringDoubleValue(tiny + u"e100"_qs), 0.0);
    EXPECT_DOUBLE_EQ(stringDoubleValue(tiny + u"e300"_qs), 1e-201);
    EXPECT_EQ(stringDoubleValue(tiny + u"e900"_qs), std::numeric_limits<double>::infinity());
    EXPECT_EQ(stringDoubleValue(QString(400, u'9')), std::numeric_limits<double>::infinity());
    EXPECT_EQ(stringFloatValue(u"1e39"), std::numeric_limits<float>::infinity());
    EXPECT_EQ(stringFloatValue(u"-1e39"), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(stringFloatValue(u"1e-50"), 0.0f);
}

TEST(NumberParsing, TruthValues)
{
    for (const char16_t* text : {u"Y", u"yes", u"T", u"true", u"1", u"9", u"  +007", u"-1", u"00y", u"\n t"})
        EXPECT_TRUE(stringBoolValue(text)) << QString::fromUtf16(text).toStdString();
    for (const char16_t* text : {u"", u"N", u"no", u"false", u"0", u"000", u"-0", u"x1", u"+", u" ", u"0.5", u"on"})
        EXPECT_FALSE(stringBoolValue(text)) << QString::fromUtf16(text).toStdString();
}

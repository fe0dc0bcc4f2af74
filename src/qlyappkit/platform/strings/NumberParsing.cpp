#include <qlyappkit/platform/strings/NumberParsing.h>

#include <qlyappkit/platform/strings/CharacterSets.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace qly {
namespace {

bool isAsciiDigit(QChar c) { return c.unicode() >= u'0' && c.unicode() <= u'9'; }

qsizetype skipBlanks(QStringView text, qsizetype i = 0)
{
    // Every blank the platform skips lies in the BMP, so code units can be tested one by one.
    while (i < text.size() && isWhitespaceOrNewline(text[i].unicode()))
        ++i;
    return i;
}

struct LeadingInteger {
    bool negative = false;
    quint64 magnitude = 0;
    bool overflow = false;
};

LeadingInteger scanInteger(QStringView text)
{
    LeadingInteger result;
    qsizetype i = skipBlanks(text);
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        result.negative = text[i] == u'-';
        ++i;
    }
    constexpr quint64 maxMagnitude = std::numeric_limits<quint64>::max();
    for (; i < text.size() && isAsciiDigit(text[i]); ++i) {
        if (result.overflow)
            continue; // keep consuming so that the whole run of digits counts as one number
        const unsigned digit = text[i].unicode() - u'0';
        if (result.magnitude > (maxMagnitude - digit) / 10)
            result.overflow = true;
        else
            result.magnitude = result.magnitude * 10 + digit;
    }
    return result;
}

template <typename Signed> Signed clampedSigned(const LeadingInteger& n)
{
    using Limits = std::numeric_limits<Signed>;
    if (n.negative) {
        const quint64 limit = quint64(Limits::max()) + 1;
        if (n.overflow || n.magnitude >= limit)
            return Limits::min();
        return Signed(-qint64(n.magnitude));
    }
    if (n.overflow || n.magnitude > quint64(Limits::max()))
        return Limits::max();
    return Signed(n.magnitude);
}

// Exponents beyond this are out of range for any floating type whatever the mantissa; saturating keeps the
// arithmetic below from overflowing on absurd inputs.
constexpr qint64 kExponentSaturation = qint64(1) << 50;

template <typename Float> Float parseDecimal(QStringView text)
{
    const qsizetype n = text.size();
    qsizetype i = skipBlanks(text);
    bool negative = false;
    if (i < n && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }

    std::string digits; // ASCII copy of the number for std::from_chars, which is locale-independent
    bool seenNonZero = false;
    qint64 magnitudeExponent = 0; // decimal exponent of the first non-zero digit, before any "e" part
    qint64 integerDigits = 0;
    for (; i < n && isAsciiDigit(text[i]); ++i) {
        const char c = char(text[i].unicode());
        if (!seenNonZero && c != '0') {
            seenNonZero = true;
            magnitudeExponent = -integerDigits; // corrected once the integer part's length is known
        }
        digits.push_back(c);
        ++integerDigits;
    }
    if (seenNonZero)
        magnitudeExponent += integerDigits - 1;
    qint64 fractionDigits = 0;
    if (i < n && text[i] == u'.' && i + 1 < n && isAsciiDigit(text[i + 1])) {
        if (digits.empty())
            digits.push_back('0');
        digits.push_back('.');
        for (++i; i < n && isAsciiDigit(text[i]); ++i) {
            const char c = char(text[i].unicode());
            ++fractionDigits;
            if (!seenNonZero && c != '0') {
                seenNonZero = true;
                magnitudeExponent = -fractionDigits;
            }
            digits.push_back(c);
        }
    }
    if (integerDigits == 0 && fractionDigits == 0)
        return 0;
    const Float zero = negative ? -Float(0) : Float(0);
    if (!seenNonZero)
        return zero;

    qint64 exponent = 0;
    if (i < n && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype j = i + 1;
        bool negativeExponent = false;
        if (j < n && (text[j] == u'+' || text[j] == u'-')) {
            negativeExponent = text[j] == u'-';
            ++j;
        }
        if (j < n && isAsciiDigit(text[j])) {
            for (; j < n && isAsciiDigit(text[j]); ++j) {
                if (exponent < kExponentSaturation)
                    exponent = exponent * 10 + (text[j].unicode() - u'0');
            }
            if (negativeExponent)
                exponent = -exponent;
            digits.push_back('e');
            digits += std::to_string(exponent);
        }
    }

    Float value = 0;
    const auto result =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        if (magnitudeExponent + exponent > 0)
            return negative ? -std::numeric_limits<Float>::infinity() : std::numeric_limits<Float>::infinity();
        return zero;
    }
    if (result.ec != std::errc())
        return zero;
    return negative ? -value : value;
}

} // namespace

int stringIntValue(QStringView text) { return clampedSigned<int>(scanInteger(text)); }

qint64 stringIntegerValue(QStringView text) { return clampedSigned<qint64>(scanInteger(text)); }

quint64 stringUnsignedIntegerValue(QStringView text)
{
    const LeadingInteger n = scanInteger(text);
    if (n.negative)
        return 0;
    return n.overflow ? std::numeric_limits<quint64>::max() : n.magnitude;
}

double stringDoubleValue(QStringView text) { return parseDecimal<double>(text); }

float stringFloatValue(QStringView text) { return parseDecimal<float>(text); }

bool stringBoolValue(QStringView text)
{
    qsizetype i = skipBlanks(text);
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-'))
        ++i;
    while (i < text.size() && text[i] == u'0')
        ++i;
    if (i >= text.size())
        return false;
    switch (text[i].unicode()) {
    case u'Y':
    case u'y':
    case u'T':
    case u't':
        return true;
    default:
        return text[i].unicode() >= u'1' && text[i].unicode() <= u'9';
    }
}

} // namespace qly

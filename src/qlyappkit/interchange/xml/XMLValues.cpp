#include <qlyappkit/interchange/xml/XMLValues.h>

#include <qlyappkit/platform/strings/NumberParsing.h>

#include <QRegularExpression>
#include <QStringList>

#include <charconv>
#include <cmath>
#include <limits>

namespace qly {
namespace {

const QString kIndexPartSeparator = QStringLiteral(", ");
constexpr QChar kIndexRunSeparator = u'-';
constexpr QChar kPairSeparator = u',';
constexpr QChar kColorSeparator = u' ';
constexpr qsizetype kColorComponentCount = 3;

QString floatForm(double value)
{
    // std::to_chars prints exactly as "%f" does in the C locale, whatever locale the application set.
    char buffer[400]; // the longest double in fixed notation with six decimals is well under this
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 6);
    const std::string_view printed(buffer, result.ptr - buffer);
    const auto dot = printed.find('.');
    if (dot == std::string_view::npos)
        return QString::fromLatin1(printed.data(), qsizetype(printed.size())); // inf, nan
    auto end = printed.size();
    while (end > dot + 1 && printed[end - 1] == '0')
        --end;
    if (end == dot + 1)
        return QString::fromLatin1(printed.data(), qsizetype(dot)) + QStringLiteral(".0");
    return QString::fromLatin1(printed.data(), qsizetype(end));
}

QString pairForm(double first, double second)
{
    return XQStringFromFloat(float(first)) + kPairSeparator + XQStringFromFloat(float(second));
}

std::pair<float, float> pairFromText(const QString& text)
{
    const QStringList parts = text.split(kPairSeparator);
    if (parts.size() < 2)
        qWarning().noquote() << XQPointFromXMLStringValueIncorrectClassMessage;
    const float first = parts.isEmpty() ? 0.0f : stringFloatValue(parts[0]);
    const float second = parts.size() < 2 ? 0.0f : stringFloatValue(parts[1]);
    return {first, second};
}

QString runsForm(const QList<qint64>& indexes)
{
    QStringList parts;
    for (qsizetype i = 0; i < indexes.size();) {
        const qint64 first = indexes[i];
        qint64 last = first;
        for (++i; i < indexes.size() && last < std::numeric_limits<qint64>::max() && indexes[i] == last + 1; ++i)
            last = indexes[i];
        parts << (first == last ? QString::number(first)
                                : QString::number(first) + kIndexRunSeparator + QString::number(last));
    }
    return parts.join(kIndexPartSeparator);
}

// Calls add(index) for every index the text names, in order, until the budget is spent.
template <typename Add> void forEachIndexInText(const QString& text, Add add)
{
    if (text.isEmpty())
        return;
    qsizetype budget = XQMaximumIndexCountFromXMLStringValue;
    const QStringList parts = text.split(kIndexPartSeparator);
    for (const QString& part : parts) {
        if (!part.contains(kIndexRunSeparator)) {
            if (budget-- <= 0)
                return;
            add(stringIntegerValue(part));
            continue;
        }
        const QStringList bounds = part.split(kIndexRunSeparator);
        const qint64 first = stringIntegerValue(bounds.first());
        const qint64 last = stringIntegerValue(bounds.last());
        if (first > last)
            continue;
        for (qint64 index = first;; ++index) { // written so that last == INT64_MAX cannot overflow
            if (budget-- <= 0)
                return;
            add(index);
            if (index == last)
                break;
        }
    }
}

std::optional<qint64> indexFromVariant(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        return value.toLongLong();
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar: {
        const quint64 u = value.toULongLong();
        if (u > quint64(std::numeric_limits<qint64>::max()))
            return std::nullopt;
        return qint64(u);
    }
    case QMetaType::Double:
    case QMetaType::Float: {
        const double d = std::trunc(value.toDouble());
        // 2^63 is the first double past the qint64 range.
        if (!std::isfinite(d) || d >= 9223372036854775808.0 || d < -9223372036854775808.0)
            return std::nullopt;
        return qint64(d);
    }
    default:
        return std::nullopt;
    }
}

const QRegularExpression& dateExpression()
{
    static const QRegularExpression expression(QStringLiteral(
        R"(^\s*([0-9]{4})-([0-9]{2})-([0-9]{2}) ([0-9]{2}):([0-9]{2}):([0-9]{2}) ?([+-])([0-9]{2}):?([0-9]{2})\s*$)"));
    return expression;
}

// Offsets beyond this are not real time zones.
constexpr int kMaximumOffsetSeconds = 14 * 3600;

std::optional<QDateTime> parseDate(const QString& text)
{
    const QRegularExpressionMatch m = dateExpression().match(text);
    if (!m.hasMatch())
        return std::nullopt;
    auto number = [&m](int group) { return m.capturedView(group).toInt(); };
    const QDate date(number(1), number(2), number(3));
    const QTime time(number(4), number(5), number(6));
    const int offsetMinutes = number(9);
    const int offsetSeconds = (number(8) * 3600 + offsetMinutes * 60) * (m.capturedView(7) == u"-" ? -1 : 1);
    if (!date.isValid() || !time.isValid() || offsetMinutes >= 60 || std::abs(offsetSeconds) > kMaximumOffsetSeconds)
        return std::nullopt;
    QDateTime result(date, time, Qt::OffsetFromUTC, offsetSeconds);
    if (!result.isValid())
        return std::nullopt;
    return result;
}

// Characters that keep their meaning in a URL and so stay unescaped; everything else but the unreserved
// letters, digits and "-._~" is percent-escaped, "%" included.
const QByteArray kURLCharactersKept = QByteArrayLiteral("!#$&'()*+,/:;=?@[]");

} // namespace

QString XQStringFromFloat(float value) { return floatForm(double(value)); }

QString XQStringFromDouble(double value) { return floatForm(value); }

QString XQXMLStringValueFromFloat(float value) { return XQStringFromFloat(value); }

float XQFloatFromXMLStringValue(const QString& text) { return text.isEmpty() ? 0.0f : stringFloatValue(text); }

QString XQXMLStringValueFromDouble(double value) { return XQStringFromDouble(value); }

double XQDoubleFromXMLStringValue(const QString& text) { return text.isEmpty() ? 0.0 : stringDoubleValue(text); }

QString XQXMLStringValueFromInteger(qint64 value) { return QString::number(value); }

qint64 XQIntegerFromXMLStringValue(const QString& text) { return text.isEmpty() ? 0 : stringIntegerValue(text); }

QString XQXMLStringValueFromUnsigned(quint64 value) { return QString::number(value); }

quint64 XQUnsignedFromXMLStringValue(const QString& text)
{
    return text.isEmpty() ? 0 : stringUnsignedIntegerValue(text);
}

QString XQXMLStringValueFromBool(bool value) { return value ? XQXMLYesString : XQXMLNoString; }

bool XQBoolFromXMLStringValue(const QString& text) { return text.toUpper() == XQXMLYesString.toUpper(); }

QString XQXMLStringValueFromColor(const std::optional<Color>& color)
{
    if (!color)
        return {};
    // Written as it would read back, so that the text is read as what was stored.
    const Color stored = Color::calibratedRGB(color->redComponent(), color->greenComponent(), color->blueComponent());
    return XQStringFromFloat(float(stored.redComponent())) + kColorSeparator
        + XQStringFromFloat(float(stored.greenComponent())) + kColorSeparator
        + XQStringFromFloat(float(stored.blueComponent()));
}

std::optional<Color> XQColorFromXMLStringValue(const QString& text)
{
    const QStringList parts = text.split(kColorSeparator);
    if (parts.size() != kColorComponentCount)
        return std::nullopt;
    // Read at double precision: the written digits come back exactly, and writing them again gives the
    // same text.
    return Color::calibratedRGB(stringDoubleValue(parts[0]), stringDoubleValue(parts[1]), stringDoubleValue(parts[2]));
}

QString XQXMLStringValueFromDate(const QDateTime& date)
{
    if (!date.isValid())
        return {};
    const QDate day = date.date();
    const QTime time = date.time();
    const int offset = date.offsetFromUtc();
    const int absoluteMinutes = std::abs(offset) / 60;
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d %c%02d%02d", day.year(), day.month(), day.day(),
                             time.hour(), time.minute(), time.second(), offset < 0 ? '-' : '+', absoluteMinutes / 60,
                             absoluteMinutes % 60);
}

QDateTime XQDateFromXMLStringValue(const QString& text)
{
    if (auto date = parseDate(text))
        return *date;
    return QDateTime::currentDateTime();
}

QString XQXMLStringValueFromURL(const QVariant& url)
{
    QUrl result;
    if (url.typeId() == QMetaType::QUrl) {
        result = url.toUrl();
    } else if (url.typeId() == QMetaType::QString) {
        const QByteArray escaped = QUrl::toPercentEncoding(url.toString(), kURLCharactersKept);
        result = QUrl(QString::fromLatin1(escaped), QUrl::StrictMode);
    } else {
        return {};
    }
    if (!result.isValid())
        return {};
    return result.toString(QUrl::FullyEncoded);
}

QUrl XQURLFromXMLStringValue(const QString& text)
{
    if (text.isEmpty())
        return {};
    QUrl url(text, QUrl::TolerantMode);
    return url.isValid() ? url : QUrl();
}

QString XQXMLStringValueFromRange(Range range)
{
    if (range.location < 0 || range.length < 0)
        range = {0, 0};
    return QString::number(range.location) + kPairSeparator + QString::number(range.length);
}

Range XQRangeFromXMLStringValue(const QString& text)
{
    const QStringList parts = text.split(kPairSeparator);
    if (parts.size() != 2)
        return {0, 0};
    const qint64 location = stringIntegerValue(parts[0]);
    const qint64 length = stringIntegerValue(parts[1]);
    if (location < 0)
        return {0, 0};
    return {location, length < 0 ? 0 : length};
}

QString XQXMLStringValueFromPoint(QPointF point) { return pairForm(point.x(), point.y()); }

QPointF XQPointFromXMLStringValue(const QString& text)
{
    const auto [x, y] = pairFromText(text);
    return {x, y};
}

QString XQXMLStringValueFromSize(QSizeF size) { return pairForm(size.width(), size.height()); }

QSizeF XQSizeFromXMLStringValue(const QString& text)
{
    const auto [width, height] = pairFromText(text);
    return {width, height};
}

QString XQXMLStringValueFromIndexes(const IndexSet& indexes)
{
    QList<qint64> ordered;
    for (auto it = indexes.lower_bound(0); it != indexes.end(); ++it)
        ordered.append(*it);
    return runsForm(ordered);
}

IndexSet XQIndexesFromXMLStringValue(const QString& text)
{
    IndexSet result;
    forEachIndexInText(text, [&result](qint64 index) { result.insert(index); });
    return result;
}

QString XQXMLStringValueFromArrayOfIndexes(const QVariantList& numbers)
{
    QList<qint64> indexes;
    indexes.reserve(numbers.size());
    for (const QVariant& value : numbers) {
        const std::optional<qint64> index = indexFromVariant(value);
        if (index && *index >= 0)
            indexes.append(*index);
    }
    return runsForm(indexes);
}

QList<qint64> XQArrayOfIndexesFromStringValue(const QString& text)
{
    QList<qint64> result;
    forEachIndexInText(text, [&result](qint64 index) { result.append(index); });
    return result;
}

} // namespace qly

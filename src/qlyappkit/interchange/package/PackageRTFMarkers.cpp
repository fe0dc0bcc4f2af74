#include <qlyappkit/interchange/package/PackageRTFMarkers_p.h>

#include <algorithm>

namespace qly::packagemarkers {

namespace {

// Numbers with more digits than this are never ours, so they need not be read.
constexpr qsizetype MaximumDigits = 15;

int digitValue(QChar c) { return c >= u'0' && c <= u'9' ? c.unicode() - u'0' : -1; }
int digitValue(char c) { return c >= '0' && c <= '9' ? c - '0' : -1; }

template <typename View> qsizetype numberAt(View text, qsizetype index, View start, View end, qsizetype* length)
{
    if (index < 0 || !text.sliced(index).startsWith(start))
        return -1;
    qsizetype i = index + start.size();
    qsizetype number = 0;
    const qsizetype digitsStart = i;
    while (i < text.size() && digitValue(text[i]) >= 0) {
        if (i - digitsStart >= MaximumDigits)
            return -1;
        number = number * 10 + digitValue(text[i]);
        ++i;
    }
    if (i == digitsStart || !text.sliced(i).startsWith(end))
        return -1;
    if (length)
        *length = i + end.size() - index;
    return number;
}

template <typename View> qsizetype firstFree(View text, View start, View end)
{
    qsizetype next = 0;
    for (qsizetype at = text.indexOf(start); at >= 0; at = text.indexOf(start, at + 1)) {
        const qsizetype number = numberAt(text, at, start, end, nullptr);
        next = std::max(next, number + 1);
    }
    return next;
}

} // namespace

qsizetype firstFreeMarkerNumber(QStringView text, QStringView start, QStringView end)
{
    return firstFree(text, start, end);
}

qsizetype firstFreeMarkerNumber(QByteArrayView text, QByteArrayView start, QByteArrayView end)
{
    return firstFree(text, start, end);
}

qsizetype markerNumberAt(QStringView text, qsizetype index, QStringView start, QStringView end, qsizetype* length)
{
    return numberAt(text, index, start, end, length);
}

qsizetype markerNumberAt(QByteArrayView text, qsizetype index, QByteArrayView start, QByteArrayView end,
                         qsizetype* length)
{
    return numberAt(text, index, start, end, length);
}

} // namespace qly::packagemarkers

#pragma once
// Growable arrays of rectangles and of floats, as the views keep their card and page rectangles and
// row origins: a list and a count, grown one element at a time.
#include <QRectF>
#include <vector>

namespace qly {

struct XQRectArray {
    std::vector<QRectF> rects;
    qsizetype count() const { return qsizetype(rects.size()); }
    const QRectF& operator[](qsizetype index) const { return rects[size_t(index)]; }
};

struct XQFloatArray {
    std::vector<double> floats;
    qsizetype count() const { return qsizetype(floats.size()); }
    double operator[](qsizetype index) const { return floats[size_t(index)]; }
};

/// Makes the array empty, ready for use.
void XQInitRectArray(XQRectArray* array);
/// Appends a rectangle.
void XQAddRectToArray(XQRectArray* array, const QRectF& rect);
/// Removes every rectangle and releases the memory.
void XQEmptyRectArray(XQRectArray* array);

void XQInitFloatArray(XQFloatArray* array);
void XQAddFloatToArray(XQFloatArray* array, double value);
void XQEmptyFloatArray(XQFloatArray* array);

} // namespace qly

#include <qlyappkit/geometry/XQGeometryArrays.h>

namespace qly {

void XQInitRectArray(XQRectArray* array)
{
    if (array)
        array->rects.clear();
}

void XQAddRectToArray(XQRectArray* array, const QRectF& rect)
{
    if (array)
        array->rects.push_back(rect);
}

void XQEmptyRectArray(XQRectArray* array)
{
    if (array)
        std::vector<QRectF>().swap(array->rects);
}

void XQInitFloatArray(XQFloatArray* array)
{
    if (array)
        array->floats.clear();
}

void XQAddFloatToArray(XQFloatArray* array, double value)
{
    if (array)
        array->floats.push_back(value);
}

void XQEmptyFloatArray(XQFloatArray* array)
{
    if (array)
        std::vector<double>().swap(array->floats);
}

} // namespace qly

#pragma once
// Compares rich text the way a trip through RTF can keep it: equal characters, and for every
// attribute the expected text sets, an equal value at every character (fonts by name, size and
// traits; colours to 1/255 with alpha ignored). Attributes the reader adds on its own (a default font,
// a paragraph style) are allowed.
#include <gtest/gtest.h>

#include <cmath>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly::richtext {

inline bool sameRichValue(const QVariant& expected, const QVariant& actual)
{
    if (expected.metaType() == QMetaType::fromType<Color>()) {
        if (actual.metaType() != QMetaType::fromType<Color>())
            return false;
        const Color e = expected.value<Color>(), a = actual.value<Color>();
        auto near = [](double x, double y) { return std::abs(x - y) <= 1.0 / 255 + 1e-9; };
        return near(e.redComponent(), a.redComponent()) && near(e.greenComponent(), a.greenComponent())
            && near(e.blueComponent(), a.blueComponent());
    }
    if (expected.metaType() == QMetaType::fromType<Font>()) {
        if (actual.metaType() != QMetaType::fromType<Font>())
            return false;
        const Font e = expected.value<Font>(), a = actual.value<Font>();
        return e.familyName() == a.familyName() && e.pointSize() == a.pointSize() && e.traits() == a.traits();
    }
    return expected == actual;
}

inline ::testing::AssertionResult sameRichText(const AttributedString& actual, const AttributedString& expected)
{
    if (actual.string() != expected.string())
        return ::testing::AssertionFailure() << "characters differ: \"" << actual.string().toStdString()
                                             << "\" instead of \"" << expected.string().toStdString() << "\"";
    for (qsizetype i = 0; i < expected.length(); ++i) {
        const Attributes want = expected.attributes(i);
        const Attributes got = actual.attributes(i);
        for (auto it = want.begin(); it != want.end(); ++it) {
            if (!sameRichValue(it.value(), got.value(it.key())))
                return ::testing::AssertionFailure() << "attribute " << it.key().toStdString() << " differs at " << i;
        }
    }
    return ::testing::AssertionSuccess();
}

} // namespace qly::richtext

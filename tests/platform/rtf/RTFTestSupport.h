#pragma once
// Helpers for the RTF tests: reading and writing with failure messages, and a comparison of two
// attributed strings that names the first difference.
#include <gtest/gtest.h>

#include <QVariantMap>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly::rtftest {

inline AttributedString read(const QByteArray& rtf, QVariantMap* documentAttributes = nullptr)
{
    RTFParseResult result;
    std::optional<AttributedString> text = attributedStringFromRTF(rtf, documentAttributes, &result);
    EXPECT_TRUE(text.has_value()) << result.description().toStdString();
    return text.value_or(AttributedString());
}

inline QByteArray write(const AttributedString& text, const QVariantMap& documentAttributes = {})
{
    return RTFFromRange(text, Range{0, text.length()}, documentAttributes);
}

inline QString describe(const ParagraphStyle& s)
{
    QStringList tabs, lists;
    for (const TextTab& t : s.tabStops())
        tabs << QStringLiteral("%1@%2").arg(int(t.alignment)).arg(t.location);
    for (const TextList& l : s.textLists())
        lists << QStringLiteral("%1/%2/%3").arg(l.markerFormat).arg(l.options).arg(l.startingItemNumber);
    return QStringLiteral("align %1 first %2 head %3 tail %4 spacing %5/%6 line %7 min %8 max %9 multiple %10 "
                          "tabs [%11] lists [%12] blocks %13 header %14")
        .arg(int(s.alignment()))
        .arg(s.firstLineHeadIndent())
        .arg(s.headIndent())
        .arg(s.tailIndent())
        .arg(s.paragraphSpacingBefore())
        .arg(s.paragraphSpacing())
        .arg(s.lineSpacing())
        .arg(s.minimumLineHeight())
        .arg(s.maximumLineHeight())
        .arg(s.lineHeightMultiple())
        .arg(tabs.join(QLatin1Char(' ')))
        .arg(lists.join(QLatin1Char(' ')))
        .arg(s.textBlocks().size())
        .arg(s.headerLevel());
}

inline QString describe(const QVariant& v)
{
    if (v.metaType() == QMetaType::fromType<ParagraphStyle>())
        return describe(v.value<ParagraphStyle>());
    if (v.metaType() == QMetaType::fromType<Font>()) {
        const Font f = v.value<Font>();
        return QStringLiteral("%1 %2 %3").arg(f.familyName()).arg(f.pointSize()).arg(f.traits());
    }
    if (v.metaType() == QMetaType::fromType<Color>()) {
        const Color c = v.value<Color>();
        return QStringLiteral("rgba(%1, %2, %3, %4)")
            .arg(c.redComponent())
            .arg(c.greenComponent())
            .arg(c.blueComponent())
            .arg(c.alphaComponent());
    }
    return QString::fromLatin1(v.typeName()) + QLatin1Char(' ') + v.toString();
}

inline QString describe(const Attributes& attributes)
{
    QStringList parts;
    for (auto it = attributes.begin(); it != attributes.end(); ++it)
        parts << it.key() + QLatin1Char('=') + QString::fromLatin1(it.value().typeName());
    return parts.join(QLatin1String(", "));
}

/// Equal characters and attributes; otherwise a failure naming the first differing index and key.
inline ::testing::AssertionResult sameText(const AttributedString& expected, const AttributedString& actual)
{
    const QString e = expected.string(), a = actual.string();
    if (e != a) {
        qsizetype i = 0;
        while (i < e.size() && i < a.size() && e.at(i) == a.at(i))
            ++i;
        return ::testing::AssertionFailure()
            << "characters differ at " << i << ": expected \"" << e.mid(i, 20).toStdString() << "\" got \""
            << a.mid(i, 20).toStdString() << "\" (lengths " << e.size() << ", " << a.size() << ")";
    }
    for (qsizetype i = 0; i < e.size();) {
        Range re, ra;
        const Attributes ea = expected.attributes(i, &re), aa = actual.attributes(i, &ra);
        QStringList keys = ea.keys() + aa.keys();
        keys.removeDuplicates();
        for (const QString& key : keys) {
            if (!(ea.value(key) == aa.value(key)))
                return ::testing::AssertionFailure()
                    << "attribute " << key.toStdString() << " differs at " << i << " (\"" << e.mid(i, 12).toStdString()
                    << "\"): expected " << describe(ea.value(key)).toStdString() << " [" << describe(ea).toStdString()
                    << "], got " << describe(aa.value(key)).toStdString() << " [" << describe(aa).toStdString() << "]";
        }
        i = std::min(re.end(), ra.end());
    }
    return ::testing::AssertionSuccess();
}

} // namespace qly::rtftest

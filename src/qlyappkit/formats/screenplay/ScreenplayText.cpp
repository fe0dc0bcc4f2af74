#include <qlyappkit/formats/screenplay/ScreenplayText.h>

#include <qlyappkit/formats/screenplay/ScreenplayLines.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

#include <QFontDatabase>
#include <QGuiApplication>

namespace qly {

namespace {

constexpr double ScreenplayFontSize = 12;
constexpr double ScreenplayLineHeight = 12;
constexpr double ScreenplayLineSpacing = 1.0;
const QString ScreenplayFontName = QStringLiteral("Courier");
const QString ScreenplayFallbackFontName = QStringLiteral("Courier New");

struct ElementLayout {
    const QString& type;
    TextAlignment alignment;
    double spaceBefore;
    double leftIndent;
    double tailIndent;
    double tabStop; ///< 0: no tab stops
};

// The Transition's tail indent of 440.64 rather than 468 is part of the layout scripts were written
// against, and is kept.
const ElementLayout ElementLayouts[] = {
    {XQPlainTextScreenplaySceneHeading, LeftTextAlignment, 24, 36, 468, 0},
    {XQPlainTextScreenplayAction, LeftTextAlignment, 12, 36, 468, 0},
    {XQPlainTextScreenplayCharacter, LeftTextAlignment, 12, 180, 450, 0},
    {XQPlainTextScreenplayParenthetical, LeftTextAlignment, 0, 144, 324, 0},
    {XQPlainTextScreenplayDialogue, LeftTextAlignment, 0, 108, 360, 0},
    {XQPlainTextScreenplayTransition, RightTextAlignment, 12, 324, 440.64, 0},
    {XQPlainTextScreenplayShot, LeftTextAlignment, 12, 36, 468, 72},
};

Font screenplayFont()
{
    if (std::optional<Font> font = Font::fontWithName(ScreenplayFontName, ScreenplayFontSize))
        return *font;
    if (std::optional<Font> font = Font::fontWithName(ScreenplayFallbackFontName, ScreenplayFontSize))
        return *font;
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        const QString fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
        if (std::optional<Font> font = Font::fontWithName(fixed, ScreenplayFontSize))
            return *font;
    }
    return Font::userFont(ScreenplayFontSize);
}

} // namespace

ScriptElementAttributes defaultPlainTextScreenplayElementAttributes()
{
    const QVariant font = QVariant::fromValue(screenplayFont());
    ScriptElementAttributes attributes;
    for (const ElementLayout& layout : ElementLayouts) {
        ParagraphStyle style;
        style.setAlignment(layout.alignment);
        style.setParagraphSpacingBefore(layout.spaceBefore);
        style.setFirstLineHeadIndent(layout.leftIndent);
        style.setHeadIndent(layout.leftIndent);
        style.setTailIndent(layout.tailIndent);
        style.setLineSpacing(ScreenplayLineSpacing);
        style.setMinimumLineHeight(ScreenplayLineHeight);
        style.setMaximumLineHeight(ScreenplayLineHeight);
        style.setTabStops(layout.tabStop > 0 ? QVector<TextTab>{TextTab{LeftTextAlignment, layout.tabStop}}
                                             : QVector<TextTab>{});
        attributes.insert(
            layout.type,
            Attributes{{FontAttributeName, font}, {ParagraphStyleAttributeName, QVariant::fromValue(style)}});
    }
    return attributes;
}

AttributedString attributedStringFromScreenplayLinesAndTypes(const ScreenplayRecords& records,
                                                             const ScriptElementAttributes& elementAttributes)
{
    AttributedString result;
    ScriptElementAttributes defaults;
    for (const QVariantMap& record : records) {
        const QString text = record.value(XQScreenplayStringKey).toString();
        if (text.isEmpty())
            continue;
        const QString type = record.value(XQScreenplayTypeKey).toString();
        Attributes attributes;
        if (const auto found = elementAttributes.constFind(type); found != elementAttributes.constEnd()) {
            attributes = *found;
        } else {
            if (defaults.isEmpty())
                defaults = defaultPlainTextScreenplayElementAttributes();
            attributes = defaults.value(type);
        }
        // The break belongs to the paragraph it ends and takes its attributes.
        if (!result.isEmpty())
            result.replaceCharacters(Range{result.length(), 0}, QStringLiteral("\n"));
        result.append(text, attributes);
    }
    return result;
}

AttributedString attributedStringWithPlainTextScreenplayString(const QString& string,
                                                               const ScriptElementAttributes& elementAttributes)
{
    return attributedStringFromScreenplayLinesAndTypes(screenplayLinesAndElementTypesFromString(string),
                                                       elementAttributes);
}

QList<AttributedString> scriptComponentTextsFromPlainTextScreenplayString(
    const QString& string, const ScriptElementAttributes& elementAttributes, const QString& elementType)
{
    QList<AttributedString> pieces;
    ScreenplayRecords group;
    auto keep = [&] {
        const AttributedString piece = attributedStringFromScreenplayLinesAndTypes(group, elementAttributes);
        if (!piece.isEmpty())
            pieces.append(piece);
        group.clear();
    };
    for (const QVariantMap& record : screenplayLinesAndElementTypesFromString(string)) {
        if (record.value(XQScreenplayTypeKey).toString() == elementType)
            keep();
        group.append(record);
    }
    keep();
    return pieces;
}

} // namespace qly

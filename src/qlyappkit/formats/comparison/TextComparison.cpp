#include <qlyappkit/formats/comparison/TextComparison.h>

#include <qlyappkit/formats/comparison/DiffEscapes_p.h>
#include <qlyappkit/formats/comparison/DiffOutput_p.h>
#include <qlyappkit/formats/comparison/DiffPreparation_p.h>
#include <qlyappkit/formats/comparison/DiffTool_p.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>

namespace qly {

namespace {

std::optional<Color> colorFor(const QVariantMap& diffAttributes, const QString& key)
{
    const QVariant value = diffAttributes.value(key);
    if (value.metaType() != QMetaType::fromType<Color>())
        return std::nullopt;
    return value.value<Color>();
}

void setOutputError(Error* error)
{
    setError(error, QString(), 0, localized(XQDiffOutputUnreadableDescription),
             localized(XQDiffOutputUnreadableSuggestion));
}

Attributes baseAttributesOf(const AttributedString& newer)
{
    Attributes base;
    if (const std::optional<Font> font = mostUsedFont(newer))
        base.insert(FontAttributeName, QVariant::fromValue(*font));
    if (const std::optional<QVariant> style =
            mostUsedAttributeValue(newer, ParagraphStyleAttributeName, QMetaType::fromType<ParagraphStyle>()))
        base.insert(ParagraphStyleAttributeName, *style);
    return base;
}

} // namespace

Attributes removedTextAttributes(const QVariantMap& diffAttributes)
{
    std::optional<Color> foreground = colorFor(diffAttributes, XQOldTextForegroundColor);
    const std::optional<Color> background = colorFor(diffAttributes, XQOldTextBackgroundColor);
    if (!foreground && !background)
        foreground = XQDiffDefaultRemovedTextColor;
    Attributes attributes;
    attributes.insert(StrikethroughStyleAttributeName, 1);
    if (foreground) {
        attributes.insert(ForegroundColorAttributeName, QVariant::fromValue(*foreground));
        attributes.insert(StrikethroughColorAttributeName, QVariant::fromValue(*foreground));
    }
    if (background)
        attributes.insert(BackgroundColorAttributeName, QVariant::fromValue(*background));
    attributes.insert(XQChangedTextAttributeName, XQChangedTextOld);
    return attributes;
}

Attributes addedTextAttributes(const QVariantMap& diffAttributes)
{
    std::optional<Color> foreground = colorFor(diffAttributes, XQNewTextForegroundColor);
    const std::optional<Color> background = colorFor(diffAttributes, XQNewTextBackgroundColor);
    if (!foreground && !background)
        foreground = XQDiffDefaultAddedTextColor;
    Attributes attributes;
    if (foreground) {
        attributes.insert(ForegroundColorAttributeName, QVariant::fromValue(*foreground));
        attributes.insert(UnderlineStyleAttributeName, 1);
        attributes.insert(UnderlineColorAttributeName, QVariant::fromValue(*foreground));
    }
    if (background)
        attributes.insert(BackgroundColorAttributeName, QVariant::fromValue(*background));
    attributes.insert(XQChangedTextAttributeName, XQChangedTextNew);
    return attributes;
}

std::optional<AttributedString> attributedStringShowingDifferencesFrom(const AttributedString& newer,
                                                                       const AttributedString& older, XQDiffType type,
                                                                       const QVariantMap& diffAttributes, Error* error)
{
    // substring() rather than string(): it does not fill the text's shared cache, so other threads may
    // read the same texts meanwhile.
    QString newText = newer.substring(Range{0, newer.length()});
    QString oldText = older.substring(Range{0, older.length()});
    const std::optional<diffescape::Escapes> escapes = diffescape::escapesFor(oldText, newText);
    if (!escapes) {
        setOutputError(error);
        return std::nullopt;
    }
    if (escapes->any()) {
        newText = diffescape::escaped(newText, *escapes);
        oldText = diffescape::escaped(oldText, *escapes);
    }

    diffoutput::SeparatorStripper stripper;
    const bool ran = difftool::runDiffTool(
        [&](QIODevice& file) { return diffprep::writeSeparatedForDiff(file, oldText, newText, type); },
        [&](QIODevice& file) { return diffprep::writeSeparatedForDiff(file, newText, oldText, type); },
        [&](const QByteArray& block) { stripper.feed(block); }, error);
    if (!ran)
        return std::nullopt;
    const std::optional<QByteArray> stripped = stripper.finish();
    if (!stripped) {
        setOutputError(error);
        return std::nullopt;
    }
    diffoutput::MergedText merged = diffoutput::mergedTextFromStrippedOutput(*stripped);
    diffescape::unescape(merged.text, *escapes);

    AttributedString result(merged.text, baseAttributesOf(newer));
    const Attributes removed = removedTextAttributes(diffAttributes), added = addedTextAttributes(diffAttributes);
    for (const Range& range : merged.removed) {
        if (!range.isEmpty())
            result.addAttributes(removed, range);
    }
    for (const Range& range : merged.added) {
        if (!range.isEmpty())
            result.addAttributes(added, range);
    }
    return result;
}

} // namespace qly

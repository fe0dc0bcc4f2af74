// Fuzz target for the plain-text screenplay reader: any text must be typed and formatted without a
// crash, a hang or undefined behaviour; every element gets one of the seven types and its text
// arrives in the rich text; the pieces of a split hold the same elements.
#include <cstdint>
#include <cstdlib>

#include <QGuiApplication>

#include <qlyappkit/formats/screenplay/PlainTextSyncing.h>
#include <qlyappkit/formats/screenplay/ScreenplayLines.h>
#include <qlyappkit/formats/screenplay/ScreenplayText.h>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString input = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    static const qly::ScriptElementAttributes attributes = qly::defaultPlainTextScreenplayElementAttributes();

    const qly::ScreenplayRecords records = qly::screenplayLinesAndElementTypesFromString(input);
    qsizetype expectedLength = 0;
    for (const QVariantMap& record : records) {
        if (!qly::XQPlainTextScreenplayElementTypes.contains(record.value(qly::XQScreenplayTypeKey).toString()))
            std::abort();
        const QString text = record.value(qly::XQScreenplayStringKey).toString();
        if (text.isEmpty())
            std::abort(); // blank lines are never elements
        expectedLength += text.size() + (expectedLength > 0 ? 1 : 0);
    }
    const qly::AttributedString formatted = qly::attributedStringFromScreenplayLinesAndTypes(records, attributes);
    if (formatted.length() != expectedLength || !formatted.checkInvariants())
        std::abort();

    qsizetype piecesLength = 0;
    const QList<qly::AttributedString> scenes = qly::scriptComponentTextsFromPlainTextScreenplayString(
        input, attributes, qly::XQPlainTextScreenplaySceneHeading);
    for (const qly::AttributedString& scene : scenes)
        piecesLength += scene.length();
    // The pieces hold every element; only the breaks between pieces are gone.
    if (piecesLength + std::max<qsizetype>(0, scenes.size() - 1) != formatted.length())
        std::abort();

    if (qly::stringByRemovingExtraNewlines(input).size() > input.size()
        || qly::stringByReplacingNewlinesWithSpaces(input).size() > input.size())
        std::abort();
    (void)qly::stringByInsertingExtraNewlines(input);
    return 0;
}

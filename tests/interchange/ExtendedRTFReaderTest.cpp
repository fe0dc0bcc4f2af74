// The extended reader on RTF written by hand the way word processors write it: notes, comment ranges,
// pictures and their sizes, the import options, and input it must refuse or survive.
#include <gtest/gtest.h>

#include "support/AttachmentQueries.h"

#include <QBuffer>
#include <QImage>

#include <qlyappkit/interchange/rtf/ExtendedRTFReader.h>
#include <qlyappkit/interchange/rtf/RTFImportRepairs.h>
#include <qlyappkit/interchange/rtf/RTFImportTags.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

using namespace qly;
using namespace qly::testsupport;

namespace {

QByteArray document(const QByteArray& body)
{
    return "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\froman Times New Roman;}}\n\\pard\\plain " + body + "\\par\n}";
}

// An image file in hexadecimal. With dotsPerInch the file states that resolution; without, it states
// none (the density Qt always writes is taken out again).
QByteArray imageHex(int width, int height, const char* format, int dotsPerInch = 0)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    if (dotsPerInch > 0) {
        image.setDotsPerMeterX(qRound(dotsPerInch / 0.0254));
        image.setDotsPerMeterY(qRound(dotsPerInch / 0.0254));
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    if (dotsPerInch == 0 && QByteArray(format) == "PNG") {
        const qsizetype chunk = bytes.indexOf("pHYs") - 4; // length, type, 9 bytes of data, checksum
        if (chunk > 0)
            bytes.remove(chunk, 4 + 4 + 9 + 4);
    } else if (dotsPerInch == 0 && QByteArray(format) == "JPEG" && bytes.mid(6, 4) == "JFIF") {
        bytes[13] = 0; // density units 0: an aspect ratio, no resolution
    }
    return bytes.toHex();
}

struct Note {
    QString anchor; ///< the anchor's text
    QString text; ///< the note's text
    bool footnote;
};

// The margin notes of a text in order: each anchor with its comment's text.
std::vector<Note> marginNotes(const AttributedString& text)
{
    std::vector<Note> notes;
    text.enumerateAttribute(XQCommentAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range run) {
        if (XQCommentPtr c = commentFromVariant(v))
            notes.push_back({text.substring(run), c->text().string(), c->isFootnote()});
        return true;
    });
    return notes;
}

std::vector<QString> runsOf(const AttributedString& text, const QString& attribute)
{
    std::vector<QString> runs;
    text.enumerateAttribute(attribute, Range{0, text.length()}, [&](const QVariant& v, Range run) {
        if (v.isValid())
            runs.push_back(text.substring(run));
        return true;
    });
    return runs;
}

AttributedString imported(const QByteArray& rtf, ExtendedRTFImportOptions options = {},
                          ExtendedRTFImportReport* report = nullptr, const QVariantMap& rtfAttributes = {})
{
    QVariantMap documentAttributes;
    std::optional<AttributedString> text =
        attributedStringFromExtendedRTF(rtf, &documentAttributes, rtfAttributes, options, report);
    EXPECT_TRUE(text.has_value());
    return text.value_or(AttributedString());
}

const QByteArray FootnoteBody = "The sea{\\super\\chftn}{\\*\\footnote\\pard\\plain {\\super\\chftn} A note on "
                                "{\\i the sea}.} was calm and the lighthouse{\\super\\chftn}{\\*\\footnote\\ftnalt"
                                "\\pard\\plain\\itap1 {\\super\\chftn} An endnote.} shone.";

} // namespace

TEST(ExtendedRTFReader, FootnotesAndEndnotesBecomeNotesOfTheirText)
{
    ExtendedRTFImportReport report;
    const AttributedString margin = imported(document(FootnoteBody), {}, &report);
    EXPECT_EQ(report.footnotes, 1);
    EXPECT_EQ(report.endnotes, 1);
    // The note groups leave the body text whole; each note is anchored on a word where it stood.
    EXPECT_EQ(margin.string(), QStringLiteral("The sea was calm and the lighthouse shone.\n"));
    const std::vector<Note> notes = marginNotes(margin);
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_TRUE(notes[0].footnote && notes[1].footnote);
    EXPECT_EQ(notes[0].text, QStringLiteral("A note on the sea."));
    // Anchored on the word the mark follows.
    EXPECT_EQ(notes[0].anchor, QStringLiteral("sea"));
    EXPECT_EQ(notes[1].anchor, QStringLiteral("lighthouse"));
    EXPECT_EQ(notes[1].text, QStringLiteral("An endnote."));
    EXPECT_TRUE(runsOf(margin, XQFootnoteAttributeName).empty());

    // Kept inline, the notes stand where they were, with their formatting.
    const AttributedString inlineNotes = imported(document(FootnoteBody), {false, true});
    const std::vector<QString> runs = runsOf(inlineNotes, XQFootnoteAttributeName);
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0].trimmed(), QStringLiteral("A note on the sea."));
    EXPECT_TRUE(inlineNotes.string().startsWith(QStringLiteral("The sea ")));
    const qsizetype italic = inlineNotes.string().indexOf(QStringLiteral("the sea."));
    EXPECT_TRUE(inlineNotes.attribute(FontAttributeName, italic).value<Font>().traits() & ItalicFontMask);

    // A marker asked for takes each footnote's place as its anchor.
    const AttributedString marked =
        imported(document(FootnoteBody), {}, nullptr, {{XQRTFFootnoteMarker, QStringLiteral("*")}});
    const std::vector<Note> markedNotes = marginNotes(marked);
    ASSERT_EQ(markedNotes.size(), 2u);
    EXPECT_EQ(markedNotes[0].anchor, QStringLiteral("*"));
    EXPECT_EQ(marked.string(), QStringLiteral("The sea* was calm and the lighthouse* shone.\n"));

    // Only endnotes: the document asks for its notes to be written as endnotes again.
    QVariantMap attributes;
    attributedStringFromExtendedRTF(document("Text{\\*\\footnote\\ftnalt An endnote.} more."), &attributes, {}, {});
    EXPECT_TRUE(attributes.value(XQRTFLinkedFootnotesAsEndnotes).toBool());
    attributes.clear();
    attributedStringFromExtendedRTF(document(FootnoteBody), &attributes, {}, {});
    EXPECT_FALSE(attributes.contains(XQRTFLinkedFootnotesAsEndnotes));
}

TEST(ExtendedRTFReader, FootnotePeriodsOfOneWordProcessorGo)
{
    const QByteArray rtf = document("Text{\\*\\footnote .\\u160\\'a0Dotted note.} and{\\*\\footnote .x} end.");
    const AttributedString text = imported(rtf, {false, true});
    const std::vector<QString> runs = runsOf(text, XQFootnoteAttributeName);
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0], QStringLiteral(" Dotted note."));
    // Without the no-break space the period is the note's own.
    EXPECT_EQ(runs[1], QStringLiteral(" .x"));
}

TEST(ExtendedRTFReader, CommentsCoverTheRangeTheirIdsName)
{
    // Range 1 holds range 2; comment 3 covers nothing; the comments stand after their ranges' ends.
    const QByteArray body =
        "Before {\\*\\atrfstart 1}outer {\\*\\atrfstart 2}inner{\\*\\atrfend 2} words{\\*\\atrfend 1}"
        "{\\*\\atnid A}{\\*\\atnauthor Ann}\\chatn{\\*\\annotation{\\*\\atnref 2}\\pard\\plain {\\chatn }Inner note.}"
        "{\\*\\atnid B}\\chatn{\\*\\annotation{\\*\\atnref 1}\\pard\\plain Outer note.} after"
        "{\\*\\atrfstart 3}{\\*\\atrfend 3}\\chatn{\\*\\annotation{\\*\\atnref 3}\\pard\\plain Empty range.} end.";
    const AttributedString text = imported(document(body));
    EXPECT_EQ(text.string(), QStringLiteral("Before outer inner words after end.\n"));
    const std::vector<Note> notes = marginNotes(text);
    ASSERT_EQ(notes.size(), 4u) << text.string().toStdString();
    // One comment per character: the outer range keeps the text around the inner one.
    EXPECT_EQ(notes[0].anchor, QStringLiteral("outer "));
    EXPECT_EQ(notes[0].text, QStringLiteral("Outer note."));
    EXPECT_EQ(notes[1].anchor, QStringLiteral("inner"));
    EXPECT_EQ(notes[1].text, QStringLiteral("Inner note."));
    EXPECT_EQ(notes[2].anchor, QStringLiteral(" words"));
    EXPECT_EQ(notes[2].text, QStringLiteral("Outer note."));
    // The empty range's comment is anchored on a word where it stood.
    EXPECT_EQ(notes[3].anchor, QStringLiteral("end"));
    EXPECT_EQ(notes[3].text, QStringLiteral("Empty range."));
    EXPECT_FALSE(notes[3].footnote);

    // Kept inline, the ranges are left to the platform reader and the annotations stay.
    const AttributedString inlineComments = imported(document(body), {true, false});
    EXPECT_TRUE(marginNotes(inlineComments).empty());
    const std::vector<QString> annotations = runsOf(inlineComments, XQAnnotationAttributeName);
    // Annotations that follow each other stay two, a blank apart.
    ASSERT_EQ(annotations.size(), 3u);
    EXPECT_EQ(annotations[1], QStringLiteral("Outer note."));
    EXPECT_TRUE(inlineComments.string().contains(QStringLiteral("Inner note. Outer note.")));
    EXPECT_FALSE(inlineComments.string().contains(XQRTFImportCommentEndTag));
}

TEST(ExtendedRTFReader, CommentRangesWithoutIdsPairInOrder)
{
    // Without ids a range pairs with the next end after it, and takes the comment that follows that end.
    const QByteArray body = "A {\\*\\atrfstart}marked phrase{\\*\\atrfend}{\\*\\annotation Its note.} then "
                            "{\\*\\atrfend}stray end.";
    const AttributedString text = imported(document(body));
    EXPECT_EQ(text.string(), QStringLiteral("A marked phrase then stray end.\n"));
    const std::vector<Note> notes = marginNotes(text);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].anchor, QStringLiteral("marked phrase"));
    EXPECT_EQ(notes[0].text, QStringLiteral("Its note."));
}

TEST(ExtendedRTFReader, PicturesArriveAtTheSizeTheyAreShown)
{
    // The image is 200 x 100 pixels stating 144 dpi, so 100 x 50 points. Shown smaller, it is re-encoded
    // at the size it is shown at that resolution; shown at its size or larger, it keeps its bytes.
    struct Case {
        const char* name;
        QByteArray controls;
        const char* format;
        QSizeF size;
        QSize pixels;
        QString fileName;
    };
    const Case cases[] = {
        {"goal width only keeps the aspect", "\\picwgoal1440\\pngblip", "PNG", {72, 36}, {144, 72}, "Image1.png"},
        {"goal height only", "\\pichgoal720\\pngblip", "PNG", {72, 36}, {144, 72}, "Image1.png"},
        {"both goals", "\\picwgoal2000\\pichgoal400\\pngblip", "PNG", {100, 20}, {200, 40}, "Image1.png"},
        {"no goal: the image's own size", "\\pngblip", "PNG", {100, 50}, {200, 100}, "Image1.png"},
        {"enlarging scales are ignored", "\\picscalex150\\picscaley100\\pngblip", "PNG", {100, 50}, {200, 100},
         "Image1.png"},
        {"reducing scales apply", "\\picscalex50\\picscaley25\\pngblip", "PNG", {50, 12.5}, {100, 25}, "Image1.png"},
        {"shown larger: no pixels are made up", "\\picwgoal4000\\pichgoal2000\\jpegblip", "JPEG", {200, 100},
         {200, 100}, "Image1.jpg"},
        {"a reduced JPEG stays a JPEG", "\\picwgoal1000\\pichgoal500\\jpegblip", "JPEG", {50, 25}, {100, 50},
         "Image1.jpg"},
        {"a named picture", "{\\*\\nisusfilename Sea view}\\pngblip", "PNG", {100, 50}, {200, 100}, "Sea view.png"},
        {"a name with escapes", "{\\*\\nisusfilename Caf\\u233\\'e9}\\pngblip", "PNG", {100, 50}, {200, 100},
         "Caf\u00e9.png"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QByteArray hex = imageHex(200, 100, c.format, 144);
        const QByteArray rtf = document("See {\\*\\shppict{\\pict" + c.controls + "\n" + hex
                                        + "}}{\\nonshppict{\\pict\\wmetafile8 0102}} here.");
        ExtendedRTFImportReport report;
        const AttributedString text = imported(rtf, {}, &report);
        EXPECT_EQ(report.pictures, 1);
        EXPECT_EQ(text.string(), QStringLiteral("See \uFFFC here.\n"));
        const std::vector<TextAttachment> found = attachmentsIn(text);
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0].fileName(), c.fileName);
        EXPECT_NEAR(found[0].bounds().width(), c.size.width(), 0.01);
        EXPECT_NEAR(found[0].bounds().height(), c.size.height(), 0.01);
        EXPECT_EQ(found[0].image().size(), c.pixels);
        const bool kept = c.pixels == QSize(200, 100);
        EXPECT_EQ(found[0].contents().toHex() == hex, kept);
        EXPECT_EQ(found[0].contents().startsWith("\xFF\xD8"), QByteArray(c.format) == "JPEG");
        if (!kept) { // the new file states the resolution it keeps
            EXPECT_NEAR(found[0].image().dotsPerMeterX() * 0.0254, 144, 0.5);
        }
    }

    // Without a stated resolution a pixel is a point: a picture shown at half its pixels has half of them.
    const AttributedString halved = imported(
        document("{\\pict\\picwgoal2000\\pichgoal1000\\pngblip " + imageHex(200, 100, "PNG") + "}"), {});
    ASSERT_EQ(attachmentsIn(halved).size(), 1u);
    EXPECT_EQ(attachmentsIn(halved)[0].image().size(), QSize(100, 50));

    // Pictures in order, in the object group of another writer, and one whose data is not an image.
    const QByteArray rtf = document("{\\object{\\*\\objdata 01}{\\result{\\pict\\pngblip " + imageHex(10, 20, "PNG")
                                    + "}}} and {\\pict\\pngblip 0A0B0C} and {\\pict\\pngblip ZZ} and "
                                      "{\\*\\shppict{\\pict\\picwgoal200\\pngblip "
                                    + imageHex(30, 30, "PNG") + "}}.");
    ExtendedRTFImportReport report;
    const AttributedString text = imported(rtf, {}, &report);
    EXPECT_EQ(report.pictures, 2);
    EXPECT_EQ(text.string(), QStringLiteral("\uFFFC and  and  and \uFFFC.\n"));
    const std::vector<TextAttachment> found = attachmentsIn(text);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].fileName(), QStringLiteral("Image1.png"));
    EXPECT_EQ(found[0].bounds(), QSizeF(10, 20));
    EXPECT_EQ(found[1].fileName(), QStringLiteral("Image2.png"));
    EXPECT_EQ(found[1].bounds(), QSizeF(10, 10));
}

TEST(ExtendedRTFReader, RefusesWhatIsNotRTFAndSurvivesBrokenRTF)
{
    EXPECT_FALSE(attributedStringFromExtendedRTF(QByteArray(), nullptr, {}, {}));
    EXPECT_FALSE(attributedStringFromExtendedRTF("Plain words, no RTF.", nullptr, {}, {}));
    EXPECT_FALSE(attributedStringFromExtendedRTF("\x89PNG\r\n", nullptr, {}, {}));

    // Cut short inside a footnote: the text and the note's words so far are kept, and the report says so.
    ExtendedRTFImportReport report;
    const std::optional<AttributedString> truncated = attributedStringFromExtendedRTF(
        "{\\rtf1\\ansi Body text{\\*\\footnote A note that never ends", nullptr, {}, {}, &report);
    ASSERT_TRUE(truncated);
    EXPECT_TRUE(truncated->string().startsWith(QStringLiteral("Body text")));
    const std::vector<Note> notes = marginNotes(*truncated);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].text, QStringLiteral("A note that never ends"));
    EXPECT_FALSE(report.parse);

    // Closing braces without openings, binary data and a picture cut short do not stop the reading.
    const std::optional<AttributedString> odd = attributedStringFromExtendedRTF(
        "{\\rtf1 One}} two {\\pict\\bin4 {}{} three {\\pict\\pngblip 89504e", nullptr, {}, {});
    ASSERT_TRUE(odd);
    EXPECT_TRUE(odd->string().contains(QStringLiteral("One")));
}

TEST(ExtendedRTFReader, CommentRangesApplyAlikeToAPlainTextAndAStorage)
{
    // A plain text is rebuilt in one pass; a storage hears of each deletion. Both must end alike.
    const QVariant annotation = QVariant::fromValue(Color::standardAnnotationColor());
    AttributedString source;
    source.append(QStringLiteral("Before ") + XQRTFImportCommentStartTag + QStringLiteral("ranged words")
                      + XQRTFImportCommentEndTag,
                  {});
    source.append(QStringLiteral("Note one"), {{XQAnnotationAttributeName, annotation}});
    source.append(QStringLiteral(" between ") + XQRTFImportCommentStartTag + QStringLiteral("second")
                      + XQRTFImportCommentEndTag,
                  {});
    source.append(QStringLiteral("Note two"), {{XQAnnotationAttributeName, annotation}});
    source.append(QStringLiteral(" after, loose"), {});
    source.append(QStringLiteral("Loose note"), {{XQAnnotationAttributeName, annotation}});
    source.append(QStringLiteral(" end."), {});

    MutableAttributedString plain(source);
    TextStorage storage(source);
    convertInlineAnnotationsToMarginCommentsApplyingRangesUsingImportTags(plain);
    convertInlineAnnotationsToMarginCommentsApplyingRangesUsingImportTags(storage);
    for (const AttributedString& text : {plain.attributedString(), storage.attributedString()}) {
        EXPECT_EQ(text.string(), QStringLiteral("Before ranged words between second after, loose end."));
        const std::vector<Note> notes = marginNotes(text);
        ASSERT_EQ(notes.size(), 3u);
        EXPECT_EQ(notes[0].anchor, QStringLiteral("ranged words"));
        EXPECT_EQ(notes[0].text, QStringLiteral("Note one"));
        EXPECT_EQ(notes[1].anchor, QStringLiteral("second"));
        EXPECT_EQ(notes[1].text, QStringLiteral("Note two"));
        EXPECT_EQ(notes[2].text, QStringLiteral("Loose note"));
        EXPECT_TRUE(runsOf(text, XQAnnotationAttributeName).empty());
    }
    EXPECT_NE(plain.plainBacking(), nullptr);
    EXPECT_EQ(storage.plainBacking(), nullptr);
}

// Whatever the text and options, the extended writer's output is one balanced RTF group, 7-bit, and
// read by the platform reader without a problem; the passes that rewrite the RTF never delete or
// insert across a group boundary.
#include <QRandomGenerator>
#include <QRegularExpression>

#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

#include "interchange/ExportTestSupport.h"
#include "interchange/ExtendedWriterRandomInput.h"

using namespace qly;
using namespace exporttest;

namespace {

QString problemsOf(const QByteArray& bytes) { return writerinput::wellFormednessProblem(bytes); }

// How many groups are open at index (1 in the document's body).
int groupDepthAt(const QString& rtf, qsizetype index)
{
    int depth = 0;
    for (qsizetype i = 0; i < index; ++i) {
        if (rtf.at(i) == QLatin1Char('\\'))
            ++i;
        else if (rtf.at(i) == QLatin1Char('{'))
            ++depth;
        else if (rtf.at(i) == QLatin1Char('}'))
            --depth;
    }
    return depth;
}

AttributedString keptFootnoteOnALineFeed()
{
    AttributedString text;
    text.append(QStringLiteral("\n"), plain());
    text.append(QStringLiteral("\n"), with(XQKeepWithNextAttributeName, true, with(XQFootnoteAttributeName, 1)));
    return text;
}

} // namespace

TEST(ExtendedRTFBalance, GroupStructureOffsetFindsTheFirstFault)
{
    EXPECT_EQ(RTFGroupStructureProblemOffset(QStringLiteral("{\\rtf1 a{\\b b}\\{ \\} \\\\}\n")), -1);
    EXPECT_EQ(RTFGroupStructureProblemOffset(QStringLiteral("{\\rtf1 a}}")), 9);
    EXPECT_EQ(RTFGroupStructureProblemOffset(QStringLiteral("{\\rtf1 {a}")), 10);
    EXPECT_EQ(RTFGroupStructureProblemOffset(QStringLiteral("{\\rtf1 a\\}")), 10);
    EXPECT_EQ(RTFGroupStructureProblemOffset(QStringLiteral("x{\\rtf1}")), 0);
    EXPECT_EQ(RTFGroupStructureProblemOffset(QStringLiteral("{\\rtf1}{}")), 7);
    EXPECT_EQ(RTFGroupStructureProblemOffset(QString()), 0);
}

// A kept paragraph whose break lies inside a note group (the note's text is the line feed) used to
// lose the note's closing braces with the keep-with-next marker line; a kept paragraph holding a note
// of two paragraphs used to close its group inside the note.
TEST(ExtendedRTFBalance, KeepWithNextStaysInsideGroupBoundaries)
{
    for (const QVariantMap& options :
         {QVariantMap{},
          QVariantMap{{XQRTFHeaderString, QStringLiteral("<$p>")}, {XQRTFAvoidWidowsAndOrphans, true}}}) {
        const AttributedString text = keptFootnoteOnALineFeed();
        const QByteArray rtf = extendedRTFFromRange(text, Range{0, text.length()}, {}, options);
        EXPECT_EQ(problemsOf(rtf), QString()) << rtf.toStdString();
    }

    AttributedString text;
    text.append(QStringLiteral("Heading"), with(XQKeepWithNextAttributeName, true));
    text.append(QStringLiteral("one\ntwo"), with(XQKeepWithNextAttributeName, true, with(XQFootnoteAttributeName, 1)));
    text.append(QStringLiteral("\n"), with(XQKeepWithNextAttributeName, true));
    text.append(QStringLiteral("Body\n"), plain());
    const QByteArray bytes = extendedRTFFromRange(text, Range{0, text.length()}, {});
    ASSERT_EQ(problemsOf(bytes), QString()) << bytes.toStdString();
    const QString rtf = QString::fromLatin1(bytes);
    // The note keeps both its paragraphs, and the kept group closes after the body paragraph's break.
    EXPECT_TRUE(rtf.contains(QStringLiteral("one\\\ntwo}\\nosupersub}"))) << bytes.toStdString();
    EXPECT_TRUE(rtf.contains(QRegularExpression(QStringLiteral(R"(\\\n\}[^{}\n]*Body\\\n)")))) << bytes.toStdString();
    const std::optional<AttributedString> back = attributedStringFromRTF(bytes);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->string(), QStringLiteral("Heading\nBody\n"));
}

// The document-level blocks that stand at the start of the text (footnote and widow controls, the
// header/footer block, the columns controls) used to take every attribute of the first character, so
// a text that opened with a note or a link wrote them inside that note or link.
TEST(ExtendedRTFBalance, DocumentControlsStayOutsideTheNoteOrLinkTheTextStartsWith)
{
    const QVariantMap options{
        {XQRTFHeaderString, QStringLiteral("<$p>")}, {XQRTFNumberOfColumns, 2}, {XQRTFAvoidWidowsAndOrphans, true}};
    for (const auto& [name, value] : std::initializer_list<std::pair<QString, QVariant>>{
             {XQFootnoteAttributeName, 1},
             {XQAnnotationAttributeName, QVariant::fromValue(Color(1, 0, 0))},
             {LinkAttributeName, QStringLiteral("https://example.com/")}}) {
        AttributedString text;
        text.append(QStringLiteral("First words"), with(name, value));
        text.append(QStringLiteral(" and more, with a note"), plain());
        text.append(QStringLiteral("."), with(XQFootnoteAttributeName, 1));
        const QByteArray bytes = extendedRTFFromRange(text, Range{0, text.length()}, {}, options);
        ASSERT_EQ(problemsOf(bytes), QString()) << bytes.toStdString();
        const QString rtf = QString::fromLatin1(bytes);
        for (const QString& control : {QStringLiteral("\\widowctrl"), QStringLiteral("\\fet2"),
                                       QStringLiteral("{\\header"), QStringLiteral("\\cols2")}) {
            const qsizetype at = rtf.indexOf(control);
            ASSERT_GE(at, 0) << name.toStdString() << " " << control.toStdString();
            EXPECT_EQ(groupDepthAt(rtf, at), 1) << name.toStdString() << " " << control.toStdString() << "\n"
                                                << bytes.toStdString();
        }
    }
}

// Columns may start where the caller put the columns marker; without a column count the marker used
// to stay in the document as text.
TEST(ExtendedRTFBalance, ACallersColumnsMarkerNeverStaysAsText)
{
    AttributedString text(QStringLiteral("Title\n") + XQRTFColumnsMarker + QStringLiteral("Body\n"), plain());
    for (const QVariantMap& options : {QVariantMap{}, QVariantMap{{XQRTFNumberOfColumns, 1}},
                                       QVariantMap{{XQRTFNumberOfColumns, 2}, {XQRTFColumnSpacingInTwips, 360}}}) {
        const QByteArray bytes = extendedRTFFromRange(text, Range{0, text.length()}, {}, options);
        EXPECT_EQ(problemsOf(bytes), QString()) << bytes.toStdString();
        const QString rtf = QString::fromLatin1(bytes);
        EXPECT_TRUE(rtf.contains(QStringLiteral("Title\\\n")));
        EXPECT_EQ(rtf.contains(QStringLiteral("Title\\\n\\sect\\sbknone\\cols2\\colsx360 \nBody\\\n")),
                  options.contains(XQRTFColumnSpacingInTwips))
            << bytes.toStdString();
    }
}

TEST(ExtendedRTFBalance, RandomTextsAndOptionsGiveWellFormedRTF)
{
    QRandomGenerator random(20261122);
    auto pick = [&random](int n) { return n > 0 ? int(random.bounded(n)) : 0; };
    constexpr int Iterations = 4000;
    for (int i = 0; i < Iterations; ++i) {
        const writerinput::WriterInput input = writerinput::makeWriterInput(pick);
        const QByteArray rtf = extendedRTFFromRange(input.text, input.range, input.documentAttributes, input.options);
        const QString problem = problemsOf(rtf);
        ASSERT_EQ(problem, QString()) << "iteration " << i << "\n"
                                      << input.description.toStdString() << "\n"
                                      << rtf.toStdString();
    }
}

// The group that keeps a paragraph with the next undoes, when it closes, the formatting changes
// written inside it; the plain writer writes a change only once, so the text after a kept heading
// used to come back in the heading's bold, size and font.
TEST(ExtendedRTFBalance, AKeptParagraphsGroupLeavesTheFollowingTextsFormattingAlone)
{
    const Attributes heading{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 18, BoldFontMask))}};
    AttributedString text;
    text.append(QStringLiteral("Title\n"), heading);
    text.append(QStringLiteral("Subtitle"), with(XQKeepWithNextAttributeName, true, heading));
    text.append(QStringLiteral("\nBody text\nMore body\n"), plain());
    const QByteArray bytes = extendedRTFFromRange(text, Range{0, text.length()}, {});
    ASSERT_EQ(problemsOf(bytes), QString()) << bytes.toStdString();
    const std::optional<AttributedString> back = attributedStringFromRTF(bytes);
    ASSERT_TRUE(back.has_value());
    for (const QString& words :
         {QStringLiteral("Subtitle"), QStringLiteral("Body text"), QStringLiteral("More body")}) {
        const qsizetype at = back->string().indexOf(words);
        ASSERT_GE(at, 0) << words.toStdString();
        const Font font = back->attribute(FontAttributeName, at).value<Font>();
        const bool isHeading = words == QLatin1String("Subtitle");
        EXPECT_EQ(font.isBold(), isHeading) << words.toStdString() << "\n" << bytes.toStdString();
        EXPECT_EQ(font.pointSize(), isHeading ? 18 : 12) << words.toStdString();
        EXPECT_EQ(font.familyName(), isHeading ? QStringLiteral("Helvetica") : QStringLiteral("Times"))
            << words.toStdString();
    }
}

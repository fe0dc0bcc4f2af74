// Our word-processor export read back by our reader: generated manuscripts with hundreds of notes keep
// their text, footnotes, endnotes, comments on the same ranges and pictures at the same size.
#include <gtest/gtest.h>

#include "support/AttachmentQueries.h"

#include <QBuffer>
#include <QImage>
#include <QRandomGenerator>
#include <algorithm>

#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/interchange/rtf/ExtendedRTFReader.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

using namespace qly;
using namespace qly::testsupport;

namespace {

struct Margin {
    Range anchor;
    QString text;
    bool footnote;
    friend bool operator==(const Margin&, const Margin&) = default;
};

std::vector<Margin> marginNotes(const AttributedString& text)
{
    std::vector<Margin> notes;
    text.enumerateAttribute(XQCommentAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range run) {
        if (XQCommentPtr c = commentFromVariant(v))
            notes.push_back({run, c->text().string(), c->isFootnote()});
        return true;
    });
    return notes;
}

TextAttachment picture(int number, const char* format)
{
    QImage image(40 + number, 20 + 2 * number, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(number * 30 % 360, 200, 200));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    TextAttachment attachment(
        QStringLiteral("figure%1.%2").arg(number).arg(QByteArray(format) == "PNG" ? "png" : "jpg"), bytes);
    attachment.setBounds(QSizeF(30 + number * 7, 15 + number * 3));
    return attachment;
}

// A manuscript as the application stores it: body words, linked footnotes on single words, linked
// comments on phrases, pictures between sentences.
AttributedString storedManuscript(int footnotes, int comments, int pictures)
{
    static const char* words[] = {"harbour", "light", "and", "the", "keeper", "wrote", "of", "storms", "at", "night"};
    QRandomGenerator rng(11);
    const Attributes body{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};
    AttributedString text;
    std::vector<int> kinds;
    kinds.insert(kinds.end(), footnotes, 0);
    kinds.insert(kinds.end(), comments, 1);
    kinds.insert(kinds.end(), pictures, 2);
    std::shuffle(kinds.begin(), kinds.end(), rng);
    int made[3] = {0, 0, 0};
    for (const int k : kinds) {
        QString run;
        for (int w = 0, n = 3 + int(rng.bounded(12)); w < n; ++w)
            run += QLatin1String(words[rng.bounded(10)]) + QLatin1Char(' ');
        if (rng.bounded(6) == 0)
            run += QStringLiteral("end.\n");
        text.append(run, body);
        Attributes a = body;
        if (k == 0) {
            auto note = XQComment::create(
                AttributedString(QStringLiteral("Footnote %1 says where the words came from.").arg(made[0]), body),
                true);
            a.insert(XQCommentAttributeName, variantFromComment(note));
            text.append(QStringLiteral("word%1").arg(made[0]), a);
        } else if (k == 1) {
            auto comment =
                XQComment::create(AttributedString(QStringLiteral("Comment %1: check this.").arg(made[1]), body));
            a.insert(XQCommentAttributeName, variantFromComment(comment));
            text.append(QStringLiteral("a phrase of several words %1").arg(made[1]), a);
        } else {
            a.insert(AttachmentAttributeName, QVariant::fromValue(picture(made[2], made[2] % 2 ? "JPEG" : "PNG")));
            text.append(QString(QChar(AttachmentCharacter)), a);
        }
        ++made[k];
        text.append(QStringLiteral(" "), body);
    }
    text.append(QStringLiteral("The end.\n"), body);
    return text;
}

AttributedString roundTrip(const AttributedString& stored, const QVariantMap& options, QVariantMap* attributes,
                           ExtendedRTFImportReport* report)
{
    WordRTFExportSettings settings;
    settings.options = options;
    QStringList warnings;
    const QByteArray rtf = wordRTFFromStoredText(stored, {}, settings, &warnings);
    EXPECT_TRUE(warnings.isEmpty()) << warnings.join(u'\n').toStdString();
    std::optional<AttributedString> back = attributedStringFromExtendedRTF(rtf, attributes, {}, {}, report);
    EXPECT_TRUE(back.has_value());
    return back.value_or(AttributedString());
}

} // namespace

TEST(ExtendedRTFRoundTrip, HundredsOfNotesKeepTheirTextsRangesAndPictures)
{
    const AttributedString stored = storedManuscript(300, 150, 12);
    QVariantMap attributes;
    ExtendedRTFImportReport report;
    const AttributedString back = roundTrip(stored, {}, &attributes, &report);
    EXPECT_EQ(report.footnotes, 300);
    EXPECT_EQ(report.endnotes, 0);
    EXPECT_EQ(report.annotations, 150);
    EXPECT_EQ(report.pictures, 12);
    EXPECT_TRUE(report.parse);

    ASSERT_EQ(back.string(), stored.string());
    const std::vector<Margin> before = marginNotes(stored), after = marginNotes(back);
    std::vector<Margin> commentsBefore, commentsAfter;
    std::vector<QString> footnotesBefore, footnotesAfter;
    for (const Margin& m : before)
        m.footnote ? footnotesBefore.push_back(m.text) : commentsBefore.push_back(m);
    for (const Margin& m : after)
        m.footnote ? footnotesAfter.push_back(m.text) : commentsAfter.push_back(m);
    // Comments keep their exact ranges; footnotes, which word processors anchor at a point, keep their
    // texts and order.
    EXPECT_EQ(commentsBefore.size(), 150u);
    EXPECT_EQ(commentsAfter, commentsBefore);
    EXPECT_EQ(footnotesAfter, footnotesBefore);

    const std::vector<TextAttachment> picturesBefore = attachmentsIn(stored), picturesAfter = attachmentsIn(back);
    ASSERT_EQ(picturesAfter.size(), picturesBefore.size());
    for (size_t i = 0; i < picturesBefore.size(); ++i) {
        SCOPED_TRACE(i);
        // Sizes travel in twips.
        EXPECT_NEAR(picturesAfter[i].bounds().width(), picturesBefore[i].bounds().width(), 0.05);
        EXPECT_NEAR(picturesAfter[i].bounds().height(), picturesBefore[i].bounds().height(), 0.05);
        EXPECT_EQ(picturesAfter[i].image().size(), picturesBefore[i].image().size());
        EXPECT_EQ(picturesAfter[i].fileName().endsWith(QStringLiteral(".jpg")),
                  picturesBefore[i].fileName().endsWith(QStringLiteral(".jpg")));
    }
}

TEST(ExtendedRTFRoundTrip, EndnotesStayEndnotes)
{
    const AttributedString stored = storedManuscript(40, 5, 0);
    QVariantMap attributes;
    ExtendedRTFImportReport report;
    const AttributedString back = roundTrip(stored, {{XQRTFLinkedFootnotesAsEndnotes, true}}, &attributes, &report);
    EXPECT_EQ(report.endnotes, 40);
    EXPECT_EQ(report.footnotes, 0);
    EXPECT_TRUE(attributes.value(XQRTFLinkedFootnotesAsEndnotes).toBool());

    // Written again with those attributes as options, they are endnotes once more.
    WordRTFExportSettings settings;
    settings.options = attributes;
    const QByteArray again = wordRTFFromStoredText(back, {}, settings);
    EXPECT_EQ(again.count("\\footnote\\ftnalt"), 40);
}

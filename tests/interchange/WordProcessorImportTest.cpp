// RTF that the office suite wrote, read by our extended reader: every footnote, endnote, comment (its
// text and the exact range it covers) and picture (its size in points) arrives. Then the way back: our
// import exported again and opened in the office suite keeps them all.
#include <gtest/gtest.h>

#include "support/AttachmentQueries.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include "support/OfficeCensus.h"
#include "support/WordProcessorFixtures.h"

#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/interchange/export/WordRTFImport.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

using namespace qly;
using namespace qly::testsupport;

namespace {

WordRTFImport importFixture(const QString& name, ExtendedRTFImportOptions options = {})
{
    const QByteArray rtf =
        testfiles::readFileBytes(WordProcessorFixtureFolder + QLatin1Char('/') + name + QStringLiteral(".rtf"));
    std::optional<WordRTFImport> imported = importWordRTF(rtf, options);
    EXPECT_TRUE(imported.has_value()) << name.toStdString();
    return imported.value_or(WordRTFImport());
}

struct Comment {
    QString text;
    QString range;
};

// Comments in the order of their ranges; a comment cut in two by another note is one entry.
std::vector<Comment> marginComments(const AttributedString& text, bool footnotes)
{
    std::vector<Comment> comments;
    std::vector<const XQComment*> order;
    text.enumerateAttribute(XQCommentAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range run) {
        XQCommentPtr c = commentFromVariant(v);
        if (!c || c->isFootnote() != footnotes)
            return true;
        const auto at = std::find(order.begin(), order.end(), c.get());
        if (at == order.end()) {
            order.push_back(c.get());
            comments.push_back({c->text().string(), text.substring(run)});
        } else {
            comments[size_t(at - order.begin())].range += text.substring(run);
        }
        return true;
    });
    return comments;
}

// The text of a range without the inline notes inside it.
QString withoutInlineNotes(const AttributedString& text, Range range)
{
    QString s;
    for (qsizetype i = range.location; i < range.end(); ++i) {
        if (!text.attribute(XQFootnoteAttributeName, i).isValid())
            s += text.characterAt(i);
    }
    return s;
}

// The sizes a fixture's pictures are shown at by the office suite (from its expectations), as our
// reader gives them: scales of 100 % or more in the RTF are not applied (only reductions are, on
// purpose), so along such a side the picture keeps the size before scaling.
std::vector<QSizeF> expectedPictureSizes(const QString& name, const QJsonObject& expected)
{
    const QString rtf = QString::fromLatin1(
        testfiles::readFileBytes(WordProcessorFixtureFolder + QLatin1Char('/') + name + QStringLiteral(".rtf")));
    static const QRegularExpression scales(
        QStringLiteral("\\\\picscalex(\\d+)\\\\picscaley(\\d+)[^{}]*?\\\\(?:png|jpeg)blip"));
    std::vector<QSizeF> sizes;
    auto match = scales.globalMatch(rtf);
    for (const QJsonValue& value : expected[QStringLiteral("pictures")].toArray()) {
        const QJsonObject e = value.toObject();
        QSizeF size(e[QStringLiteral("width")].toDouble(), e[QStringLiteral("height")].toDouble());
        if (match.hasNext()) {
            const QRegularExpressionMatch m = match.next();
            const double x = m.captured(1).toDouble(), y = m.captured(2).toDouble();
            size = QSizeF(x > 100 ? size.width() * 100 / x : size.width(),
                          y > 100 ? size.height() * 100 / y : size.height());
        }
        sizes.push_back(size);
    }
    return sizes;
}

} // namespace

TEST(WordProcessorImport, EveryNoteCommentAndPictureArrives)
{
    for (const QString& name : fixtureNames()) {
        SCOPED_TRACE(name.toStdString());
        const QJsonObject expected = expectations(name);
        const double tolerance = expected[QStringLiteral("pointTolerance")].toDouble();
        const WordRTFImport imported = importFixture(name);
        const QStringList footnotes = strings(expected[QStringLiteral("footnotes")]);
        const QStringList endnotes = strings(expected[QStringLiteral("endnotes")]);
        EXPECT_EQ(imported.report.footnotes, footnotes.size());
        EXPECT_EQ(imported.report.endnotes, endnotes.size());
        EXPECT_TRUE(imported.report.parse);

        // Footnotes and endnotes are margin footnotes now, with their texts whole.
        QStringList notesFound, notesExpected = footnotes + endnotes;
        for (const Comment& c : marginComments(imported.text, true))
            notesFound.append(c.text);
        notesFound.sort();
        notesExpected.sort();
        EXPECT_EQ(notesFound, notesExpected);

        // Comments: each text on its range. A collapsed comment is anchored on a word where it stood.
        const std::vector<Comment> comments = marginComments(imported.text, false);
        const QJsonArray expectedComments = expected[QStringLiteral("comments")].toArray();
        ASSERT_EQ(qsizetype(comments.size()), expectedComments.size());
        for (const QJsonValue& value : expectedComments) {
            const QJsonObject e = value.toObject();
            const QString text = e[QStringLiteral("text")].toString();
            const auto found =
                std::find_if(comments.begin(), comments.end(), [&](const Comment& c) { return c.text == text; });
            ASSERT_NE(found, comments.end()) << text.toStdString();
            if (!e[QStringLiteral("range")].toString().isEmpty()) {
                EXPECT_EQ(found->range, e[QStringLiteral("range")].toString()) << text.toStdString();
            }
        }

        // Pictures at the size they are shown, reductions only.
        const std::vector<TextAttachment> found = attachmentsIn(imported.text);
        const QJsonArray expectedPictures = expected[QStringLiteral("pictures")].toArray();
        const std::vector<QSizeF> sizes = expectedPictureSizes(name, expected);
        ASSERT_EQ(qsizetype(found.size()), expectedPictures.size());
        for (qsizetype i = 0; i < expectedPictures.size(); ++i) {
            const QJsonObject e = expectedPictures[i].toObject();
            EXPECT_NEAR(found[size_t(i)].bounds().width(), sizes[size_t(i)].width(), tolerance) << i;
            EXPECT_NEAR(found[size_t(i)].bounds().height(), sizes[size_t(i)].height(), tolerance) << i;
            const bool jpeg = e[QStringLiteral("format")].toString() == QStringLiteral("JPEG");
            EXPECT_EQ(found[size_t(i)].fileName().endsWith(QStringLiteral(".jpg")), jpeg) << i;
            EXPECT_FALSE(found[size_t(i)].image().isNull()) << i;
        }
    }
}

TEST(WordProcessorImport, CommentRangesHoldTheirNotesWhenNotesStayInline)
{
    // With the footnote left inline, the comment that holds it covers exactly its words and the note.
    const WordRTFImport imported = importFixture(QStringLiteral("comments"), {false, true});
    bool checked = false;
    imported.text.enumerateAttribute(
        XQCommentAttributeName, Range{0, imported.text.length()}, [&](const QVariant& v, Range run) {
            XQCommentPtr c = commentFromVariant(v);
            if (c && c->text().string().startsWith(QStringLiteral("Holds a footnote"))) {
                EXPECT_EQ(withoutInlineNotes(imported.text, run),
                          QStringLiteral("a sentence with a footnote inside it"));
                EXPECT_NE(imported.text.substring(run).indexOf(QStringLiteral("The footnote inside")), -1);
                checked = true;
            }
            return true;
        });
    EXPECT_TRUE(checked);
}

TEST(WordProcessorImport, OfficeSuiteFindsEverythingAgainInOurExport)
{
    if (officeSuite().isEmpty())
        GTEST_FAIL() << "soffice is missing: run scripts/bootstrap";
    QTemporaryDir dir;
    QStringList exported;
    for (const QString& name : fixtureNames()) {
        const WordRTFImport imported = importFixture(name);
        WordRTFExportSettings settings;
        settings.options = imported.documentAttributes;
        const QString path = dir.filePath(name + QStringLiteral("-again.rtf"));
        testfiles::writeFileBytes(path, wordRTFFromStoredText(imported.text, imported.documentAttributes, settings));
        exported.append(path);
    }
    QString error;
    const QList<DocumentCensus> censuses = officeCensus(exported, &error);
    ASSERT_EQ(censuses.size(), exported.size()) << error.toStdString();
    for (qsizetype f = 0; f < censuses.size(); ++f) {
        const DocumentCensus& census = censuses[f];
        const QString name = fixtureNames().at(f);
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(census.error.isEmpty()) << census.error.toStdString();
        const QJsonObject expected = expectations(name);
        // Every note, as a footnote or endnote; a document of endnotes only stays so.
        const QStringList endnotes = strings(expected[QStringLiteral("endnotes")]);
        const QStringList footnotes = strings(expected[QStringLiteral("footnotes")]);
        EXPECT_EQ(census.footnotes.size() + census.endnotes.size(), footnotes.size() + endnotes.size());
        if (footnotes.isEmpty()) {
            EXPECT_EQ(census.endnotes.size(), endnotes.size());
        }
        // Our notes begin with a blank after the mark, where the office suite writes a tab.
        QStringList notesFound, notesExpected = footnotes + endnotes;
        for (const QString& note : census.footnotes + census.endnotes)
            notesFound.append(note.trimmed());
        notesFound.sort();
        notesExpected.sort();
        EXPECT_EQ(notesFound, notesExpected);

        // Every comment, with its text, and on its range where it had one.
        // A footnote anchored inside a comment's range splits the range, and the office suite then
        // shows the comment once for each piece: distinct texts are counted.
        const QJsonArray expectedComments = expected[QStringLiteral("comments")].toArray();
        QStringList texts;
        for (const CensusComment& c : census.comments)
            texts.append(c.text);
        texts.removeDuplicates();
        EXPECT_EQ(texts.size(), expectedComments.size());
        for (const QJsonValue& value : expectedComments) {
            const QJsonObject e = value.toObject();
            const auto found =
                std::find_if(census.comments.begin(), census.comments.end(),
                             [&](const CensusComment& c) { return c.text == e[QStringLiteral("text")].toString(); });
            ASSERT_NE(found, census.comments.end()) << e[QStringLiteral("text")].toString().toStdString();
            const QString range = e[QStringLiteral("range")].toString();
            if (!range.isEmpty()) {
                EXPECT_TRUE(range.startsWith(found->rangeText)) << found->rangeText.toStdString();
            }
        }

        // Every picture, at the size it arrived at.
        const std::vector<QSizeF> sizes = expectedPictureSizes(name, expected);
        ASSERT_EQ(census.pictures.size(), qsizetype(sizes.size()));
        for (qsizetype i = 0; i < census.pictures.size(); ++i) {
            EXPECT_NEAR(census.pictures[i].width, sizes[size_t(i)].width(), 0.3) << i;
            EXPECT_NEAR(census.pictures[i].height, sizes[size_t(i)].height(), 0.3) << i;
        }
    }
}

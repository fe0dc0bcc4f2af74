// The export path as the library offers it: stored texts read with their comments, the link
// conventions (and the refusal of picture names that leave their folder), sections, options.
#include "support/TestFiles.h"

#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>

using namespace qly;
using namespace qly::testfiles;

namespace {

QByteArray pngBytes()
{
    QImage image(4, 3, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// "Before [pic] after" with the bracketed word linked to target.
AttributedString linkedText(const QString& target)
{
    AttributedString text(QStringLiteral("Before [pic] after"));
    text.addAttribute(LinkAttributeName, target, Range{7, 5});
    return text;
}

int attachmentCount(const AttributedString& text)
{
    int count = 0;
    text.enumerateAttribute(AttachmentAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range) {
        count += v.isValid() ? 1 : 0;
        return true;
    });
    return count;
}

} // namespace

TEST(WordRTFExportAPI, LinksBecomeBookmarksPageReferencesAndPictures)
{
    QTemporaryDir dir;
    writeFileBytes(dir.filePath(QStringLiteral("figure one.png")), pngBytes());
    AttributedString text(QStringLiteral("Mark here, see page 1. [pic]"));
    text.addAttribute(LinkAttributeName, QStringLiteral("qlybookmark:Chapter%20One"), Range{0, 4});
    text.addAttribute(LinkAttributeName, QStringLiteral("qlypageref:Chapter%20One"), Range{20, 1});
    text.addAttribute(LinkAttributeName, QStringLiteral("qlypicture:figure%20one.png"), Range{23, 5});
    text.addAttribute(LinkAttributeName, QStringLiteral("https://example.org/"), Range{5, 4});

    QStringList warnings;
    const AttributedString resolved = attributedStringByResolvingExportLinks(text, dir.path(), &warnings);
    EXPECT_TRUE(warnings.isEmpty()) << warnings.join(u'\n').toStdString();
    EXPECT_EQ(resolved.string(), QStringLiteral("Mark here, see page 1. \uFFFC"));
    EXPECT_EQ(resolved.attribute(XQRTFBookmarkAttributeName, 0).toString(), QStringLiteral("Chapter_One"));
    EXPECT_EQ(resolved.attribute(XQRTFPageRefFieldAttributeName, 20).toString(), QStringLiteral("Chapter_One"));
    const TextAttachment picture = resolved.attribute(AttachmentAttributeName, 23).value<TextAttachment>();
    EXPECT_EQ(picture.fileName(), QStringLiteral("figure one.png"));
    EXPECT_EQ(picture.contents(), pngBytes());
    // Only the three conventions are taken; other links stay.
    EXPECT_FALSE(resolved.attribute(LinkAttributeName, 0).isValid());
    EXPECT_FALSE(resolved.attribute(LinkAttributeName, 23).isValid());
    EXPECT_EQ(resolved.attribute(LinkAttributeName, 5).toString(), QStringLiteral("https://example.org/"));
}

TEST(WordRTFExportAPI, PictureNamesThatLeaveTheirFolderAreRefused)
{
    QTemporaryDir outer;
    const QString folder = outer.filePath(QStringLiteral("book"));
    ASSERT_TRUE(QDir().mkpath(folder));
    writeFileBytes(outer.filePath(QStringLiteral("outside.png")), pngBytes());
    writeFileBytes(folder + QStringLiteral("/inside.png"), pngBytes());
    ASSERT_TRUE(QFile::link(outer.filePath(QStringLiteral("outside.png")), folder + QStringLiteral("/link.png")));

    for (const QString& link : {QStringLiteral("qlypicture:/etc/passwd"), QStringLiteral("qlypicture:../outside.png"),
                                QStringLiteral("qlypicture:../../x"), QStringLiteral("qlypicture:%2E%2E/outside.png"),
                                QStringLiteral("qlypicture:link.png"), QStringLiteral("qlypicture:missing.png")}) {
        AttributedString text = linkedText(link);
        text.addAttribute(LinkAttributeName, QStringLiteral("qlybookmark:kept"), Range{0, 6});
        QStringList warnings;
        const AttributedString resolved = attributedStringByResolvingExportLinks(text, folder, &warnings);
        ASSERT_EQ(warnings.size(), 1) << link.toStdString();
        EXPECT_TRUE(warnings.constFirst().contains(link)) << warnings.constFirst().toStdString();
        EXPECT_EQ(attachmentCount(resolved), 0) << link.toStdString();
        EXPECT_EQ(resolved.string(), QStringLiteral("Before  after")) << link.toStdString();
        // The rest of the text is still exported.
        EXPECT_EQ(resolved.attribute(XQRTFBookmarkAttributeName, 0).toString(), QStringLiteral("kept"));

        const QByteArray rtf = wordRTFFromStoredText(text, {}, WordRTFExportSettings{{}, {}, false, folder});
        EXPECT_TRUE(rtf.contains("Before")) << link.toStdString();
        EXPECT_FALSE(rtf.contains("\\pict")) << link.toStdString();
        EXPECT_TRUE(rtf.contains("{\\*\\bkmkstart kept}")) << link.toStdString();
    }

    // The same name inside the folder is embedded; without a folder nothing is read at all.
    QStringList warnings;
    EXPECT_EQ(attachmentCount(attributedStringByResolvingExportLinks(
                  linkedText(QStringLiteral("qlypicture:inside.png")), folder, &warnings)),
              1);
    EXPECT_TRUE(warnings.isEmpty());
    EXPECT_EQ(attachmentCount(attributedStringByResolvingExportLinks(
                  linkedText(QStringLiteral("qlypicture:inside.png")), QString(), &warnings)),
              0);
    EXPECT_EQ(warnings.size(), 1);
}

TEST(WordRTFExportAPI, StoredTextsComeWithTheirNotesAndComments)
{
    QTemporaryDir dir;
    // The comment as the side file keeps it, its anchor as a comment link in the stored RTF.
    const XQCommentPtr comment = XQComment::create();
    comment->setUniqueID(QStringLiteral("C-1"));
    comment->setText(AttributedString(QStringLiteral("a remark")));
    AttributedString commented(QStringLiteral("Anchor text"));
    commented.addAttribute(XQCommentAttributeName, variantFromComment(comment), Range{0, 6});
    const QString sideFile = dir.filePath(QStringLiteral("doc.comments.xml"));
    ASSERT_TRUE(writeCommentsToURL(commented, sideFile));
    EXPECT_EQ(commentsSideFilePathForDocument(dir.filePath(QStringLiteral("doc.rtf"))), sideFile);

    AttributedString stored(QStringLiteral("Anchor text{\\Qlry_fn=a footnote\\end_Qlry_fn}"));
    stored.addAttribute(LinkAttributeName, QStringLiteral("quillcmt://C-1"), Range{0, 6});
    const QByteArray rtf = RTFFromRange(stored, Range{0, stored.length()});

    QStringList warnings;
    Error error;
    const std::optional<AttributedString> text =
        storedTextFromDocumentData(rtf, DocumentFormat::RTF, sideFile, nullptr, &error, &warnings);
    ASSERT_TRUE(text) << error.localizedDescription.toStdString();
    EXPECT_EQ(text->string(), QStringLiteral("Anchor texta footnote"));
    EXPECT_TRUE(text->attribute(XQFootnoteAttributeName, 12).isValid());
    const XQCommentPtr loaded = commentFromVariant(text->attribute(XQCommentAttributeName, 0));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->string(), QStringLiteral("a remark"));

    // A side file that is not one, and bytes that are not RTF, are errors rather than silent loss.
    writeFileBytes(dir.filePath(QStringLiteral("bad.xml")), "<NotComments/>");
    EXPECT_FALSE(
        storedTextFromDocumentData(rtf, DocumentFormat::RTF, dir.filePath(QStringLiteral("bad.xml")), nullptr, &error));
    EXPECT_TRUE(error.localizedDescription.contains(QStringLiteral("bad.xml")));
    EXPECT_FALSE(storedTextFromDocumentData("plain words", DocumentFormat::RTF, QString(), nullptr, &error));
    EXPECT_EQ(error.code, XQDocumentNotRTFError);
    // Truncated RTF gives what it held and a warning.
    warnings.clear();
    const std::optional<AttributedString> cut = storedTextFromDocumentData(
        rtf.left(rtf.indexOf("Anchor") + 8), DocumentFormat::RTF, QString(), nullptr, &error, &warnings);
    ASSERT_TRUE(cut);
    EXPECT_TRUE(cut->string().startsWith(QStringLiteral("Anchor")));
    EXPECT_EQ(warnings.size(), 1);
}

TEST(WordRTFExportAPI, FormatsSectionsAndOptions)
{
    EXPECT_EQ(documentFormatNamed(QStringLiteral("RTF")), DocumentFormat::RTF);
    EXPECT_EQ(documentFormatNamed(QStringLiteral("text")), DocumentFormat::PlainText);
    EXPECT_EQ(documentFormatNamed(QStringLiteral("word-rtf")), DocumentFormat::WordRTF);
    EXPECT_EQ(documentFormatNamed(QStringLiteral("docx")), DocumentFormat::Unknown);
    EXPECT_EQ(documentFormatOfPath(QStringLiteral("/a/b.TXT")), DocumentFormat::PlainText);
    EXPECT_EQ(documentFormatOfPath(QStringLiteral("b.word-rtf")), DocumentFormat::Unknown);
    EXPECT_FALSE(canReadDocumentFormat(DocumentFormat::WordRTF));
    EXPECT_EQ(plainTextDocumentData(AttributedString(QStringLiteral("a\u2028b\u2029c\uFFFCd"))),
              "a\nb\nc"
              "d");
    EXPECT_EQ(attributedStringFromDocumentData("\xEF\xBB\xBFwords", DocumentFormat::PlainText)->string(),
              QStringLiteral("words"));

    // One section at the start and one after each page break, titled by its first paragraph.
    const AttributedString marked = attributedStringByMarkingSectionsAtPageBreaks(
        AttributedString(QStringLiteral("  Front \nx\fChapter 1\nText\f\fLast")));
    const auto title = [&](qsizetype at, Range* range) {
        return marked.attribute(XQRTFSectionInfoAttributeName, at, range).toMap().value(XQRTFSectionTitle).toString();
    };
    Range range;
    EXPECT_EQ(title(0, &range), QStringLiteral("Front"));
    EXPECT_EQ(range, (Range{0, 10}));
    EXPECT_FALSE(marked.attribute(XQRTFSectionInfoAttributeName, 10).isValid()); // the break itself
    // A title is taken from the section's own start, not from the paragraph the break sits in.
    EXPECT_EQ(title(11, &range), QStringLiteral("Chapter 1"));
    EXPECT_EQ(range, (Range{11, 14}));
    EXPECT_FALSE(marked.attribute(XQRTFSectionInfoAttributeName, 26).isValid()); // nothing between two breaks
    EXPECT_EQ(title(27, &range), QStringLiteral("Last"));
    const AttributedString sameLine =
        attributedStringByMarkingSectionsAtPageBreaks(AttributedString(QStringLiteral("A\fB\fC")));
    EXPECT_EQ(sameLine.attribute(XQRTFSectionInfoAttributeName, 2).toMap().value(XQRTFSectionTitle),
              QVariant(QStringLiteral("B")));

    QVariantMap options;
    QString problem;
    ASSERT_TRUE(setRTFOptionFromString(options, QStringLiteral("XQRTFHasFacingPages=YES"), &problem));
    ASSERT_TRUE(setRTFOptionFromString(options, QStringLiteral("XQRTFNumberOfColumns=3")));
    ASSERT_TRUE(setRTFOptionFromString(options, QStringLiteral("XQRTFHeaderString=Page <$p> = x")));
    ASSERT_TRUE(setRTFOptionFromString(options, QStringLiteral("XQRTFCountFirstPages=false")));
    EXPECT_EQ(options.value(XQRTFHasFacingPages), QVariant(true));
    EXPECT_EQ(options.value(XQRTFNumberOfColumns), QVariant(3));
    EXPECT_EQ(options.value(XQRTFHeaderString), QVariant(QStringLiteral("Page <$p> = x")));
    EXPECT_EQ(options.value(XQRTFCountFirstPages), QVariant(false));
    EXPECT_FALSE(setRTFOptionFromString(options, QStringLiteral("XQRTFNoSuchThing=1"), &problem));
    EXPECT_TRUE(problem.contains(QStringLiteral("XQRTFNoSuchThing")));
    EXPECT_FALSE(setRTFOptionFromString(options, QStringLiteral("XQRTFHasFacingPages"), &problem));
    EXPECT_EQ(options.size(), 4);
}

// Chapters full of notes, exported as the demo does: exactly one section per chapter (note text
// made inline must not split a chapter), the section break in place of the page break, the
// numbering controls in the document formatting, and each note's mark right against its anchor.
TEST(WordRTFExportAPI, ChaptersWithNotesExportAsOneSectionEach)
{
    AttributedString stored;
    const int chapters = 3;
    for (int n = 1; n <= chapters; ++n) {
        if (n > 1)
            stored.append(QStringLiteral("\f"), Attributes{});
        stored.append(QStringLiteral("Chapter %1\nShe watched the ").arg(n), Attributes{});
        auto linked = XQComment::create(AttributedString(QStringLiteral("linked note %1").arg(n)), true);
        stored.append(QStringLiteral("lighthouse"), {{XQCommentAttributeName, variantFromComment(linked)}});
        stored.append(QStringLiteral(" shrink and "), Attributes{});
        auto comment = XQComment::create(AttributedString(QStringLiteral("remark %1").arg(n)));
        stored.append(QStringLiteral("this phrase"), {{XQCommentAttributeName, variantFromComment(comment)}});
        stored.append(QStringLiteral(". Then"), Attributes{});
        stored.append(QStringLiteral("inline note %1").arg(n), {{XQFootnoteAttributeName, 1}});
        stored.append(QStringLiteral(" it vanished.\n"), Attributes{});
    }
    WordRTFExportSettings settings;
    settings.options = {{XQRTFHeaderString, QStringLiteral("<$sectiontitle>")},
                        {XQRTFLinkedFootnotesAsEndnotes, true},
                        {XQRTFFootnoteStyle, 3}};
    const QString rtf = QString::fromLatin1(wordRTFFromStoredText(stored, {}, settings));

    EXPECT_EQ(rtf.count(QStringLiteral("\\sect\\sectd")), chapters - 1) << rtf.toStdString();
    EXPECT_FALSE(rtf.contains(QStringLiteral("\\page"))) << rtf.toStdString();
    for (int n = 1; n <= chapters; ++n) {
        // The header names the chapter, not a note's text.
        EXPECT_EQ(rtf.count(QStringLiteral(" {\\f0 Chapter %1\\b0 \\i0 \\ul0 \\par}}}").arg(n)), 1)
            << rtf.toStdString();
    }
    // Numbering controls come before the first paragraph, not inside it.
    const qsizetype firstParagraph = rtf.indexOf(QStringLiteral("\n\\pard"));
    ASSERT_GT(firstParagraph, 0);
    const qsizetype controls = rtf.indexOf(QStringLiteral("\\fet2"));
    ASSERT_GT(controls, 0);
    EXPECT_LT(controls, firstParagraph);
    EXPECT_LT(rtf.indexOf(QStringLiteral("\\ftnnrlc")), firstParagraph);
    EXPECT_LT(rtf.indexOf(QStringLiteral("\\aftnnar")), firstParagraph);
    // Marks against their anchors: no blank before a note group, none at a note's start.
    EXPECT_EQ(rtf.count(QStringLiteral("lighthouse{")), chapters) << rtf.toStdString();
    EXPECT_FALSE(rtf.contains(QStringLiteral(" {\\super\\chftn"))) << rtf.toStdString();
    EXPECT_EQ(rtf.count(QRegularExpression(QStringLiteral("\\{\\\\\\*\\\\atrfend \\d+\\}(?:\\\\[a-z]+\\d*)* ?\\{"))),
              chapters)
        << rtf.toStdString();
    EXPECT_FALSE(rtf.contains(QStringLiteral("  linked note"))) << rtf.toStdString();
    EXPECT_FALSE(rtf.contains(QStringLiteral("} .")) || rtf.contains(QStringLiteral("}  ."))) << rtf.toStdString();
}

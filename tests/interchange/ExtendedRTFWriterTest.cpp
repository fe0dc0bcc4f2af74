// The extended writer end to end: notes, comments, bookmarks, sections, pictures and page setup in
// the RTF it writes, read back where the reader can check them.
#include <QImage>
#include <QRegularExpression>
#include <QSizeF>

#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/notes/NoteConversions.h>

#include "interchange/ExportTestSupport.h"

using namespace qly;
using namespace exporttest;

namespace {

qsizetype count(const QString& haystack, const QString& needle) { return haystack.count(needle); }

} // namespace

TEST(ExtendedRTFWriter, NotesCommentsAndAnnotationsBecomeWordProcessorGroups)
{
    AttributedString text = notesManuscript();
    QVariantMap documentAttributes{{AuthorDocumentAttribute, QStringLiteral("Ann Writer")}};
    const QVariantMap options{{XQRTFLinkedFootnotesAsEndnotes, true}, {XQRTFFootnoteStyle, 3}};
    const QByteArray bytes = extendedRTFFromRange(text, Range{0, text.length()}, documentAttributes, options);
    ASSERT_FALSE(bytes.isEmpty());
    for (const char c : bytes)
        ASSERT_LT(uchar(c), 0x80u);
    const QString rtf = QString::fromLatin1(bytes);
    if (qEnvironmentVariableIsSet("QLY_DUMP_RTF"))
        qDebug().noquote() << rtf;

    // Two footnotes of kind 1 and one linked footnote (kind 2) written as an endnote.
    EXPECT_EQ(count(rtf, QStringLiteral("{\\*\\footnote")), 3);
    EXPECT_EQ(count(rtf, QStringLiteral("{\\*\\footnote\\ftnalt")), 1);
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\fs24\\up0\\super\\chftn} ")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\fet2 \\ftnbj \\ftnnrlc \\aftnnar \n\\sectd \\sftnnrlc \\saftnnar ")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\s99 Footnote;}{\\s100 Endnote;}")));
    // Two comments: numbered annotations with their ranges and the author.
    for (int n : {1, 2}) {
        EXPECT_EQ(count(rtf, QStringLiteral("{\\*\\atrfstart %1}").arg(n)), 1) << n;
        EXPECT_EQ(count(rtf, QStringLiteral("{\\*\\atrfend %1}").arg(n)), 1) << n;
        EXPECT_EQ(count(rtf, QStringLiteral("{\\*\\atnref %1}").arg(n)), 1) << n;
    }
    EXPECT_EQ(count(rtf, QStringLiteral("{\\*\\atnid Ann Writer}{\\*\\atnauthor Ann Writer}\\chatn")), 3);
    // The range of comment 1 holds its anchor text; its annotation follows with the comment's text.
    const QRegularExpression range1(
        QStringLiteral("\\{\\\\\\*\\\\atrfstart 1\\}[^{}]*first anchor[^{}]*\\{\\\\\\*\\\\atrfend 1\\}"));
    EXPECT_TRUE(range1.match(rtf).hasMatch());
    EXPECT_GT(rtf.indexOf(QStringLiteral("Comment one text")), rtf.indexOf(QStringLiteral("{\\*\\atnref 1}")));
    // The inline annotation is an annotation without a range.
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\chatn{\\*\\annotation\\pard\\plain")));
    // No marker survives, and the default page setup is supplied.
    EXPECT_FALSE(rtf.contains(QStringLiteral("<<**")));
    EXPECT_FALSE(rtf.contains(QStringLiteral("JVT_")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\paperw12240\\paperh15840\\margl1800\\margr1800\\margt1440\\margb1440")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\stshfdbch0{\\fonttbl")));
    // The body text is still readable and the footnote text sits inside its group.
    const std::optional<AttributedString> back = attributedStringFromRTF(bytes);
    ASSERT_TRUE(back.has_value());
    EXPECT_TRUE(back->string().contains(QStringLiteral("The body begins")));
    const qsizetype group = rtf.indexOf(QStringLiteral("{\\*\\footnote"));
    EXPECT_LT(group, rtf.indexOf(QStringLiteral("First footnote")));
}

// The text a page shows: notes written inline, pictures from their links, and only links a browser
// can follow.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QTemporaryDir>
#include <QUrl>

#include <qlyappkit/formats/html/HTMLPageText.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

#include "support/TestFiles.h"

using namespace qly;

TEST(HTMLPageText, NotesInlinePicturesInAndForeignLinksOut)
{
    QTemporaryDir dir;
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::green);
    ASSERT_TRUE(image.save(dir.filePath(QStringLiteral("fig.png"))));

    AttributedString stored(QStringLiteral("Text"));
    stored.append(QStringLiteral("A footnote."), {{XQFootnoteAttributeName, 1}});
    stored.append(QStringLiteral(" see "), {});
    stored.append(QStringLiteral("aside"), {{XQAnnotationAttributeName, QVariant::fromValue(Color(0, 0, 1))}});
    stored.append(QStringLiteral(" web"), {{LinkAttributeName, QUrl(QStringLiteral("https://example.org/"))}});
    stored.append(QStringLiteral(" doc"), {{LinkAttributeName, QStringLiteral("quilllnk://Chapter-2")}});
    stored.append(QStringLiteral(" mark"), {{LinkAttributeName, QStringLiteral("qlybookmark:Here")}});
    stored.append(QStringLiteral("[fig]"), {{LinkAttributeName, QStringLiteral("qlypicture:fig.png")}});
    stored.append(QStringLiteral("[out]"), {{LinkAttributeName, QStringLiteral("qlypicture:../fig.png")}});
    stored.append(QStringLiteral(" end."), {});
    QStringList warnings;
    const AttributedString page = attributedStringForHTMLPage(stored, dir.path(), &warnings);
    const QString s = page.string();
    // The footnote becomes a numbered mark, its text gathered after the text; the annotation is
    // bracketed in place.
    EXPECT_TRUE(s.startsWith(QStringLiteral("Text"))) << s.toStdString();
    EXPECT_TRUE(s.contains(QStringLiteral("[aside]")));
    EXPECT_GT(s.indexOf(QStringLiteral("A footnote.")), s.indexOf(QStringLiteral(" end.")));
    // One picture in, the one outside its folder left out with a warning.
    EXPECT_EQ(s.count(QChar(AttachmentCharacter)), 2); // the figure and the rule above the notes
    EXPECT_FALSE(s.contains(QStringLiteral("[fig]")) || s.contains(QStringLiteral("[out]")));
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings[0].contains(QStringLiteral("qlypicture:../fig.png")));
    // Only the web link is left.
    QStringList links;
    page.enumerateAttribute(LinkAttributeName, Range{0, page.length()}, [&](const QVariant& v, Range r) {
        if (v.isValid())
            links.append(page.substring(r) + u'=' + v.toUrl().toString());
        return true;
    });
    EXPECT_EQ(links, QStringList{QStringLiteral(" web=https://example.org/")});
}

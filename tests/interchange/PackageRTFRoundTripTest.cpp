// Package RTF written and read again: generated texts with every attribute the platform RTF carries,
// notes of every kind, keep-with-next paragraphs, style identifiers, document links and pictures of every
// kind, embedded and linked, come back equal.
#include "PackageTestSupport.h"
#include "support/TestFiles.h"

#include <QRandomGenerator>

#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

using namespace qly;
using namespace qly::packagetest;

namespace {

// Values that RTF and the note tags hold exactly: colours in 255ths (tags: six decimals), lengths in
// halves of a point, sizes in half points.
Color rtfColor(QRandomGenerator& rng)
{
    return Color(rng.bounded(256) / 255.0, rng.bounded(256) / 255.0, rng.bounded(256) / 255.0);
}

Color tagColor(QRandomGenerator& rng)
{
    return Color(rng.bounded(9) / 8.0, rng.bounded(5) / 4.0, rng.bounded(3) / 2.0);
}

Attributes characterAttributes(QRandomGenerator& rng)
{
    static const char* families[] = {"Helvetica", "Times", "Courier"};
    static const double sizes[] = {9, 10.5, 12, 18};
    Attributes a;
    a.insert(FontAttributeName,
             QVariant::fromValue(
                 Font::fromFamily(QLatin1String(families[rng.bounded(3)]), sizes[rng.bounded(4)], rng.bounded(4))));
    if (rng.bounded(3) == 0)
        a.insert(ForegroundColorAttributeName, QVariant::fromValue(rtfColor(rng)));
    if (rng.bounded(5) == 0)
        a.insert(BackgroundColorAttributeName, QVariant::fromValue(Color(128 / 255.0, 1, rng.bounded(255) / 255.0)));
    if (rng.bounded(4) == 0) {
        static const int underlines[] = {1, 2, 9};
        a.insert(UnderlineStyleAttributeName, underlines[rng.bounded(3)]);
        if (rng.bounded(2))
            a.insert(UnderlineColorAttributeName, QVariant::fromValue(rtfColor(rng)));
    }
    if (rng.bounded(6) == 0)
        a.insert(StrikethroughStyleAttributeName, rng.bounded(2) ? 1 : 9);
    if (rng.bounded(6) == 0)
        a.insert(SuperscriptAttributeName, rng.bounded(2) ? 1 : -1);
    if (rng.bounded(6) == 0)
        a.insert(BaselineOffsetAttributeName, rng.bounded(2) ? 1.5 : -2.0);
    if (rng.bounded(6) == 0)
        a.insert(KernAttributeName, rng.bounded(2) ? 1.2 : -0.25);
    switch (rng.bounded(8)) {
    case 0:
        a.insert(LinkAttributeName, QStringLiteral("https://example.com/a?b=1&c=%C3%A9"));
        break;
    case 1:
        a.insert(LinkAttributeName, documentLinkDictionary(QStringLiteral("Chapter-%1-Draft").arg(rng.bounded(9))));
        break;
    default:
        break;
    }
    if (rng.bounded(5) == 0)
        a.insert(XQCharacterStyleIDAttributeName, QStringLiteral("char.%1 {x}").arg(rng.bounded(3)));
    return a;
}

ParagraphStyle paragraphStyle(QRandomGenerator& rng)
{
    ParagraphStyle s;
    s.setAlignment(TextAlignment(rng.bounded(5)));
    if (rng.bounded(2)) {
        s.setHeadIndent(rng.bounded(100) * 0.5);
        s.setFirstLineHeadIndent(rng.bounded(100) * 0.5);
    }
    if (rng.bounded(2)) {
        s.setParagraphSpacingBefore(rng.bounded(30) * 0.5);
        s.setParagraphSpacing(rng.bounded(30) * 0.5);
    }
    if (rng.bounded(3) == 0)
        s.setLineHeightMultiple(1.5);
    if (rng.bounded(3) == 0)
        s.setTabStops({TextTab{LeftTextAlignment, 36}, TextTab{RightTextAlignment, 144.5}});
    if (rng.bounded(5) == 0)
        s.setTextLists({TextList{QStringLiteral("{decimal}."), 0, rng.bounded(1, 5)}});
    return s;
}

QString word(QRandomGenerator& rng)
{
    static const char16_t* words[] = {u"manuscript",  u"caf\u00e9", u"\u4e2d\u6587", u"\U0001F600ok", u"a\tb",
                                      u"back\\slash", u"{brace}",   u"\u00a0nbsp",   u"<<**odd**>>",  u"\u201cq\u201d"};
    return QString::fromUtf16(words[rng.bounded(10)]);
}

struct Pictures {
    QByteArray png = encodedImage(patternImage(7, 5, 1), "PNG");
    QByteArray jpeg = encodedImage(patternImage(16, 8, 2), "JPEG", 90);
    QByteArray tiff = encodedImage(patternImage(5, 6, 3), "TIFF");
    QByteArray gif = testfiles::readFileBytes(QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/pictures/pattern.gif"));
    QByteArray pdf = pdfBytes(QSizeF(120, 80));
};

const Pictures& pictures()
{
    static const Pictures p;
    return p;
}

TextAttachment pictureAttachment(QRandomGenerator& rng)
{
    TextAttachment attachment;
    switch (rng.bounded(7)) {
    case 0:
        attachment = TextAttachment(QStringLiteral("figure %1.png").arg(rng.bounded(3)), pictures().png);
        break;
    case 1:
        attachment = TextAttachment(QStringLiteral("photo.JPG"), pictures().jpeg);
        break;
    case 2:
        attachment = TextAttachment(QStringLiteral("scan.tiff"), pictures().tiff);
        break;
    case 3:
        attachment = TextAttachment(QStringLiteral("pattern.gif"), pictures().gif);
        break;
    case 4:
        attachment = TextAttachment(QStringLiteral("chart{1}.pdf"), pictures().pdf);
        break;
    case 5:
        attachment = TextAttachment::linkedToFile(QStringLiteral("images/linked %1|>.png").arg(rng.bounded(3)));
        break;
    default:
        attachment = TextAttachment::linkedToFile(QStringLiteral("/absolute/pictures/caf\u00e9.jpg"));
        break;
    }
    if (rng.bounded(2))
        attachment.setBounds(QSizeF(rng.bounded(1, 400) * 0.5, rng.bounded(1, 400) * 0.5));
    return attachment;
}

// A main text as the application stores it: notes in their stored forms (footnotes and preserve-formatting
// blocks true, keep-with-next over a paragraph's contents).
AttributedString generatedText(quint32 seed)
{
    QRandomGenerator rng(seed);
    AttributedString text;
    const int paragraphs = rng.bounded(1, 8);
    for (int p = 0; p < paragraphs; ++p) {
        const QVariant style = QVariant::fromValue(paragraphStyle(rng));
        const qsizetype paragraphStart = text.length();
        const bool styled = rng.bounded(3) == 0;
        for (int r = 0, runs = rng.bounded(1, 6); r < runs; ++r) {
            Attributes a = characterAttributes(rng);
            a.insert(ParagraphStyleAttributeName, style);
            switch (rng.bounded(9)) {
            case 0:
                a.insert(XQAnnotationAttributeName, QVariant::fromValue(tagColor(rng)));
                break;
            case 1:
                a.insert(XQFootnoteAttributeName, true);
                break;
            case 2:
                a.insert(XQPreserveFormattingAttributeName, true);
                break;
            case 3: {
                a.insert(AttachmentAttributeName, QVariant::fromValue(pictureAttachment(rng)));
                text.append(QString(QChar(AttachmentCharacter)), a);
                continue;
            }
            default:
                break;
            }
            QString chunk;
            for (int w = 0, n = rng.bounded(1, 5); w < n; ++w)
                chunk += word(rng) + QLatin1Char(' ');
            text.append(chunk, a);
        }
        if (rng.bounded(4) == 0)
            text.addAttribute(XQKeepWithNextAttributeName, true, Range::fromBounds(paragraphStart, text.length()));
        if (p < paragraphs - 1)
            text.append(QStringLiteral("\n"),
                        {{ParagraphStyleAttributeName, style},
                         {FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}});
        if (styled)
            text.addAttribute(XQParagraphStyleIDAttributeName, QStringLiteral("Body %1").arg(p % 2),
                              Range::fromBounds(paragraphStart, text.length()));
    }
    return text;
}

} // namespace

TEST(PackageRTFRoundTrip, GeneratedMainTextsComeBackEqual)
{
    // What the generated texts hold, so that a generator that stops making something is noticed.
    QMap<QString, int> seen;
    for (quint32 seed = 1; seed <= 150; ++seed) {
        const AttributedString original = generatedText(seed);
        original.enumerateAttributes(Range{0, original.length()}, [&](const Attributes& a, Range) {
            for (auto it = a.begin(); it != a.end(); ++it)
                ++seen[it.key()];
            if (a.contains(AttachmentAttributeName))
                ++seen[QFileInfo(a.value(AttachmentAttributeName).value<TextAttachment>().fileName()).suffix()];
            return true;
        });
        const QByteArray rtf = quilleryPackageRTFFromRange(original, Range{0, original.length()}, {}, true);
        for (char c : rtf)
            ASSERT_LT(static_cast<unsigned char>(c), 0x80) << "seed " << seed;
        const std::optional<AttributedString> read = initWithQuilleryPackageRTF(rtf, nullptr, true);
        ASSERT_TRUE(read) << "seed " << seed;
        ASSERT_TRUE(sameStoredText(original, *read)) << "seed " << seed;
    }
    for (const char* kind : {"png", "JPG", "tiff", "gif", "pdf", "XQAnnotationAttribute", "XQFootnoteAttribute",
                             "XQPreserveFormattingAttribute", "XQKeepWithNextAttributeName",
                             "XQParagraphStyleIDAttributeName", "XQCharacterStyleIDAttributeName", "NSLink"})
        EXPECT_GT(seen.value(QLatin1String(kind)), 2) << kind;
}

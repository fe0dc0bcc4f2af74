// Fuzz target for the plain RTF writer and reader together: the input builds an attributed text (text
// with tabs, breaks, braces, backslashes, non-ASCII and lone surrogates; fonts, colours, underlines,
// links and paragraph styles, some with extreme values), which is written and read back.
//  - The RTF is 7-bit and reads without a problem.
//  - The text survives: the characters read back are the characters written, except that every
//    paragraph terminator (CR LF, CR, U+2029) becomes LF. Line separators, tabs, form feeds, braces,
//    backslashes, control characters and unpaired surrogates all come back as they were.
//  - Once through RTF a text is stable: writing what was read gives RTF that reads back to a text
//    which writes exactly the same RTF again (every value the writer rounds is rounded once).
#include "FuzzSupport.h"

#include <QUrl>
#include <cmath>
#include <limits>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;

namespace {

double randomMeasure(fuzz::InputReader& in)
{
    static const double extremes[] = {0.0,
                                      -0.0,
                                      -12.5,
                                      1e9,
                                      -1e9,
                                      1e300,
                                      std::numeric_limits<double>::infinity(),
                                      std::numeric_limits<double>::quiet_NaN()};
    if (in.below(16) == 0)
        return extremes[in.below(8)];
    return (int(in.byte()) - 32) * 0.5; // -16 … 111.5 points in halves
}

Color randomColor(fuzz::InputReader& in)
{
    if (in.below(16) == 0)
        return Color(randomMeasure(in), randomMeasure(in), randomMeasure(in), randomMeasure(in));
    return Color(in.byte() / 255.0, in.byte() / 255.0, in.byte() / 255.0, in.flag() ? 1.0 : in.byte() / 255.0);
}

QString randomPiece(fuzz::InputReader& in)
{
    static const char16_t* specials[] = {u"\n",     u"\r",     u"\r\n",       u"\u2028", u"\u2029", u"\t",
                                         u"\f",     u"\\",     u"{",          u"}",      u"\\par ", u"{\\b x}",
                                         u"\u00e9", u"\u4e2d", u"\U0001F600", u"\uFFFC", u"\u0085", u"\u00a0",
                                         u"\x01",   u"\x7f",   u"\uFFFD",     u"\uFEFF", u" ",      u"\\u8232 ?"};
    switch (in.below(4)) {
    case 0:
        return QString::fromUtf16(specials[in.below(sizeof specials / sizeof *specials)]);
    case 1: {
        // Any UTF-16 units, lone surrogates and NUL included.
        QString units;
        for (int n = in.below(4); n > 0; --n)
            units.append(QChar(char16_t(in.uint16())));
        return units;
    }
    default:
        return in.text(12);
    }
}

ParagraphStyle randomParagraphStyle(fuzz::InputReader& in)
{
    ParagraphStyle style;
    style.setAlignment(TextAlignment(in.below(5)));
    style.setFirstLineHeadIndent(randomMeasure(in));
    style.setHeadIndent(randomMeasure(in));
    style.setTailIndent(randomMeasure(in));
    style.setParagraphSpacing(randomMeasure(in));
    style.setParagraphSpacingBefore(randomMeasure(in));
    if (in.flag()) {
        style.setLineSpacing(randomMeasure(in));
        style.setMinimumLineHeight(randomMeasure(in));
        style.setMaximumLineHeight(randomMeasure(in));
        style.setLineHeightMultiple(in.below(5) * 0.5);
    }
    if (in.flag()) {
        QVector<TextTab> tabs;
        for (int n = in.below(4); n > 0; --n)
            tabs.append(TextTab{TextAlignment(in.below(3)), randomMeasure(in)});
        style.setTabStops(tabs);
    }
    if (in.below(4) == 0) {
        static const char* formats[] = {"{disc}", "{decimal}.", "({lower-roman})", "{upper-alpha})", "{circle}", "-"};
        QVector<TextList> lists;
        for (int n = 1 + in.below(3); n > 0; --n)
            lists.append(TextList{QString::fromLatin1(formats[in.below(6)]), in.below(2), int(in.below(5)) - 1});
        style.setTextLists(lists);
    }
    if (in.below(8) == 0)
        style.setHeaderLevel(in.below(7));
    return style;
}

Attributes randomAttributes(fuzz::InputReader& in, const QVariant& paragraphStyle)
{
    static const char* families[] = {"Helvetica", "Times", "Courier", "Zapfino", "Ab;c{d}", ""};
    Attributes a;
    a.insert(ParagraphStyleAttributeName, paragraphStyle);
    if (in.flag())
        a.insert(FontAttributeName,
                 QVariant::fromValue(
                     Font::fromFamily(QString::fromLatin1(families[in.below(6)]), randomMeasure(in), in.below(4))));
    if (in.flag())
        a.insert(ForegroundColorAttributeName, QVariant::fromValue(randomColor(in)));
    if (in.below(4) == 0)
        a.insert(BackgroundColorAttributeName, QVariant::fromValue(randomColor(in)));
    if (in.below(4) == 0) {
        static const int styles[] = {0, 1, 2, 9, 0x201};
        a.insert(UnderlineStyleAttributeName, styles[in.below(5)]);
        if (in.flag())
            a.insert(UnderlineColorAttributeName, QVariant::fromValue(randomColor(in)));
    }
    if (in.below(6) == 0)
        a.insert(StrikethroughStyleAttributeName, int(in.below(3)));
    if (in.below(6) == 0)
        a.insert(SuperscriptAttributeName, int(in.below(5)) - 2);
    if (in.below(8) == 0)
        a.insert(BaselineOffsetAttributeName, randomMeasure(in));
    if (in.below(5) == 0) {
        const QString target = in.text(16);
        a.insert(LinkAttributeName, in.flag() ? QVariant(QUrl(target)) : QVariant(target));
    }
    return a;
}

AttributedString randomText(fuzz::InputReader& in)
{
    AttributedString text;
    QVariant paragraphStyle = QVariant::fromValue(randomParagraphStyle(in));
    for (int runs = 1 + in.below(24); runs > 0 && in.remaining() > 0; --runs) {
        if (in.below(4) == 0)
            paragraphStyle = QVariant::fromValue(randomParagraphStyle(in));
        const Attributes attributes = randomAttributes(in, paragraphStyle);
        QString piece;
        for (int n = 1 + in.below(4); n > 0; --n)
            piece += randomPiece(in);
        text.append(piece, attributes);
    }
    return text;
}

QByteArray write(const AttributedString& text) { return RTFFromRange(text, Range{0, text.length()}); }

AttributedString read(const QByteArray& rtf)
{
    for (char c : rtf)
        QLY_FUZZ_CHECK(static_cast<unsigned char>(c) < 0x80);
    RTFParseResult result;
    const std::optional<AttributedString> text = attributedStringFromRTF(rtf, nullptr, &result);
    QLY_FUZZ_CHECK(text && result);
    QLY_FUZZ_CHECK(text->checkInvariants());
    return *text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    fuzz::InputReader in(data, size);
    const AttributedString original = randomText(in);
    const AttributedString once = read(write(original));
    QLY_FUZZ_CHECK(once.string() == fuzz::withParagraphBreaksAsLineFeeds(original.string()));

    const QByteArray again = write(once);
    const AttributedString twice = read(again);
    QLY_FUZZ_CHECK(twice.string() == once.string());
    QLY_FUZZ_CHECK(write(twice) == again);
    return 0;
}

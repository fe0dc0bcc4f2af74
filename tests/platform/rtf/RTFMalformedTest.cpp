// Malformed input: the reader returns what it can and reports the problem, never crashing or hanging.
#include "RTFTestSupport.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <cctype>

#include <qlyappkit/platform/rtf/RTFTokenizer_p.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

using namespace qly;
using namespace qly::rtftest;

namespace {

std::optional<AttributedString> parse(const QByteArray& rtf, RTFParseResult* result = nullptr)
{
    return attributedStringFromRTF(rtf, nullptr, result);
}

} // namespace

TEST(RTFMalformed, TokenizerCutsEveryKindOfToken)
{
    const QByteArray data = "{\\b0\\fs-24 x\\'e9\\'zz\\*\\\n\\bin3 {}}y\\abcdefghijklmnopqrstuvwxyzabcdefghijklm7 }\\";
    rtf::Tokenizer t(std::string_view(data.constData(), size_t(data.size())));
    using K = rtf::TokenKind;
    auto expectToken = [&](K kind, std::string_view text = {}, int parameter = 0, bool hasParameter = false) {
        const rtf::Token token = t.next();
        EXPECT_EQ(int(token.kind), int(kind)) << "at " << token.offset;
        if (!text.empty()) {
            EXPECT_EQ(token.text, text);
        }
        EXPECT_EQ(token.hasParameter, hasParameter);
        if (hasParameter) {
            EXPECT_EQ(token.parameter, parameter);
        }
        return token;
    };
    expectToken(K::GroupStart);
    expectToken(K::ControlWord, "b", 0, true);
    expectToken(K::ControlWord, "fs", -24, true);
    expectToken(K::Text, "x");
    EXPECT_EQ(expectToken(K::HexByte).byte, 0xE9);
    EXPECT_EQ(expectToken(K::ControlSymbol).symbol, '\''); // invalid hex digits
    expectToken(K::Text, "zz");
    EXPECT_EQ(expectToken(K::ControlSymbol).symbol, '*');
    expectToken(K::ControlWord, "par");
    expectToken(K::Binary, "{}}"); // binary bytes are not markup
    expectToken(K::Text, "y");
    const rtf::Token longWord = expectToken(K::ControlWord, {}, 7, true);
    EXPECT_EQ(longWord.text.size(), size_t(rtf::Tokenizer::MaxWordLength));
    expectToken(K::GroupEnd);
    expectToken(K::End); // a lone backslash at the end
    expectToken(K::End);
}

TEST(RTFMalformed, TruncatedInputsGiveWhatWasReadAndTheOffset)
{
    const QByteArray whole = "{\\rtf1\\ansi{\\fonttbl{\\f0 Times;}}{\\colortbl;\\red255\\green0\\blue0;}"
                             "\\pard\\qc\\cf1 Hello {\\b bold} w\\'e9rld\\u8226 ?\\par end}";
    RTFParseResult result;
    ASSERT_TRUE(parse(whole, &result));
    EXPECT_EQ(result.status, RTFParseStatus::Ok);
    for (qsizetype cut = 0; cut < whole.size(); ++cut) {
        const QByteArray part = whole.left(cut);
        const std::optional<AttributedString> text = parse(part, &result);
        if (cut < 5) {
            EXPECT_FALSE(text) << cut;
            EXPECT_EQ(result.status, RTFParseStatus::NotRTF);
            continue;
        }
        ASSERT_TRUE(text) << cut;
        EXPECT_EQ(result.status, RTFParseStatus::UnexpectedEnd) << cut;
        EXPECT_EQ(result.offset, cut) << cut;
        EXPECT_TRUE(text->checkInvariants());
        // Whatever was read is a prefix of the whole text, unless the cut falls inside a control word
        // (a cut "\\pard" is "\\par").
        const qsizetype backslash = part.lastIndexOf('\\');
        bool insideControl = backslash >= 0;
        for (qsizetype i = backslash + 1; insideControl && i < part.size(); ++i)
            insideControl = std::isalnum(static_cast<unsigned char>(part[i])) || part[i] == '\'' || part[i] == '-';
        if (!insideControl) {
            EXPECT_TRUE(QStringLiteral("Hello bold w\u00e9rld\u2022\nend").startsWith(text->string()))
                << cut << " " << part.right(8).constData() << " " << text->string().toStdString();
        }
    }
    EXPECT_FALSE(parse("plain text"));
    EXPECT_FALSE(parse(""));
    EXPECT_TRUE(parse("\n\t  {\\rtf1 leading blanks}"));
    // Text after the document's last brace is not part of it.
    EXPECT_EQ(parse("{\\rtf1 a}b}{c")->string(), QStringLiteral("a"));
    EXPECT_EQ(parse("{\\rtf1 a}}}}")->string(), QStringLiteral("a"));
}

TEST(RTFMalformed, DeepNestingHugeParametersBinaryAndBadCodePoints)
{
    QElapsedTimer timer;
    timer.start();
    // 100,000 nested groups, plain and each changing the formatting.
    QByteArray deep = "{\\rtf1 ";
    deep += QByteArray(100000, '{') + "deep" + QByteArray(100000, '}') + "}";
    EXPECT_EQ(parse(deep)->string(), QStringLiteral("deep"));
    QByteArray formatted = "{\\rtf1 ";
    for (int i = 0; i < 100000; ++i)
        formatted += "{\\b ";
    formatted += "x";
    const std::optional<AttributedString> bold = parse(formatted); // never closed
    ASSERT_TRUE(bold);
    EXPECT_EQ(bold->string(), QStringLiteral("x"));
    EXPECT_TRUE(bold->attribute(FontAttributeName, 0).value<Font>().isBold());
    // Skipped destinations nest too.
    EXPECT_EQ(parse("{\\rtf1 {\\*\\x " + QByteArray(100000, '{') + "}a")->string(), QString());

    const std::optional<AttributedString> huge =
        parse("{\\rtf1{\\fonttbl{\\f99999999999999999999 X;}}\\f99999999999999999999\\fs99999999999 a\\fs-99999999999 b"
              "\\uc99999999999 \\u99999999999 cd\\uc1\\u-99999999999 e\\cf2147483647\\cb-2147483648\\li99999999999 "
              "\\tx-5\\ls2147483647\\ilvl-7\\itap99999999 f\\cell\\nestcell\\row\\nestrow\\cellx99999999999 g}");
    ASSERT_TRUE(huge);
    EXPECT_TRUE(huge->checkInvariants());
    // \bin data of any length, including past the end of the input, is skipped.
    EXPECT_EQ(parse("{\\rtf1 a\\bin5 {{\\}}b}")->string(), QStringLiteral("ab"));
    RTFParseResult result;
    EXPECT_EQ(parse("{\\rtf1 a\\bin999999 {{", &result)->string(), QStringLiteral("a"));
    EXPECT_EQ(result.status, RTFParseStatus::UnexpectedEnd);
    // Lone surrogates and unknown code pages do not break the text.
    const std::optional<AttributedString> odd = parse("{\\rtf1\\ansicpg77777 \\u55357 x\\'ff\\'fe\\u-1 }");
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->length(), 4); // the "x" is the fallback of the first \u
    EXPECT_LT(timer.elapsed(), 20000);
}

TEST(RTFMalformed, RandomBytesAndMutationsNeverCrash)
{
    QRandomGenerator rng(7);
    const QByteArray seed = write(AttributedString(QStringLiteral("Mixed caf\u00e9 text\nwith {braces}\tand tabs")));
    static const char* pieces[] = {"{",         "}",       "\\",        "\\'",         "\\u",         "\\bin",  "\\*",
                                   "\\fonttbl", "\\field", "\\fldinst", "\\listtable", "\\leveltext", "\\cell", "\\row",
                                   "\\uc",      "-",       "9",         ";",           "\\par"};
    for (int round = 0; round < 3000; ++round) {
        QByteArray data = seed;
        for (int m = 0, n = rng.bounded(1, 8); m < n; ++m) {
            const qsizetype at = rng.bounded(int(data.size()) + 1);
            switch (rng.bounded(3)) {
            case 0:
                data.insert(at, pieces[rng.bounded(19)]);
                break;
            case 1:
                data.remove(at, rng.bounded(1, 6));
                break;
            default:
                data.insert(at, char(rng.bounded(256)));
                break;
            }
        }
        const std::optional<AttributedString> text = parse(data);
        if (text) {
            ASSERT_TRUE(text->checkInvariants()) << data.constData();
        }
    }
}

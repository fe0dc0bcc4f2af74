// The RTF-text passes on small hand-written RTF, and the footnote-style, bookmark and header tables.
#include <QSizeF>

#include <qlyappkit/interchange/rtf/RTFBookmarks.h>
#include <qlyappkit/interchange/rtf/RTFFootnoteStyles.h>
#include <qlyappkit/interchange/rtf/RTFHeadersFooters.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/services/UserDefaults.h>
#include <qlyappkit/platform/strings/StringSearch.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

using namespace qly;

TEST(RTFTextToolkit, FontTableFontControlsAndDefaultFontSwap)
{
    QString rtf =
        QStringLiteral("{\\rtf1\\ansi\\deff3{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;\\f3\\froman\\fcharset0 Times;"
                       "\\f12\\fnil Symbol;}\n\\f3\\fs24 a\\f0 b\\f12 c\\fs20 d}");
    const QList<RTFFontTableEntry> table = RTFFontTableInfo(rtf);
    ASSERT_EQ(table.size(), 3);
    EXPECT_EQ(table.at(1), (RTFFontTableEntry{QStringLiteral("f3"), QStringLiteral("\\froman\\fcharset0 Times")}));
    EXPECT_EQ(table.at(2).fontID, QStringLiteral("f12"));
    // Font 1 must not match "\f12", nor "\fs".
    EXPECT_TRUE(rangeOfFontWithNumber(rtf, 1, 0, Range{0, rtf.size()}).isNotFound());
    const Range twelve = rangeOfFontWithNumber(rtf, 12, 0, Range{0, rtf.size()});
    EXPECT_EQ(twelve.location, rtf.indexOf(QStringLiteral("\\f12\\fnil")));
    const Range inText = rangeOfFontWithNumber(rtf, 12, qly::BackwardsSearch, Range{0, rtf.size()});
    EXPECT_EQ(rtf.mid(inText.location, inText.length + 2), QStringLiteral("\\f12 c"));
    EXPECT_EQ(RTFFontTagForIndex(rtf, rtf.lastIndexOf(QStringLiteral(" d"))), QStringLiteral("\\f12\\fs20"));
    EXPECT_EQ(RTFFontTagForIndex(rtf, rtf.indexOf(QStringLiteral(" b"))), QStringLiteral("\\f0\\fs24"));
    fixUpDefaultFont(rtf);
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\deff0{")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\fonttbl\\f3\\fswiss\\fcharset0 Helvetica;\\f0\\froman")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\f0\\fs24 a\\f3 b\\f12 c")));
}

TEST(RTFTextToolkit, PlaceholderTagsBecomeRTFWithFontAndFormatting)
{
    QString rtf = QStringLiteral("\\f1\\fs28 x <<**S(\\\\b1\\\\i0\\\\ul0)**>>note<<**E(\\\\b0 \\\\i0 \\\\ul0 )**>> y "
                                 "<<**S(\\\\b0\\\\i0\\\\ul0)**>>second<<**E(\\\\b0\\\\i1\\\\ul)**>> <<**S(x)**>>open");
    EXPECT_EQ(replacePlaceholderTagsWithRTF(rtf, QStringLiteral("S"), QStringLiteral("E"), QStringLiteral("[s]"),
                                            QStringLiteral("[e]")),
              2);
    EXPECT_EQ(rtf,
              QStringLiteral("\\f1\\fs28 x [s]\\f1\\fs28\\b1\\i0\\ul0 note[e]\\f1\\fs28\\b0 \\i0 \\ul0   y "
                             "[s]\\f1\\fs28\\b0\\i0\\ul0 second[e]\\f1\\fs28\\b0\\i1\\ul  <<**S(x)**>>open"));
}

TEST(RTFTextToolkit, HighlightMarginListAndLinkPasses)
{
    QString rtf = QStringLiteral("\\cb1 a\\cb3 b\\clcbpat2 \\\\cb4");
    changeRTFBackgroundColorsToRTFHighlightsForMSWord(rtf, true);
    EXPECT_EQ(rtf, QStringLiteral("\\highlight0 a\\highlight3 b\\clcbpat2 \\\\cb4"));
    changeRTFHighlightsToRTFBackgroundColors(rtf);
    EXPECT_EQ(rtf, QStringLiteral("\\cb a\\cb3 b\\clcbpat2 \\\\cb4"));
    QString notWord = QStringLiteral("\\cb1 a");
    changeRTFBackgroundColorsToRTFHighlightsForMSWord(notWord, false);
    EXPECT_EQ(notWord, QStringLiteral("\\highlight1 a"));

    QString margins = QStringLiteral("\\li0\\ri0 \\fi0 a\\ri0\\sa0 b\\ri0} \\ri05 \\ri0 c");
    fixUpRightMargins(margins);
    EXPECT_EQ(margins, QStringLiteral("\\li0\\fi0 a\\sa0 b} \\ri05  c"));

    QString lists = QStringLiteral("{\\leveltext\\leveltemplateid1\\'02\\'05.;}{\\leveltext\\'01\\'05;}");
    QString unchanged = lists;
    fixUpRTFLists(unchanged); // the current toolkit needs no repair
    EXPECT_EQ(unchanged, lists);
    fixUpRTFLists(lists, 949.0);
    EXPECT_EQ(lists, QStringLiteral("{\\leveltext\\leveltemplateid1\\'02\\'00.;}{\\leveltext\\'01\\'05;}"));

    QString links =
        QStringLiteral("{\\field{\\*\\fldinst{HYPERLINK \"http://a.example/\"}}{\\fldrslt \\cf2 \\ulc0 \\ul a}}"
                       "{\\field{\\*\\fldinst{HYPERLINK \"http://other/\"}}{\\fldrslt \\ulc0 b}}");
    QString none = links;
    EXPECT_TRUE(stylesheetCharacterStylesByInsertingCharacterStylesForColoredHyperlinks(none, {}).isEmpty());
    EXPECT_EQ(stylesheetCharacterStylesByInsertingCharacterStylesForColoredHyperlinks(
                  links, {QStringLiteral("http://a.example/")}),
              QStringLiteral("{\\*\\cs1 Default;}{\\*\\cs2 Hyperlink;}"));
    EXPECT_TRUE(links.contains(QStringLiteral("{\\fldrslt \\cs2 \\cf2 \\ul a}}")));
    EXPECT_TRUE(links.contains(QStringLiteral("{\\fldrslt \\ulc0 b}}")));

    QString internal = QStringLiteral("{\\*\\fldinst{HYPERLINK \"rtfbkmklink://Chapter_One\"}}{\\fldrslt x}");
    updateInternalRTFHyperlinks(internal);
    EXPECT_EQ(internal, QStringLiteral("{\\*\\fldinst{HYPERLINK \\\\l Chapter_One}}{\\fldrslt x}"));

    QString itap = QStringLiteral("\\itap1 a\\itap2 b\\itap3 c");
    EXPECT_EQ(removeItapTagsFromRange(itap, Range{0, 14}), 12);
    EXPECT_EQ(itap, QStringLiteral(" a b\\itap3 c"));
}

TEST(RTFTextToolkit, ParagraphRangesMarkupAndFragments)
{
    const QString rtf = QStringLiteral("\\pard\\tx560\n\\f0 one\\\ntwo\\\nthree");
    const Range r = RTFParagraphRangeForRange(rtf, Range{rtf.indexOf(QStringLiteral("two")), 1});
    EXPECT_EQ(rtf.mid(r.location, r.length), QStringLiteral("two\\\n"));
    const Range first = RTFParagraphRangeForRange(rtf, Range{rtf.indexOf(QStringLiteral("one")), 1});
    EXPECT_EQ(rtf.mid(first.location, first.length), QStringLiteral("\\f0 one\\\n"));

    EXPECT_EQ(RTFStringByConvertingMarkup(QStringLiteral("{{\\b raw}}")), QStringLiteral("\\b raw"));
    const QString marked = RTFStringByConvertingMarkup(QStringLiteral("_Title_ **bold** *it* page <$p>"));
    EXPECT_TRUE(marked.startsWith(QStringLiteral("\\ul Title\\ul0  \\b1 bold\\b0  \\i1 it\\i0  page <$p>")))
        << marked.toStdString();
    const QString fragment = RTFFragmentFromString(QStringLiteral("Caf\u00e9 {x}"));
    EXPECT_EQ(fragment, QStringLiteral("Caf\\uc0\\u233  \\{x\\}"));
    EXPECT_EQ(stringFromRTFFragment(fragment), QStringLiteral("Caf\u00e9 {x}"));
}

TEST(RTFTextToolkit, FootnoteStylesBookmarkNamesAndHeaderGroups)
{
    EXPECT_EQ(RTFFootnoteStyleControlForFootnoteStyle(0, false, false), QStringLiteral("\\ftnnar"));
    EXPECT_EQ(RTFFootnoteStyleControlForFootnoteStyle(5, true, true), QStringLiteral("\\saftnnchi"));
    EXPECT_EQ(RTFFootnoteStyleControlForFootnoteStyle(6, false, false), QStringLiteral("\\"));
    EXPECT_EQ(RTFFootnoteStyleControlForFootnoteStyle(-1, true, true), QStringLiteral("\\sa"));

    const QString title = QStringLiteral("Cha\u00eeter   one:  the\tlong  road home again and again");
    EXPECT_EQ(RTFBookmarkNameForString(title), QStringLiteral("Chaiter_one_the_long_road_home"));
    UserDefaults::standard().setValue(RemoveUnderscoresInRTFBookmarksDefault, true);
    EXPECT_EQ(RTFBookmarkNameForString(QStringLiteral("a b  c")), QStringLiteral("abc"));
    UserDefaults::standard().removeValue(RemoveUnderscoresInRTFBookmarksDefault);

    EXPECT_EQ(twipsToRightMarginWithDocumentAttributes({}), 7200);
    const QVariantMap page{{PaperSizeDocumentAttribute, QSizeF(612, 792)},
                           {LeftMarginDocumentAttribute, 72.0},
                           {RightMarginDocumentAttribute, 72.5}};
    EXPECT_EQ(twipsToRightMarginWithDocumentAttributes(page), 9350);
    EXPECT_TRUE(headerOrFooterRTFForControl(QStringLiteral("header"), QString(), QStringLiteral("\\f0 "), 12, 2, 9000)
                    .isEmpty());
    EXPECT_EQ(headerOrFooterRTFForControl(QStringLiteral("header"), QStringLiteral("a"), QStringLiteral("\\f1 "), 11, 2,
                                          9000),
              QStringLiteral("{\\header {\\pard\\qc {\\f1\\fs22 a\\par}}}\n"));
    EXPECT_EQ(headerOrFooterRTFForControl(QStringLiteral("footerf"), QStringLiteral("a\\tab b"),
                                          QStringLiteral("\\f0 "), 0, 2, 9001),
              QStringLiteral("{\\footerf {\\pard\\tqr\\tx9001\\ql {\\f0 a\\tab b\\par}}}\n"));
    // The text starts right after the formatting's delimiter, or right after the group's brace.
    EXPECT_EQ(headerOrFooterRTFForControl(QStringLiteral("header"), QStringLiteral("a\tb\tc"), QString(), 0, 1, 9001),
              QStringLiteral("{\\header {\\pard\\tqc\\tx4500\\tqr\\tx9001\\ql {a\tb\tc\\par}}}\n"));
    EXPECT_EQ(replaceHeaderFooterPlaceholders(QStringLiteral("<$p> of <$pagecount> \\<$p> <$SECTIONTITLE>"),
                                              QStringLiteral("Two")),
              QStringLiteral("{\\chpgn} of {\\field {\\*\\fldinst {NUMPAGES}}{\\fldrslt 1}} \\<$p> TWO"));
}

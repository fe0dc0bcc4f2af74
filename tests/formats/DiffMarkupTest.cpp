// A merged comparison as plain text with markers.
#include <qlyappkit/formats/comparison/DiffConstants.h>
#include <qlyappkit/formats/comparison/DiffMarkup.h>

using namespace qly;

namespace {

// Pieces of text, each plain (empty value) or changed ("OldText"/"NewText").
AttributedString merged(const std::vector<std::pair<QString, QString>>& pieces)
{
    AttributedString text;
    for (const auto& [piece, change] : pieces)
        text.append(piece, change.isEmpty() ? Attributes() : Attributes{{XQChangedTextAttributeName, change}});
    return text;
}

} // namespace

TEST(DiffMarkup, ChangedStretchesGoBetweenTheirMarkers)
{
    const QString O = XQChangedTextOld, N = XQChangedTextNew, R = XQDiffTerminalReset;
    const QString red = XQDiffRemovedTextTerminalStart, blue = XQDiffAddedTextTerminalStart;
    struct Case {
        const char* what;
        std::vector<std::pair<QString, QString>> pieces;
        QString brackets, terminal;
        bool different;
    };
    const Case cases[] = {
        {"unchanged",
         {{QStringLiteral("all the same\n"), {}}},
         QStringLiteral("all the same\n"),
         QStringLiteral("all the same\n"),
         false},
        {"empty", {}, QString(), QString(), false},
        {"replaced word",
         {{QStringLiteral("The "), {}},
          {QStringLiteral("ship"), O},
          {QStringLiteral("boat"), N},
          {QStringLiteral(" sailed"), {}}},
         QStringLiteral("The [-ship-]{+boat+} sailed"),
         QStringLiteral("The ") + red + QStringLiteral("ship") + R + blue + QStringLiteral("boat") + R
             + QStringLiteral(" sailed"),
         true},
        // Colours stop at each line break inside a stretch and start again after it; a stretch that
        // ends with its line break is closed before it.
        {"across lines",
         {{QStringLiteral("a\r\nb\n"), O}, {QStringLiteral("c\u2029d"), N}},
         QStringLiteral("[-a\r\nb\n-]{+c\u2029d+}"),
         red + QStringLiteral("a") + R + QStringLiteral("\r\n") + red + QStringLiteral("b") + R + QStringLiteral("\n")
             + blue + QStringLiteral("c") + R + QStringLiteral("\u2029") + blue + QStringLiteral("d") + R,
         true},
        // A blank line inside a stretch gets no empty pair of colours.
        {"blank line",
         {{QStringLiteral("x\n\ny"), N}},
         QStringLiteral("{+x\n\ny+}"),
         blue + QStringLiteral("x") + R + QStringLiteral("\n\n") + blue + QStringLiteral("y") + R,
         true},
        // Another value of the attribute is no change.
        {"unknown value",
         {{QStringLiteral("x"), QStringLiteral("Other")}},
         QStringLiteral("x"),
         QStringLiteral("x"),
         false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const AttributedString text = merged(c.pieces);
        EXPECT_EQ(textMarkingDifferences(text, bracketDiffTextMarkers()), c.brackets);
        EXPECT_EQ(textMarkingDifferences(text, terminalDiffTextMarkers()), c.terminal);
        EXPECT_EQ(hasDifferences(text), c.different);
    }
}

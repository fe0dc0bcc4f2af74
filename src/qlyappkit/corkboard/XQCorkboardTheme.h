#pragma once
// The corkboard's colours, fonts and fixed measures: the two card themes and the defaults every new
// board starts from.
#include <QString>

#include <qlyappkit/platform/text/Attributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

/// Posted (object: the view) when the selection changes; user info below.
inline const QString XQCorkboardViewSelectionDidChangeNotification =
    QStringLiteral("XQCorkboardViewSelectionDidChangeNotification");
/// Posted (object: the view) at the end of every reloadData.
inline const QString XQCorkboardViewDidReloadNotification = QStringLiteral("XQCorkboardViewDidReloadNotification");
/// User-info keys of the selection notification: the replaced selection (an XQIndexSet), and a true
/// boolean present only when the selected cards are to be brought to the front.
inline const QString XQCorkboardOldSelectionKey = QStringLiteral("OldSelection");
inline const QString XQCorkboardBringToFrontKey = QStringLiteral("BringToFront");

/// The image names the board's artwork is known by (drawn in code, see XQCorkboardArtwork.h).
inline const QString XQCorkboardPatternImageName = QStringLiteral("CorkboardPattern");
inline const QString XQCorkboardPinImageName = QStringLiteral("CorkboardPin");

/// The string whose height gives the card text's line height.
inline const QString XQCorkboardLineHeightSample = QStringLiteral("LineHeight");
/// Shown in place of the text of a card that has none, when the board shows placeholders.
inline constexpr const char* XQCorkboardPlaceholderText = "No text";

/// The face names of the default fonts: card text and titles, and picture-card titles.
inline const QString XQCorkboardTextFontName = QStringLiteral("Courier");
inline const QString XQCorkboardImageTitleFontName = QStringLiteral("Chalkboard");

struct XQCorkboardTheme {
    Color divider;
    Color lines;
};

/// Red title rule, blue lines.
inline constexpr XQCorkboardTheme XQRedAndBlueIndexCardTheme{Color(0.949, 0.502, 0.459, 1.0),
                                                             Color(0.561, 0.773, 0.894, 1.0)};
/// Blue title rule, light grey lines.
inline constexpr XQCorkboardTheme XQBlueAndBlackIndexCardTheme{Color(0.541, 0.659, 0.9, 1.0), Color::white(0.8, 1.0)};

inline constexpr Color XQCorkboardDefaultStampColor = Color(0.65, 0.25, 0.25, 0.3);

/// The title height used when title attributes carry no font.
inline constexpr double XQCorkboardTitleHeightWithoutFont = 18.0;
/// Width of the label chip at the right end of the title.
inline constexpr double XQCorkboardLabelChipWidth = 14.0;
/// Kerning tried when shrinking a title that does not fit.
inline constexpr double XQCorkboardShrunkTitleKerning = -0.16;
/// Card shadow: offset (y up, as the geometry of the original artwork) and blur radius.
inline constexpr double XQCorkboardCardShadowOffsetY = -3.5;
inline constexpr double XQCorkboardCardShadowBlurRadius = 8.0;
inline constexpr double XQCorkboardPinShadowBlurRadius = 2.0;

Attributes XQCorkboardDefaultTextTitleAttributes();
Attributes XQCorkboardDefaultImageTitleAttributes();
Attributes XQCorkboardDefaultTextAttributes();
/// The user font at 16 points, bold.
Font XQCorkboardDefaultStampFont();
/// The font of an attribute dictionary, if it has one.
std::optional<Font> XQCorkboardFontOfAttributes(const Attributes& attributes);

} // namespace qly

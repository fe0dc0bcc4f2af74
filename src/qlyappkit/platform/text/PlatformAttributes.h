#pragma once
// Names of the platform's standard text attributes and document attributes.
#include <QString>

namespace qly {

// Character and paragraph attributes.
inline const QString FontAttributeName = QStringLiteral("NSFont"); ///< Font
inline const QString ParagraphStyleAttributeName = QStringLiteral("NSParagraphStyle"); ///< ParagraphStyle
inline const QString ForegroundColorAttributeName = QStringLiteral("NSColor"); ///< Color
inline const QString BackgroundColorAttributeName = QStringLiteral("NSBackgroundColor"); ///< Color
inline const QString UnderlineStyleAttributeName =
    QStringLiteral("NSUnderline"); ///< int: 0 none, 1 single, 2 thick, 9 double
inline const QString UnderlineColorAttributeName = QStringLiteral("NSUnderlineColor");
inline const QString StrikethroughStyleAttributeName = QStringLiteral("NSStrikethrough"); ///< int, as underline
inline const QString StrikethroughColorAttributeName = QStringLiteral("NSStrikethroughColor");
inline const QString SuperscriptAttributeName = QStringLiteral("NSSuperScript"); ///< int: >0 up, <0 down
inline const QString BaselineOffsetAttributeName = QStringLiteral("NSBaselineOffset"); ///< double, points
inline const QString KernAttributeName = QStringLiteral("NSKern"); ///< double, points
inline const QString LinkAttributeName = QStringLiteral("NSLink"); ///< QUrl, QString or QVariantMap
inline const QString AttachmentAttributeName = QStringLiteral("NSAttachment"); ///< TextAttachment
inline const QString ToolTipAttributeName = QStringLiteral("NSToolTip"); ///< QString
inline const QString ObliquenessAttributeName = QStringLiteral("NSObliqueness");
inline const QString ExpansionAttributeName = QStringLiteral("NSExpansion");

/// Underline and strikethrough styles as the platform numbers them.
enum UnderlineStyle : int {
    UnderlineStyleNone = 0,
    UnderlineStyleSingle = 1,
    UnderlineStyleThick = 2,
    UnderlineStyleDouble = 9,
};

/// The attachment character that an attachment attribute sits on.
inline constexpr char16_t AttachmentCharacter = 0xFFFC;

// Document attributes (the dictionary that travels with a text into RTF and back).
inline const QString PaperSizeDocumentAttribute = QStringLiteral("PaperSize"); ///< QSizeF, points
inline const QString LeftMarginDocumentAttribute = QStringLiteral("LeftMargin"); ///< double, points
inline const QString RightMarginDocumentAttribute = QStringLiteral("RightMargin");
inline const QString TopMarginDocumentAttribute = QStringLiteral("TopMargin");
inline const QString BottomMarginDocumentAttribute = QStringLiteral("BottomMargin");
inline const QString AuthorDocumentAttribute = QStringLiteral("Author"); ///< QString
inline const QString ViewModeDocumentAttribute = QStringLiteral("ViewMode");
inline const QString DocumentTypeDocumentAttribute = QStringLiteral("DocumentType");
inline const QString ExcludedElementsDocumentAttribute = QStringLiteral("ExcludedElements");
inline const QString TitleDocumentAttribute = QStringLiteral("Title"); ///< QString
/// The value of DocumentTypeDocumentAttribute that asks for HTML.
inline const QString HTMLTextDocumentType = QStringLiteral("NSHTML");

} // namespace qly

#pragma once
// The framework's own text attribute names, the preserve-formatting options, the link schemes for
// comment and document links, and the kinds of inline footnote.
//
// Several names differ from their values; the values are what archived text and other programs
// match, so both must stay exactly as they are.
#include <QString>
#include <QtGlobal>

namespace qly {

// ---- attribute names

/// Value: std::shared_ptr<XQComment>. The anchor text of a linked (margin) comment or footnote.
inline const QString XQCommentAttributeName = QStringLiteral("XQCommentAttributeName");
/// Value: Color. The run is an inline annotation shown in that colour.
inline const QString XQAnnotationAttributeName = QStringLiteral("XQAnnotationAttribute");
/// Value: a number, one of the XQFootnoteKind values. The run is the text of an inline footnote.
inline const QString XQFootnoteAttributeName = QStringLiteral("XQFootnoteAttribute");
/// Value: Color. The text of a linked comment written inline after its anchor, in the comment's colour.
inline const QString XQLinkedCommentAttributeName = QStringLiteral("XQLinkedCommentAttribute");
/// Marks the footnote reference mark written in the main text when footnotes are made inline.
inline const QString XQInlineFootnoteMarkerAttributeName = QStringLiteral("XQInlineFootnoteMarkerAttributeName");
/// Marks the label written in front of a footnote's own text when footnotes are made inline.
inline const QString XQInlineFootnoteLabelAttributeName = QStringLiteral("XQInlineFootnoteLabelAttributeName");
/// The run keeps its formatting as typed when the document is reformatted; a true number when read from tags.
inline const QString XQPreserveFormattingAttributeName = QStringLiteral("XQPreserveFormattingAttribute");
/// A boolean number over a whole paragraph: keep it on the same page as the next.
inline const QString XQKeepWithNextAttributeName = QStringLiteral("XQKeepWithNextAttributeName");
/// Identifier string of the named paragraph style applied to the paragraph.
inline const QString XQParagraphStyleIDAttributeName = QStringLiteral("XQParagraphStyleIDAttributeName");
/// Identifier string of the named character style applied to the run.
inline const QString XQCharacterStyleIDAttributeName = QStringLiteral("XQCharacterStyleIDAttributeName");

// ---- what a preserve-formatting block keeps

inline const QString XQPreserveFormattingPreservesAlignment = QStringLiteral("XQPreserveFormattingPreservesAlignment");
inline const QString XQPreserveFormattingPreservesTabsAndIndents =
    QStringLiteral("XQPreserveFormattingPreservesTabsAndIndents");
inline const QString XQPreserveFormattingPreservesLineSpacing =
    QStringLiteral("XQPreserveFormattingPreservesLineSpacing");
inline const QString XQPreserveFormattingPreservesFontSize = QStringLiteral("XQPreserveFormattingPreservesFontSize");

// ---- link schemes (held in LinkAttributeName)

/// A comment link: this prefix followed by the comment's unique ID.
inline const QString XQCommentLinkScheme = QStringLiteral("quillcmt://");
/// A document link in its flattened form: this prefix followed by the target's identifier.
inline const QString XQDocumentLinkScheme = QStringLiteral("quilllnk://");
/// The one key of the dictionary that holds a document link in memory.
inline const QString XQQuilleryLinkKey = QStringLiteral("QuilleryLink");
/// Both scheme prefixes are this long; readers take the identifier from this index on.
inline constexpr qsizetype XQLinkSchemePrefixLength = 11;

// ---- inline footnote kinds (values of XQFootnoteAttributeName)

/// An ordinary inline footnote (also what a boolean yes reads as).
inline constexpr int XQInlineFootnoteKind = 1;
/// A linked footnote that has been turned inline.
inline constexpr int XQLinkedFootnoteMadeInlineKind = 2;
/// A linked comment exported as a footnote.
inline constexpr int XQLinkedCommentAsFootnoteKind = 3;

} // namespace qly

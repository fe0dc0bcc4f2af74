#pragma once
// The text markers that carry features through the plain RTF writer, and the RTF they become.
#include <QString>

namespace qly::rtfmarkers {

inline const QString SectionTitleStart = QStringLiteral("<<**XQ_SECTION_TITLE::");
inline const QString SectionTitleEnd = QStringLiteral("::**>>");
inline const QString SectionPageFlag = QStringLiteral("<<$page>>::");
inline const QString SectionFrontFlag = QStringLiteral("<<$front>>::");
inline const QString SectionSingleFlag = QStringLiteral("<<$single>>::");
inline const QString BookmarkStartOpen = QStringLiteral("<<**XQ_BK_MK_START_TAG:<<");
inline const QString BookmarkStartClose = QStringLiteral(">>:XQ_BK_MARK_START_TAG>>");
inline const QString BookmarkEndOpen = QStringLiteral("<<**XQ_BK_MK_END_TAG:<<");
inline const QString BookmarkEndClose = QStringLiteral(">>:XQ_BK_MARK_END_TAG>>");
inline const QString PageRefStartOpen = QStringLiteral("<<**XQ_PAGEREF_START_TAG:<<");
inline const QString PageRefStartClose = QStringLiteral(">>:XQ_PAGEREF_START_TAG>>");
inline const QString PageRefEnd = QStringLiteral("<<**XQ_PAGEREF_END_TAG**>>");
inline const QString KeepWithNextStart = QStringLiteral("<$--QLY_KEEP_WITH_NEXT-->");
inline const QString KeepWithNextEnds = QStringLiteral("<$QLY_KEEP_WITH_NEXT_ENDS-->");
inline const QString ColumnsMarkerText = QStringLiteral("<<**RTF_COLUMNS_START_HERE**>>");
inline const QString HeaderFooterMarker = QStringLiteral("<<**JVT_HEADERFOOTER_TAG**>>");
inline const QString ImageMarkerStart = QStringLiteral("<<**JVT_IMG_TAG");
inline const QString ImageMarkerEnd = QStringLiteral("**>>");
inline const QString FootnoteControlsMarker = QStringLiteral("<<**XQ_FN_OR_ENDN_TAG**>>");
inline const QString WidowOrphanMarker = QStringLiteral("<<**XQ_WIDOW_ORPHAN_TAG**>>");

inline const QString CommentLinkStartTag = QStringLiteral("JVT_CMMTLNK_START_TAG");
inline const QString CommentLinkEndTag = QStringLiteral("JVT_CMMTLNK_END_TAG");
inline const QString CommentTextStartTag = QStringLiteral("JVT_CMMTTXT_START_TAG");
inline const QString CommentTextEndTag = QStringLiteral("JVT_CMMTTXT_END_TAG");
inline const QString AnnotationStartTag = QStringLiteral("JVT_ANNOT_START_TAG");
inline const QString AnnotationEndTag = QStringLiteral("JVT_ANNOT_END_TAG");
inline const QString FootnoteStartTag = QStringLiteral("JVT_FN%@_START_TAG");
inline const QString FootnoteEndTag = QStringLiteral("JVT_FN%@_END_TAG");

inline const QString AtrfStartNumber = QStringLiteral("<<**JVT_atrfstart**>>");
inline const QString AtrfEndNumber = QStringLiteral("<<**JVT_atrfend**>>");
inline const QString AtnRefNumber = QStringLiteral("<<**JVT_atnref**>>");

} // namespace qly::rtfmarkers

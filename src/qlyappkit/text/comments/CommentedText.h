#pragma once
// Operations on texts that carry linked comments and document links: searching comment texts along
// with the main text, gathering comment texts, and flattening comment and document links to URLs for
// saving (and back).
//
// The overloads taking a MutableAttributedString look for XQCommentedTextStorageMethods on it (text
// storages that keep a comments list); a plain AttributedString never has it.
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/text/comments/XQComment.h>

#include <QHash>

namespace qly {

/// Searches the characters in range (options as for qly::rangeOfString). When includeComments is set,
/// text is a commented storage and range is not empty, the comments anchored in range are searched
/// too, in text order: at the first whose text matches, the result is its anchor range if the main
/// text had no match, the main-text match if the anchor is empty, else whichever starts first (the
/// anchor on a tie). loosePunctuation is accepted for the find panel's sake; the search is plain.
Range rangeOfString(const MutableAttributedString& text, const QString& string, unsigned options, Range range,
                    bool loosePunctuation, bool includeComments);
/// The same on a plain text value: only the characters are searched.
Range rangeOfString(const AttributedString& text, const QString& string, unsigned options, Range range,
                    bool loosePunctuation, bool includeComments);

/// A commented storage's comments' texts joined by "\n"; otherwise see the AttributedString overload.
QString allCommentsAsString(const MutableAttributedString& text);
/// The non-empty texts of the comments on the comment runs, in text order, joined by "\n".
QString allCommentsAsString(const AttributedString& text);

/// A copy in which (with includeComments) every comment run whose comment has an ID also gets the link
/// "quillcmt://<ID>", and every document link dictionary becomes the link "quilllnk://<identifier>".
/// The comment attribute stays.
AttributedString attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(const AttributedString& text,
                                                                                   bool includeComments);
/// Turns every "quilllnk://" link back into a document link dictionary, in one editing batch; other
/// links stay. The identifier keeps its case from a link held as text; for one held as a QUrl see
/// LinkValues.h for what QUrl has already lost.
void convertQuilleryLinkURLsToDictionaries(MutableAttributedString& text);

/// Comments by unique ID.
using XQCommentsByID = QHash<QString, XQCommentPtr>;

/// Turns every comment link of text into the comment attribute of the comment with that ID, in one
/// editing batch; links to unknown IDs are dropped, other links stay. IDs match exactly, or else
/// without regard to case: a comment link held as a QUrl comes lower-cased (LinkValues.h).
void loadCommentsFromDictionary(MutableAttributedString& text, const XQCommentsByID& comments);

} // namespace qly

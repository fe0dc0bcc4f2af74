#pragma once
// Repairing the lists of HTML that closes an item before a list nested in it ("<li>a</li><ul>…</ul>"):
// the item's end tag is moved after the nested list, which then sits inside the item.
#include <QString>

#include <qlyappkit/platform/text/Range.h>

namespace qly {

/// Repairs "<ol" lists, then "<ul" lists (tags matched without regard to ASCII case).
void fixUpNestedHTMLLists(QString& html);

/// For each start tag in order: when the last character before it other than white space ends an
/// "</li>" that does not begin the text, that "</li>" is moved to just after the end tag that closes
/// the list the start tag opens. A start tag that needs the move but whose list is never closed stops
/// the repair (nothing after it changes). Linear in the length of the text, whatever the nesting.
void fixUpNestedHTMLListsWithStartTag(QString& html, const QString& startTag, const QString& endTag);

/// The position just after the end tag that closes the list opened by the start tag at
/// startTagRange: start tags met on the way open lists that their own end tags close. NotFound when
/// the text ends first.
qsizetype endOfHTMLListForStartTag(const QString& html, const QString& startTag, const QString& endTag,
                                   Range startTagRange);

} // namespace qly

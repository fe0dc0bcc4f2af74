#pragma once
// The part of the outline list controllers that is not user interface: keeping sibling titles unique.
#include <qlyappkit/formats/outline/XQBaseNode.h>

namespace qly {

/// Holds the top-level nodes of an outline and renames items so that no two siblings share a title
/// (compared lower-cased).
class XQOutlineController {
public:
    const XQBaseNodeList& contents() const { return m_contents; }
    void setContents(const XQBaseNodeList& contents) { m_contents = contents; }

    /// Splits a title into its base and number: "Scene-12" gives "Scene" and 12. The number is the
    /// digits after the last "-"; with no "-", nothing after it, anything but ASCII digits after it, a
    /// number too large for 64 bits, or a number of 0, the base is the whole title and the number 0.
    static QString basenameFromTitle(const QString& title, qint64* currentNumber);

    /// Renames item, if needed, to a title no other sibling has (lower-cased comparison): its base
    /// followed by "-N", N counting up from its own number by the number of siblings each candidate
    /// meets (should the count pass the largest number, the numbered title becomes the base and counting
    /// starts again). Siblings are the children of item's parent, or contents() when it has none. Leaves
    /// a title that is already unique alone.
    void makeTitleOfItemUnique(const XQBaseNodePtr& item) const;

    /// makeTitleOfItemUnique for each node of siblings in turn (the list must be their parent's
    /// children, or contents()), through an index of the titles: linear in the siblings rather than
    /// quadratic, for long lists.
    static void makeTitlesUniqueAmongSiblings(const XQBaseNodeList& siblings);
    /// makeTitleOfItemUnique for every node of the outline: contents() and every children list below.
    void makeAllTitlesUnique() const;

private:
    XQBaseNodeList m_contents;
};

} // namespace qly

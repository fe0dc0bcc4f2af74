#pragma once
// An OPML file's items as an outline node tree.
#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/formats/outline/XQBaseNode.h>

namespace qly {

/// The attribute that gives an outline item its title.
inline const QString XQOPMLTextAttributeName = QStringLiteral("text");

/// One node per item of the body, in document order: the title from the "text" attribute (a node
/// without one keeps the default title), every other attribute as a text property. Items that had
/// child nodes become groups, the others leaves. Any depth is built without recursion.
XQBaseNodeList XQBaseNodesFromOPMLStorage(const XQOPMLStorage& storage);

} // namespace qly

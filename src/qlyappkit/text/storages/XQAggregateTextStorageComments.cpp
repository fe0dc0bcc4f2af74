// XQAggregateTextStorage: the comments of all components, and comment operations passed to the
// component that holds the range.
#include <qlyappkit/text/storages/XQAggregateTextStorage.h>

#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/storages/XQTextStorage.h>

namespace qly {

void XQAggregateTextStorage::rebuildComments()
{
    if (!m_componentsHaveComments)
        return;
    m_comments.clear();
    for (const XQTextComponent& component : components()) {
        const auto* commented = dynamic_cast<const XQCommentedTextStorageMethods*>(component.text.get());
        m_comments.insert(m_comments.end(), commented->comments().begin(), commented->comments().end());
    }
    NotificationCenter::defaultCenter().post(XQTextStorageCommentsDidChangeNotification,
                                             static_cast<const TextStorage*>(this));
}

XQCommentedTextStorageMethods* XQAggregateTextStorage::commentedComponentForRange(Range range, Range* relative) const
{
    int element = SeparatorElement;
    const qsizetype index = indexOfComponentContainingRange(range, &element);
    if (index == NotFound || element != TextElement)
        return nullptr;
    *relative = Range{range.location - textRanges()[size_t(index)].location, range.length};
    return dynamic_cast<XQCommentedTextStorageMethods*>(components()[size_t(index)].text.get());
}

XQCommentPtr XQAggregateTextStorage::addComment(const AttributedString& text, Range range)
{
    Range relative;
    auto* component = commentedComponentForRange(range, &relative);
    return component ? component->addComment(text, relative) : nullptr;
}

XQCommentPtr XQAggregateTextStorage::addFootnoteComment(const AttributedString& text, Range range)
{
    Range relative;
    auto* component = commentedComponentForRange(range, &relative);
    return component ? component->addFootnoteComment(text, relative) : nullptr;
}

void XQAggregateTextStorage::setCommentText(const AttributedString& text, Range range)
{
    Range relative;
    if (auto* component = commentedComponentForRange(range, &relative))
        component->setCommentText(text, relative);
}

void XQAggregateTextStorage::removeCommentsAtRange(Range range)
{
    Range relative;
    if (auto* component = commentedComponentForRange(range, &relative))
        component->removeCommentsAtRange(relative);
}

Range XQAggregateTextStorage::rangeOfComment(const XQCommentPtr& comment) const
{
    for (size_t i = 0; i < components().size(); ++i) {
        const auto* commented = dynamic_cast<const XQCommentedTextStorageMethods*>(components()[i].text.get());
        if (!commented)
            continue;
        const Range found = commented->rangeOfComment(comment);
        if (!found.isNotFound())
            return Range{found.location + textRanges()[i].location, found.length};
    }
    return Range::notFound();
}

} // namespace qly

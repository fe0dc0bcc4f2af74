#pragma once
// XQCommentedTextStorageMethods: what a text storage that keeps the list of its linked comments
// offers. Storages implement it beside their MutableAttributedString base; the commented-text
// additions find it with dynamic_cast.
#include <memory>
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/Range.h>

namespace qly {

class XQComment;

class XQCommentedTextStorageMethods {
public:
    virtual ~XQCommentedTextStorageMethods() = default;

    /// The comments that occur in the text, in text order.
    virtual const std::vector<std::shared_ptr<XQComment>>& comments() const = 0;
    /// Makes a comment with the given text over range and returns it.
    virtual std::shared_ptr<XQComment> addComment(const AttributedString& text, Range range) = 0;
    /// As addComment(), as a footnote.
    virtual std::shared_ptr<XQComment> addFootnoteComment(const AttributedString& text, Range range) = 0;
    /// Replaces the comment at range's start by a copy holding text; nothing for an empty range or
    /// where no comment lies.
    virtual void setCommentText(const AttributedString& text, Range range) = 0;
    /// Removes every comment run that meets range (whole runs).
    virtual void removeCommentsAtRange(Range range) = 0;
    /// The first run carrying exactly this comment; not found when it is not in comments().
    virtual Range rangeOfComment(const std::shared_ptr<XQComment>& comment) const = 0;
};

} // namespace qly

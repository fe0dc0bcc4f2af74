#include <qlyappkit/text/notes/NoteStripping.h>

#include <vector>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

#include "NoteEdits_p.h"

namespace qly {

using notes::TextEdit;

namespace {

// Takes the chosen kinds of linked note off their anchors: the named attributes go from every run of
// the comment attribute whose comment is of a chosen kind.
void stripAnchors(AttributedString& out, const AttributedString& text, bool comments, bool footnotes,
                  std::initializer_list<QString> names)
{
    std::vector<Range> anchors;
    text.enumerateAttribute(XQCommentAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        const XQCommentPtr comment = commentFromVariant(value);
        if (comment && (comment->isFootnote() ? footnotes : comments))
            anchors.push_back(range);
        return true;
    });
    for (const Range& range : anchors) {
        for (const QString& name : names)
            out.removeAttribute(name, range);
    }
}

} // namespace

AttributedString attributedStringByStrippingAnnotations(const AttributedString& text, bool annotations, bool footnotes,
                                                        bool includingLinkedNotes)
{
    AttributedString out = text;
    if (includingLinkedNotes && (annotations || footnotes))
        stripAnchors(out, text, annotations, footnotes,
                     {XQCommentAttributeName, LinkAttributeName, ToolTipAttributeName});
    std::vector<TextEdit> deletions;
    auto collect = [&](const QString& name) {
        text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range range) {
            if (value.isValid())
                deletions.push_back(TextEdit::deletion(range));
            return true;
        });
    };
    if (annotations)
        collect(XQAnnotationAttributeName);
    if (footnotes)
        collect(XQFootnoteAttributeName);
    return notes::applyingEdits(out, std::move(deletions));
}

AttributedString attributedStringByStrippingLinkedComments(const AttributedString& text, bool comments, bool footnotes)
{
    AttributedString out = text;
    if (comments || footnotes)
        stripAnchors(out, text, comments, footnotes, {XQCommentAttributeName});
    return out;
}

bool containsFootnotesAndWhitespaceOnly(const AttributedString& text)
{
    bool hasFootnote = false;
    bool onlyWhitespace = true;
    text.enumerateAttribute(XQFootnoteAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid()) {
            hasFootnote = true;
            return true;
        }
        const QString s = text.substring(range);
        for (QChar c : s) {
            if (!isWhitespaceOrNewline(c.unicode())) {
                onlyWhitespace = false;
                return false;
            }
        }
        return true;
    });
    return hasFootnote && onlyWhitespace;
}

} // namespace qly

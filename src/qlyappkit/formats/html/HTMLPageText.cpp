#include <qlyappkit/formats/html/HTMLPageText.h>

#include <vector>

#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/notes/InlineNotes.h>
#include <qlyappkit/text/notes/NoteConversions.h>

namespace qly {

namespace {

// Links of the application's own: a browser has nowhere to go with them.
bool isApplicationLink(const QVariant& value)
{
    const std::optional<QString> link = linkString(value);
    if (!link)
        return true; // a document link held as a dictionary, or another object
    return link->startsWith(XQCommentLinkScheme, Qt::CaseInsensitive)
        || link->startsWith(XQDocumentLinkScheme, Qt::CaseInsensitive) || link->startsWith(XQExportBookmarkLinkScheme)
        || link->startsWith(XQExportPageRefLinkScheme) || link->startsWith(XQExportPictureLinkScheme);
}

} // namespace

AttributedString attributedStringForHTMLPage(const AttributedString& storedText, const QString& resourceFolder,
                                             QStringList* warnings)
{
    AttributedString text = attributedStringByResolvingExportLinks(storedText, resourceFolder, warnings);
    text = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, InlineLinkedComments);
    text = attributedStringWithAnnotationsInline(text, true, true, true, QVariantMap());
    std::vector<Range> internal;
    text.enumerateAttribute(LinkAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid() && isApplicationLink(value))
            internal.push_back(range);
        return true;
    });
    for (const Range& range : internal)
        text.removeAttribute(LinkAttributeName, range);
    return text;
}

} // namespace qly

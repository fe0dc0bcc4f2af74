// Bookmarks and page references: each run is enclosed in markers that carry the bookmark's name, and
// the markers become bookmark groups and PAGEREF fields.
#include <qlyappkit/interchange/rtf/ExtendedRTFExport_p.h>

namespace qly::extendedrtf {

namespace {

// Each marker around a name, and the RTF it becomes.
struct Replacement {
    QString marker;
    QString rtf;
};
const Replacement BookmarkStartOpen{QStringLiteral("<<**XQ_BK_MK_START_TAG:<<"), QStringLiteral("{\\*\\bkmkstart ")};
const Replacement BookmarkStartClose{QStringLiteral(">>:XQ_BK_MARK_START_TAG>>"), QStringLiteral("}")};
const Replacement BookmarkEndOpen{QStringLiteral("<<**XQ_BK_MK_END_TAG:<<"), QStringLiteral("{\\*\\bkmkend ")};
const Replacement BookmarkEndClose{QStringLiteral(">>:XQ_BK_MARK_END_TAG>>"), QStringLiteral("}")};
const Replacement PageRefStartOpen{QStringLiteral("<<**XQ_PAGEREF_START_TAG:<<"),
                                   QStringLiteral("{\\field {\\*\\fldinst {PAGEREF ")};
const Replacement PageRefStartClose{QStringLiteral(">>:XQ_PAGEREF_START_TAG>>"), QStringLiteral(" \\\\h}}{\\fldrslt ")};
const Replacement PageRefEnd{QStringLiteral("<<**XQ_PAGEREF_END_TAG**>>"), QStringLiteral("}}")};

// The runs of an attribute whose value names a bookmark, in text order.
std::vector<std::pair<Range, QString>> namedRuns(const AttributedString& text, const QString& attribute)
{
    std::vector<std::pair<Range, QString>> runs;
    text.enumerateAttribute(attribute, Range{0, text.length()}, [&](const QVariant& v, Range r) {
        if (v.isValid() && !v.toString().isEmpty())
            runs.push_back({r, v.toString()});
        return true;
    });
    return runs;
}

} // namespace

void markBookmarksAndPageReferences(Context& c)
{
    const auto bookmarks = namedRuns(c.text, XQRTFBookmarkAttributeName);
    for (auto it = bookmarks.rbegin(); it != bookmarks.rend(); ++it) {
        const Attributes attributes = attributesForInsertion(c.text, it->first.location);
        c.text.insert(AttributedString(BookmarkEndOpen.marker + it->second + BookmarkEndClose.marker, attributes),
                      it->first.end());
        c.text.insert(AttributedString(BookmarkStartOpen.marker + it->second + BookmarkStartClose.marker, attributes),
                      it->first.location);
    }
    c.text.removeAttribute(XQRTFBookmarkAttributeName, Range{0, c.text.length()});
    const auto references = namedRuns(c.text, XQRTFPageRefFieldAttributeName);
    for (auto it = references.rbegin(); it != references.rend(); ++it) {
        const Attributes attributes = attributesForInsertion(c.text, it->first.location);
        c.text.insert(AttributedString(PageRefEnd.marker, attributes), it->first.end());
        c.text.insert(AttributedString(PageRefStartOpen.marker + it->second + PageRefStartClose.marker, attributes),
                      it->first.location);
    }
    c.text.removeAttribute(XQRTFPageRefFieldAttributeName, Range{0, c.text.length()});
}

void writeBookmarksAndPageReferences(Context& c)
{
    for (const Replacement* r : {&BookmarkStartOpen, &BookmarkStartClose, &BookmarkEndOpen, &BookmarkEndClose,
                                 &PageRefStartOpen, &PageRefStartClose, &PageRefEnd}) {
        if (c.rtf.contains(r->marker))
            c.rtf.replace(r->marker, r->rtf);
    }
}

} // namespace qly::extendedrtf

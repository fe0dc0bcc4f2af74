#include <qlyappkit/interchange/rtf/ExtendedRTFExport_p.h>

#include <algorithm>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly::extendedrtf {

QString applyEdits(const QString& s, std::vector<Edit>& edits)
{
    if (edits.empty())
        return s;
    std::stable_sort(edits.begin(), edits.end(), [](const Edit& a, const Edit& b) { return a.pos < b.pos; });
    QString out;
    out.reserve(s.size() + qsizetype(edits.size()) * 16);
    qsizetype copied = 0;
    for (const Edit& e : edits) {
        if (e.pos < copied)
            continue;
        out.append(QStringView(s).mid(copied, e.pos - copied));
        out.append(e.text);
        copied = e.pos + e.length;
    }
    out.append(QStringView(s).mid(std::min(copied, s.size())));
    return out;
}

void replaceMarkerParagraph(QString& rtf, const QString& marker, const QString& replacement)
{
    std::vector<Edit> edits;
    for (qsizetype at = rtf.indexOf(marker); at >= 0; at = rtf.indexOf(marker, at + marker.size())) {
        qsizetype length = marker.size();
        if (at + length < rtf.size() && rtf.at(at + length) == QLatin1Char('\\'))
            ++length;
        edits.push_back({at, length, replacement});
    }
    rtf = applyEdits(rtf, edits);
}

Attributes attributesForInsertion(const AttributedString& text, qsizetype index)
{
    if (text.isEmpty())
        return {};
    return attributesWithoutAttachmentsAtIndex(text, std::clamp<qsizetype>(index, 0, text.length() - 1));
}

void insertLeadingMarker(AttributedString& text, const QString& marker)
{
    // The marker takes the first character's formatting, never its notes or links: inside one of
    // those, what the marker stands for would land in a note or a link instead of the document.
    Attributes attributes = attributesForInsertion(text, 0);
    for (const QString* feature :
         {&XQCommentAttributeName, &XQLinkedCommentAttributeName, &XQAnnotationAttributeName, &XQFootnoteAttributeName,
          &XQKeepWithNextAttributeName, &LinkAttributeName, &XQRTFBookmarkAttributeName,
          &XQRTFPageRefFieldAttributeName, &XQRTFSectionInfoAttributeName})
        attributes.remove(*feature);
    const QVariant font = attributes.value(FontAttributeName);
    if (font.metaType() != QMetaType::fromType<Font>())
        attributes.insert(FontAttributeName, QVariant::fromValue(Font::userFont()));
    text.insert(AttributedString(marker, attributes), 0);
}

} // namespace qly::extendedrtf

#include <qlyappkit/interchange/package/PackageRTFWriter.h>

#include <vector>

#include <qlyappkit/interchange/package/LinkedImageTags.h>
#include <qlyappkit/interchange/package/PackagePictureGroups.h>
#include <qlyappkit/interchange/package/PackageRTFMarkers_p.h>
#include <qlyappkit/interchange/package/StyleIdentifierGroups.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/CommentedText.h>
#include <qlyappkit/text/notes/NoteTags.h>

namespace qly {

namespace {

using namespace packagemarkers;

// Whether the range needs more than the platform's RTF: pictures (and linked files) and style identifiers
// always, notes only in main text, where they become tags.
bool needsPackagePass(const AttributedString& text, Range range, bool isMainText)
{
    for (const QString* name :
         {&AttachmentAttributeName, &XQParagraphStyleIDAttributeName, &XQCharacterStyleIDAttributeName}) {
        if (attributeExistsInRange(text, *name, range))
            return true;
    }
    if (!isMainText)
        return false;
    for (const QString* name : {&XQAnnotationAttributeName, &XQFootnoteAttributeName,
                                &XQPreserveFormattingAttributeName, &XQKeepWithNextAttributeName}) {
        if (attributeExistsInRange(text, *name, range))
            return true;
    }
    return false;
}

// A change the writer makes before the platform writes: a picture character replaced by its marker, or a
// style identifier marker inserted in front of the character at `at`.
struct Mark {
    qsizetype at = 0;
    bool replacesCharacter = false;
    qsizetype number = 0;
};

struct MarkedText {
    AttributedString text;
    std::vector<PackagePicture> pictures; // by marker number - picture base
    std::vector<StyleIdentifierChange> styles; // by marker number - style base
    qsizetype pictureBase = 0, styleBase = 0;
};

MarkedText markedText(const AttributedString& text)
{
    MarkedText marked;
    const QString string = text.string();
    marked.pictureBase = firstFreeMarkerNumber(string, WriterPictureStart, WriterPictureEnd);
    marked.styleBase = firstFreeMarkerNumber(string, WriterStyleStart, WriterStyleEnd);

    std::vector<Mark> marks;
    marked.styles = styleIdentifierChanges(text);
    std::vector<std::pair<qsizetype, PackagePicture>> pictures;
    text.enumerateAttribute(AttachmentAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range run) {
        if (value.metaType() != QMetaType::fromType<TextAttachment>())
            return true;
        const std::optional<PackagePicture> picture = packagePictureForAttachment(value.value<TextAttachment>());
        if (!picture)
            return true; // not a picture: left to the platform writer, which leaves attachments out
        for (qsizetype i = run.location; i < run.end(); ++i) {
            if (string.at(i).unicode() == AttachmentCharacter)
                pictures.emplace_back(i, *picture);
        }
        return true;
    });
    // Style markers go in front of a picture at the same place, so that the identifier covers it.
    auto nextStyle = marked.styles.begin();
    for (auto& [at, picture] : pictures) {
        for (; nextStyle != marked.styles.end() && nextStyle->at <= at; ++nextStyle)
            marks.push_back({nextStyle->at, false, marked.styleBase + (nextStyle - marked.styles.begin())});
        marks.push_back({at, true, marked.pictureBase + qsizetype(marked.pictures.size())});
        marked.pictures.push_back(std::move(picture));
    }
    for (; nextStyle != marked.styles.end(); ++nextStyle)
        marks.push_back({nextStyle->at, false, marked.styleBase + (nextStyle - marked.styles.begin())});

    // The marked text is put together piece by piece, so that its cost grows with the text, not with the
    // number of marks times the text.
    qsizetype copied = 0;
    for (const Mark& mark : marks) {
        if (mark.at > copied)
            marked.text.append(text.attributedSubstring(Range::fromBounds(copied, mark.at)));
        copied = std::max(copied, mark.at);
        const qsizetype attributesAt = std::min(mark.at, text.length() - 1);
        Attributes attributes = attributesAt >= 0 ? text.attributes(attributesAt) : Attributes();
        attributes.remove(AttachmentAttributeName);
        const QString marker = mark.replacesCharacter
            ? WriterPictureStart + QString::number(mark.number) + WriterPictureEnd
            : WriterStyleStart + QString::number(mark.number) + WriterStyleEnd;
        marked.text.append(marker, attributes);
        if (mark.replacesCharacter)
            copied = mark.at + 1;
    }
    if (copied < text.length())
        marked.text.append(text.attributedSubstring(Range::fromBounds(copied, text.length())));
    return marked;
}

// Replaces the markers in the platform's RTF by their groups, in one pass.
QByteArray replaceMarkers(const QByteArray& rtf, const MarkedText& marked)
{
    const QByteArray pictureStart = WriterPictureStart.toLatin1();
    const QByteArray styleStart = WriterStyleStart.toLatin1();
    const QByteArray end = WriterPictureEnd.toLatin1();
    const QByteArray common = QByteArrayLiteral("<<**");
    QByteArray out;
    qsizetype reserve = rtf.size();
    for (const PackagePicture& picture : marked.pictures)
        reserve += 2 * (picture.data.size() + picture.previewPNG.size()) + 256;
    out.reserve(reserve);
    qsizetype copied = 0;
    for (qsizetype at = rtf.indexOf(common); at >= 0; at = rtf.indexOf(common, at + 1)) {
        qsizetype length = 0;
        qsizetype number = markerNumberAt(rtf, at, pictureStart, end, &length);
        if (number >= marked.pictureBase && number - marked.pictureBase < qsizetype(marked.pictures.size())) {
            out.append(QByteArrayView(rtf).sliced(copied, at - copied));
            appendPackagePictureGroup(out, marked.pictures[size_t(number - marked.pictureBase)]);
        } else if ((number = markerNumberAt(rtf, at, styleStart, end, &length)) >= marked.styleBase
                   && number - marked.styleBase < qsizetype(marked.styles.size())) {
            out.append(QByteArrayView(rtf).sliced(copied, at - copied));
            appendStyleIdentifierGroup(out, marked.styles[size_t(number - marked.styleBase)]);
        } else {
            continue;
        }
        copied = at + length;
        at = copied - 1;
    }
    out.append(QByteArrayView(rtf).sliced(copied));
    return out;
}

} // namespace

QByteArray quilleryPackageRTFFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes,
                                       bool isMainText)
{
    range = intersectionRange(range, Range{0, text.length()});
    const bool whole = range.location == 0 && range.length == text.length();
    AttributedString part = whole ? text : range.isEmpty() ? AttributedString() : text.attributedSubstring(range);
    const Range all{0, part.length()};
    if (!needsPackagePass(part, all, isMainText))
        return RTFFromRange(attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(part, true), all,
                            documentAttributes);

    if (isMainText)
        part = attributedStringByConvertingAttributesToTags(part);
    part = attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(part, true);
    part = attributedStringByConvertingSymbolicLinkImageAttachmentsToLinkedImageTags(part);
    const MarkedText marked = markedText(part);
    const QByteArray rtf = RTFFromRange(marked.text, Range{0, marked.text.length()}, documentAttributes);
    if (marked.pictures.empty() && marked.styles.empty())
        return rtf;
    return replaceMarkers(rtf, marked);
}

} // namespace qly

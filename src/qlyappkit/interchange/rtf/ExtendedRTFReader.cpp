#include "ExtendedRTFReader.h"

#include <vector>

#include <qlyappkit/platform/services/UserDefaults.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/notes/MarginNotes.h>
#include <qlyappkit/text/notes/NoteTags.h>

#include "RTFImportPictures_p.h"
#include "RTFImportRepairs.h"
#include "RTFImportRewriting_p.h"
#include "RTFImportTags.h"
#include "RTFOptions.h"
#include "RTFTextToolkit.h"

namespace qly {

namespace {

bool looksLikeRTF(const QByteArray& data)
{
    qsizetype i = 0;
    while (i < data.size() && (data.at(i) == ' ' || data.at(i) == '\t' || data.at(i) == '\r' || data.at(i) == '\n'))
        ++i;
    return data.mid(i, 5) == "{\\rtf";
}

// Each placeholder the platform read becomes an attachment in the placeholder's attributes.
void replacePicturePlaceholders(AttributedString& text, const QString& s,
                                const std::vector<rtfimport::ImportedPicture>& pictures)
{
    if (pictures.empty())
        return;
    struct Found {
        Range range;
        size_t picture;
    };
    std::vector<Found> found;
    const QString& prefix = XQRTFImportPicturePlaceholderPrefix;
    const QString& suffix = XQRTFImportPicturePlaceholderSuffix;
    for (qsizetype at = s.indexOf(prefix); at >= 0; at = s.indexOf(prefix, at + 1)) {
        qsizetype digitsEnd = at + prefix.size();
        while (digitsEnd < s.size() && s.at(digitsEnd).isDigit() && digitsEnd - at < 16)
            ++digitsEnd;
        if (!QStringView(s).mid(digitsEnd).startsWith(suffix))
            continue;
        bool ok = false;
        const qsizetype number = QStringView(s).mid(at + prefix.size(), digitsEnd - at - prefix.size()).toLongLong(&ok);
        if (ok && number >= 1 && number <= qsizetype(pictures.size()))
            found.push_back({Range::fromBounds(at, digitsEnd + suffix.size()), size_t(number - 1)});
    }
    for (auto it = found.rbegin(); it != found.rend(); ++it) {
        const rtfimport::ImportedPicture& picture = pictures[it->picture];
        // A picture shown smaller than its pixels at its own resolution is re-encoded at the size it
        // is shown; its resolution, and so its print quality, stays.
        const std::optional<QByteArray> resized = rtfimport::resizedPictureMaintainingResolution(
            picture.data, picture.pixels, picture.pixelsPerPoint, picture.size, picture.isJPEG);
        TextAttachment attachment(picture.fileName, resized ? *resized : picture.data);
        attachment.setBounds(picture.size);
        Attributes attributes = text.attributes(it->range.location);
        attributes.insert(AttachmentAttributeName, QVariant::fromValue(attachment));
        text.replaceCharacters(it->range, AttributedString(QString(QChar(AttachmentCharacter)), attributes));
    }
}

// Two annotations with nothing between them would read as one run: a separator keeps them apart until
// their runs are known.
void separateAdjacentAnnotations(AttributedString& text)
{
    const QString between = XQAnnotationClosingWithNewlineReadForm + QLatin1Char('\n');
    const QString s = text.string();
    std::vector<qsizetype> at;
    for (qsizetype i = s.indexOf(between, 0, Qt::CaseInsensitive); i >= 0;
         i = s.indexOf(between, i + between.size(), Qt::CaseInsensitive)) {
        if (QStringView(s)
                .mid(i + between.size() - 1)
                .startsWith(XQAnnotationOpeningWithNewlineReadForm, Qt::CaseInsensitive))
            at.push_back(i + between.size() - 1);
    }
    for (auto it = at.rbegin(); it != at.rend(); ++it)
        text.replaceCharacters(Range{*it, 0}, QString(QChar(XQRTFImportAnnotationSeparator)));
}

// Annotations kept inline stay apart by a blank where the separator stood.
void replaceAnnotationSeparators(MutableAttributedString& text)
{
    const QString s = text.string();
    EditingBatch batch(text);
    for (qsizetype i = s.lastIndexOf(QChar(XQRTFImportAnnotationSeparator)); i >= 0;
         i = i > 0 ? s.lastIndexOf(QChar(XQRTFImportAnnotationSeparator), i - 1) : -1) {
        text.replaceCharacters(Range{i, 1}, QStringLiteral(" "));
        text.removeAttribute(XQAnnotationAttributeName, Range{i, 1});
    }
}

} // namespace

ExtendedRTFImportOptions ExtendedRTFImportOptions::fromUserDefaults()
{
    const UserDefaults& defaults = UserDefaults::standard();
    return {defaults.boolForKey(XQRTFImportCommentsInline), defaults.boolForKey(XQRTFImportFootnotesInline)};
}

std::optional<AttributedString> initWithExtendedRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                    const QVariantMap& RTFAttributes)
{
    return attributedStringFromExtendedRTF(data, documentAttributes, RTFAttributes,
                                           ExtendedRTFImportOptions::fromUserDefaults());
}

std::optional<AttributedString> attributedStringFromExtendedRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                                const QVariantMap& RTFAttributes,
                                                                const ExtendedRTFImportOptions& options,
                                                                ExtendedRTFImportReport* report)
{
    if (!looksLikeRTF(data))
        return std::nullopt;
    // One character per byte: RTF is 7-bit, and the 8-bit text some writers leave in it goes through
    // unchanged to the platform reader, which reads it in the document's code page.
    QString rtf = QString::fromLatin1(data);
    fixUpDefaultFont(rtf);
    fixUpRightMargins(rtf);
    changeRTFHighlightsToRTFBackgroundColors(rtf);
    rtfimport::RewrittenRTF rewritten = rtfimport::rewriteWordProcessorRTF(rtf, options.commentsInline);
    rtf.clear();

    RTFParseResult parse;
    std::optional<AttributedString> read =
        attributedStringFromRTF(rewritten.rtf.toLatin1(), documentAttributes, &parse);
    if (!read)
        return std::nullopt;
    rewritten.rtf.clear();
    bool hasNoBreakPeriods = false;
    {
        const QString readString = read->string();
        hasNoBreakPeriods = readString.contains(XQImportedFootnotePeriodPrefix);
        replacePicturePlaceholders(*read, readString, rewritten.pictures);
    }
    if (rewritten.annotationRefs.size() > 1)
        separateAdjacentAnnotations(*read);

    MutableAttributedString text(
        attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(std::move(*read), true));
    read.reset();
    // Only one word processor's notes begin so; most texts need not be walked for them.
    if (hasNoBreakPeriods)
        deletePeriodsFromStartOfImportedNisusFootnotes(text);
    if (!options.commentsInline) {
        convertInlineAnnotationsToMarginCommentsApplyingRangesUsingImportTags(
            text, CommentRangeIds{rewritten.rangeStartIds, rewritten.rangeEndIds, rewritten.annotationRefs});
    } else if (rewritten.annotationRefs.size() > 1) {
        replaceAnnotationSeparators(text);
    }
    if (!options.footnotesInline) {
        const QString marker = RTFAttributes.value(XQRTFFootnoteMarker).toString();
        // A word processor's reference mark follows the word it refers to: without a marker the
        // footnote is anchored there, not on the next word (which would move every note at a
        // sentence's end into the next sentence).
        if (marker.isEmpty())
            convertInlineFootnotesToMarginFootnotes(text, InlineNoteAnchor::PrecedingWord);
        else
            convertInlineFootnotesToMarginFootnotesWithMarker(text, marker);
    }

    // The text has no kind of note for endnotes; a document whose notes are all endnotes keeps them so
    // through the export options.
    if (documentAttributes && rewritten.endnotes > 0 && rewritten.footnotes == 0) {
        documentAttributes->insert(XQRTFInlineFootnotesAsEndnotes, true);
        documentAttributes->insert(XQRTFLinkedFootnotesAsEndnotes, true);
    }
    if (report) {
        report->footnotes = rewritten.footnotes;
        report->endnotes = rewritten.endnotes;
        report->annotations = int(rewritten.annotationRefs.size());
        report->pictures = int(rewritten.pictures.size());
        report->parse = parse;
        if (parse && rewritten.unclosedGroups > 0)
            report->parse = RTFParseResult{RTFParseStatus::UnexpectedEnd, data.size()};
    }
    return text.attributedString();
}

} // namespace qly

#include <qlyappkit/interchange/package/PackageRTFReader.h>

#include <QStringDecoder>
#include <QUuid>
#include <cmath>
#include <vector>

#include <qlyappkit/interchange/package/LinkedImageTags.h>
#include <qlyappkit/interchange/package/PackageRTFGroups_p.h>
#include <qlyappkit/interchange/package/PackageRTFMarkers_p.h>
#include <qlyappkit/interchange/package/StyleIdentifierGroups.h>
#include <qlyappkit/interchange/pictures/PictureData.h>
#include <qlyappkit/interchange/rtf/RTFExportRepairs.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/comments/CommentedText.h>
#include <qlyappkit/text/notes/NoteTags.h>

namespace qly {

namespace {

using namespace packagegroups;
using namespace packagemarkers;

const QByteArray RTFStart = QByteArrayLiteral("{\\rtf");
const QByteArray Utf8ByteOrderMark = QByteArrayLiteral("\xef\xbb\xbf");
const QString JPEGExtension = QStringLiteral("jpg");
const QString PNGExtension = QStringLiteral("png");
const QString PDFExtension = QStringLiteral("pdf");
// What takes the place of a group that is dropped: an empty group, so that the text on either side of it
// cannot join a control word before it.
const QByteArray DroppedGroup = QByteArrayLiteral("{}");
// Intended sizes beyond this (200 inches) are noise: the picture's natural size is used instead.
constexpr int MaximumGoalTwips = 200 * 72 * 20;
constexpr double TwipsPerPoint = 20.0;
// Goal sizes are whole twips, truncated: a size within one twip of the natural size is the natural size.
constexpr double SizeTolerance = 1.0 / TwipsPerPoint;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

QString plainText(const QByteArray& data)
{
    const QByteArray bytes = data.startsWith(Utf8ByteOrderMark) ? data.sliced(Utf8ByteOrderMark.size()) : data;
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return QString::fromLatin1(bytes);
    return text;
}

// The text of an RTF fragment as stored in a name or identifier group.
QString textFromFragment(QByteArrayView fragment)
{
    const QString latin = QString::fromLatin1(fragment);
    return fragment.contains('\\') ? stringFromRTFFragment(latin) : latin;
}

QString pictureName(const std::optional<QByteArrayView>& fragment, int number)
{
    const QString name = fragment ? textFromFragment(*fragment).trimmed() : QString();
    return name.isEmpty() ? XQUnnamedPictureNameFormat.arg(number) : name;
}

int goalTwips(int value) { return value > 0 && value <= MaximumGoalTwips ? value : 0; }

// The size a picture is shown at, from its stored goal sizes (twips) and scales (only reductions count),
// given its natural size in points.
QSizeF displaySize(const Group& group, const QSizeF& natural)
{
    double width = goalTwips(group.goalWidth), height = goalTwips(group.goalHeight);
    if (natural.width() > 0 && natural.height() > 0) {
        if (width > 0 && height == 0)
            height = natural.height() / natural.width() * width;
        else if (height > 0 && width == 0)
            width = natural.width() / natural.height() * height;
    }
    QSizeF size = width > 0 && height > 0 ? QSizeF(width / TwipsPerPoint, height / TwipsPerPoint) : natural;
    if (group.scaleX >= 1 && group.scaleX <= 99)
        size.setWidth(size.width() * group.scaleX / 100.0);
    if (group.scaleY >= 1 && group.scaleY <= 99)
        size.setHeight(size.height() * group.scaleY / 100.0);
    return size;
}

void keepDisplaySize(TextAttachment& attachment, const QSizeF& size, const QSizeF& natural)
{
    if (size.isEmpty())
        return;
    if (std::abs(size.width() - natural.width()) >= SizeTolerance
        || std::abs(size.height() - natural.height()) >= SizeTolerance)
        attachment.setBounds(size);
}

std::optional<TextAttachment> pdfAttachment(const Group& group, int number)
{
    const std::optional<QByteArray> pdf = bytesFromHexadecimal(group.pdfData);
    // Bytes without the PDF header are no PDF: kept, they would not be written back as a picture.
    if (!pdf || pictureFormatOfData(*pdf) != PictureFormat::PDF)
        return std::nullopt;
    QString name = pictureName(group.pdfFileName ? group.pdfFileName : group.fileName, number);
    if (name.startsWith(XQEquationFileNamePrefix))
        name = XQEquationFileNamePrefix + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    TextAttachment attachment(name + QLatin1Char('.') + PDFExtension, *pdf);
    if (group.kind == GroupKind::Picture) {
        // The rendering's goal size is the PDF's intended size.
        const QSizeF natural = PDFPageSize(*pdf).value_or(QSizeF());
        keepDisplaySize(attachment, displaySize(group, natural), natural);
    }
    return attachment;
}

std::optional<TextAttachment> bitmapAttachment(const Group& group, int number)
{
    std::optional<QByteArray> bytes =
        group.binaryData ? std::optional<QByteArray>(group.data.toByteArray()) : bytesFromHexadecimal(group.data);
    if (!bytes)
        return std::nullopt;
    const std::optional<QSize> pixels = bitmapPixelSize(*bytes);
    if (!pixels)
        return std::nullopt;
    QString extension;
    switch (pictureFormatOfData(*bytes)) {
    case PictureFormat::JPEG:
        extension = JPEGExtension;
        break;
    case PictureFormat::PNG:
        extension = PNGExtension;
        break;
    default:
        // Other bitmaps are kept as PNG, so that name and bytes agree.
        *bytes = PNGDataFromBitmapData(*bytes);
        if (bytes->isEmpty())
            return std::nullopt;
        extension = PNGExtension;
        break;
    }
    TextAttachment attachment(pictureName(group.fileName, number) + QLatin1Char('.') + extension, *bytes);
    const QSizeF natural(*pixels);
    keepDisplaySize(attachment, displaySize(group, natural), natural);
    return attachment;
}

struct Record {
    bool isPicture = true;
    TextAttachment attachment;
    StyleIdentifierChange style;
};

struct Rewritten {
    QByteArray rtf;
    std::vector<Record> records; // by marker number - base
    qsizetype base = 0;
};

void appendMarker(QByteArray& rtf, const QString& start, qsizetype number)
{
    rtf.append('{');
    rtf.append(start.toLatin1());
    rtf.append(QByteArray::number(number));
    rtf.append(ReaderEnd.toLatin1());
    rtf.append('}');
}

Rewritten rewriteGroups(const QByteArray& data, const std::vector<Group>& groups, bool ignoreImages)
{
    Rewritten out;
    const QByteArray end = ReaderEnd.toLatin1();
    out.base = std::max(firstFreeMarkerNumber(data, ReaderPictureStart.toLatin1(), end),
                        firstFreeMarkerNumber(data, ReaderStyleStart.toLatin1(), end));
    qsizetype removed = 0;
    for (const Group& group : groups)
        removed += group.end - group.start;
    out.rtf.reserve(data.size() - removed + qsizetype(groups.size()) * 32);
    qsizetype copied = 0;
    int pictureNumber = 0;
    for (const Group& group : groups) {
        out.rtf.append(QByteArrayView(data).sliced(copied, group.start - copied));
        copied = group.end;
        if (!group.closed)
            break; // its extent cannot be measured: it goes, and the pass ends
        switch (group.kind) {
        case GroupKind::Fallback:
            out.rtf.append(DroppedGroup);
            break;
        case GroupKind::Picture:
        case GroupKind::PDF: {
            const int number = pictureNumber++;
            if (ignoreImages) {
                out.rtf.append('{');
                out.rtf.append(XQIgnoredPictureText.toLatin1());
                out.rtf.append('}');
                break;
            }
            std::optional<TextAttachment> attachment =
                group.hasPDF ? pdfAttachment(group, number) : bitmapAttachment(group, number);
            if (!attachment) {
                out.rtf.append(DroppedGroup);
                break;
            }
            appendMarker(out.rtf, ReaderPictureStart, out.base + qsizetype(out.records.size()));
            out.records.push_back({true, *attachment, {}});
            break;
        }
        case GroupKind::ParagraphStyleID:
        case GroupKind::CharacterStyleID: {
            const StyleIdentifierChange change{0, group.kind == GroupKind::ParagraphStyleID,
                                               textFromFragment(group.value)};
            appendMarker(out.rtf, ReaderStyleStart, out.base + qsizetype(out.records.size()));
            out.records.push_back({false, {}, change});
            break;
        }
        }
    }
    if (groups.empty() || groups.back().closed)
        out.rtf.append(QByteArrayView(data).sliced(copied));
    return out;
}

// Replaces the markers in the text that was read by the pictures and style identifiers they stand for.
AttributedString replaceMarkers(const AttributedString& text, const Rewritten& rewritten)
{
    const QString string = text.string();
    struct Found {
        qsizetype at, length;
        size_t record;
    };
    std::vector<Found> found;
    std::vector<bool> used(rewritten.records.size(), false);
    for (qsizetype end = string.indexOf(ReaderEnd); end >= 0; end = string.indexOf(ReaderEnd, end + 1)) {
        qsizetype digits = end;
        while (digits > 0 && string.at(digits - 1).isDigit() && string.at(digits - 1).unicode() < 0x80)
            --digits;
        for (const QString* start : {&ReaderPictureStart, &ReaderStyleStart}) {
            const qsizetype at = digits - start->size();
            qsizetype length = 0;
            const qsizetype number = markerNumberAt(string, at, *start, ReaderEnd, &length);
            const qsizetype index = number - rewritten.base;
            if (number < 0 || index < 0 || index >= qsizetype(rewritten.records.size()) || used[size_t(index)]
                || rewritten.records[size_t(index)].isPicture != (start == &ReaderPictureStart))
                continue;
            if (!found.empty() && at < found.back().at + found.back().length)
                continue;
            used[size_t(index)] = true;
            found.push_back({at, length, size_t(index)});
            break;
        }
    }
    if (found.empty())
        return text;
    AttributedString result;
    std::vector<StyleIdentifierChange> styles;
    qsizetype copied = 0;
    for (const Found& f : found) {
        if (f.at > copied)
            result.append(text.attributedSubstring(Range::fromBounds(copied, f.at)));
        const Record& record = rewritten.records[f.record];
        if (record.isPicture) {
            Attributes attributes = text.attributes(f.at);
            attributes.insert(AttachmentAttributeName, QVariant::fromValue(record.attachment));
            result.append(QString(QChar(AttachmentCharacter)), attributes);
        } else {
            StyleIdentifierChange change = record.style;
            change.at = result.length();
            styles.push_back(change);
        }
        copied = f.at + f.length;
    }
    if (copied < text.length())
        result.append(text.attributedSubstring(Range::fromBounds(copied, text.length())));
    applyStyleIdentifierChanges(result, styles);
    return result;
}

} // namespace

std::optional<AttributedString> initWithQuilleryPackageRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                           bool isMainText, bool ignoreImages)
{
    if (data.isEmpty())
        return std::nullopt;
    qsizetype start = 0;
    while (start < data.size() && isBlank(data.at(start)))
        ++start;
    if (!QByteArrayView(data).sliced(start).startsWith(RTFStart))
        return AttributedString(plainText(data));

    const std::vector<Group> groups = scanPackageGroups(data);
    const Rewritten rewritten = groups.empty() ? Rewritten{} : rewriteGroups(data, groups, ignoreImages);
    const QByteArray& rtf = groups.empty() ? data : rewritten.rtf;
    std::optional<AttributedString> read = attributedStringFromRTF(rtf, documentAttributes);
    if (!read)
        return AttributedString(plainText(rtf));

    AttributedString text = rewritten.records.empty() ? *read : replaceMarkers(*read, rewritten);
    text = attributedStringByConvertingLinkedImageTagsToSymbolicLinkImageAttachments(text);
    if (isMainText)
        text = attributedStringByConvertingTagsToAttributes(std::move(text));
    MutableAttributedString linked(text);
    convertQuilleryLinkURLsToDictionaries(linked);
    text = linked.attributedString();
    removeWhiteHighlights(text);
    return text;
}

std::optional<AttributedString> initWithQuilleryPackageRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                           bool isMainText)
{
    return initWithQuilleryPackageRTF(data, documentAttributes, isMainText, false);
}

} // namespace qly

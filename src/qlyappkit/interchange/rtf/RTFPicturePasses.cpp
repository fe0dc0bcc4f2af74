// Pictures: each image attachment is replaced by a numbered marker and its record kept; the markers
// become picture groups.
#include <qlyappkit/interchange/rtf/ExtendedRTFExport_p.h>
#include <qlyappkit/platform/services/UserDefaults.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

namespace qly::extendedrtf {

namespace {

// "<<**JVT_IMG_TAG" + the picture's number (from 1) + "**>>".
const QString ImageMarkerStart = QStringLiteral("<<**JVT_IMG_TAG");
const QString ImageMarkerEnd = QStringLiteral("**>>");

} // namespace

void markPictures(Context& c)
{
    std::vector<std::pair<qsizetype, TextAttachment>> attachments;
    c.text.enumerateAttribute(AttachmentAttributeName, Range{0, c.text.length()}, [&](const QVariant& v, Range r) {
        if (v.metaType() != QMetaType::fromType<TextAttachment>())
            return true;
        for (qsizetype i = r.location; i < r.end(); ++i) {
            if (c.text.characterAt(i) == QChar(AttachmentCharacter))
                attachments.push_back({i, v.value<TextAttachment>()});
        }
        return true;
    });
    std::vector<std::pair<qsizetype, QString>> replacements;
    for (const auto& [at, attachment] : attachments) {
        std::optional<RTFImageRecord> record = RTFImageRecordForAttachment(attachment, c.options.pdfResolution);
        if (!record)
            continue;
        c.images.push_back(*record);
        replacements.push_back({at, ImageMarkerStart + QString::number(c.images.size()) + ImageMarkerEnd});
    }
    for (auto it = replacements.rbegin(); it != replacements.rend(); ++it) {
        const Attributes attributes = attributesForInsertion(c.text, it->first);
        c.text.replaceCharacters(Range{it->first, 1}, AttributedString(it->second, attributes));
    }
}

void writePictures(Context& c)
{
    const bool names = UserDefaults::standard().boolForKey(XQRTFExportNisusImageFilenames);
    std::vector<Edit> edits;
    for (qsizetype at = c.rtf.indexOf(ImageMarkerStart); at >= 0; at = c.rtf.indexOf(ImageMarkerStart, at + 1)) {
        const qsizetype numberStart = at + ImageMarkerStart.size();
        const qsizetype close = c.rtf.indexOf(ImageMarkerEnd, numberStart);
        if (close < 0)
            break;
        bool ok = false;
        const int number = QStringView(c.rtf).mid(numberStart, close - numberStart).toInt(&ok);
        if (!ok || number < 1 || number > int(c.images.size()))
            continue;
        edits.push_back({at, close + ImageMarkerEnd.size() - at, RTFPictureGroup(c.images[size_t(number - 1)], names)});
    }
    c.rtf = applyEdits(c.rtf, edits);
}

} // namespace qly::extendedrtf

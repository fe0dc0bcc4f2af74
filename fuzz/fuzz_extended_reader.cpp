// Fuzz target for the extended RTF reader: any bytes read without a crash, a hang or undefined
// behaviour, with each combination of the import options. Text comes back exactly when the input
// begins as RTF, keeps the model's invariants, holds none of the reader's own markers, and holds no
// more pictures than the reader took out of the RTF (plus any placeholders the input spelled out).
#include "FuzzSupport.h"

#include <qlyappkit/interchange/rtf/ExtendedRTFReader.h>
#include <qlyappkit/interchange/rtf/RTFImportTags.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

using namespace qly;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    if (size == 0)
        return 0;
    // The first byte chooses the options; the rest is the document.
    ExtendedRTFImportOptions options;
    options.commentsInline = data[0] & 1;
    options.footnotesInline = data[0] & 2;
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 1, qsizetype(size - 1));

    ExtendedRTFImportReport report;
    QVariantMap attributes;
    const std::optional<AttributedString> text =
        attributedStringFromExtendedRTF(bytes, &attributes, {}, options, &report);
    qsizetype start = 0;
    while (start < bytes.size() && QByteArrayView(" \t\r\n").contains(bytes.at(start)))
        ++start;
    QLY_FUZZ_CHECK(text.has_value() == bytes.mid(start).startsWith("{\\rtf"));
    if (!text)
        return 0;
    QLY_FUZZ_CHECK(text->checkInvariants());
    const QString s = text->string();
    // Unicode escapes can spell any character; without them the reader's own characters cannot appear.
    const bool spellsCharacters = bytes.contains("\\u");
    QLY_FUZZ_CHECK(!s.contains(QChar(XQRTFImportAnnotationSeparator)) || spellsCharacters);
    if (!options.commentsInline)
        QLY_FUZZ_CHECK(!s.contains(XQRTFImportCommentEndTag) && !s.contains(XQRTFImportCommentStartTag));
    qsizetype attachments = 0;
    text->enumerateAttribute(AttachmentAttributeName, Range{0, text->length()}, [&](const QVariant& v, Range run) {
        attachments += v.isValid() ? run.length : 0;
        return true;
    });
    QLY_FUZZ_CHECK(attachments <= report.pictures || bytes.contains(XQRTFImportPicturePlaceholderSuffix.toLatin1())
                   || spellsCharacters);
    return 0;
}

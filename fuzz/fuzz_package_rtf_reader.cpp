// Fuzz target for the package RTF reader: any bytes read without a crash, a hang or undefined behaviour,
// with and without pictures and as main text or not. The text read keeps the model's invariants; with
// pictures ignored it holds no attachment; written again as package RTF it is 7-bit, and reads back with
// as many pictures as it had.
#include "FuzzSupport.h"

#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>

using namespace qly;

namespace {

qsizetype embeddedPictures(const AttributedString& text)
{
    qsizetype count = 0;
    text.enumerateAttribute(AttachmentAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range run) {
        if (value.isValid() && !value.value<TextAttachment>().isLinkedFile())
            count += run.length;
        return true;
    });
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const bool isMainText = size > 0 && (data[0] & 1);

    const std::optional<AttributedString> ignored = initWithQuilleryPackageRTF(bytes, nullptr, isMainText, true);
    QLY_FUZZ_CHECK(ignored.has_value() == !bytes.isEmpty());
    if (!ignored)
        return 0;
    QLY_FUZZ_CHECK(ignored->checkInvariants());
    QLY_FUZZ_CHECK(embeddedPictures(*ignored) == 0);

    QVariantMap documentAttributes;
    const std::optional<AttributedString> text = initWithQuilleryPackageRTF(bytes, &documentAttributes, isMainText);
    QLY_FUZZ_CHECK(text && text->checkInvariants());

    const QByteArray again =
        quilleryPackageRTFFromRange(*text, Range{0, text->length()}, documentAttributes, isMainText);
    for (const char c : again)
        QLY_FUZZ_CHECK(static_cast<unsigned char>(c) < 0x80);
    const std::optional<AttributedString> reread = initWithQuilleryPackageRTF(again, nullptr, isMainText);
    QLY_FUZZ_CHECK(reread && reread->checkInvariants());
    QLY_FUZZ_CHECK(embeddedPictures(*reread) == embeddedPictures(*text));
    return 0;
}

// Qt's PDF loader keeps part of the state it allocates while loading a document (inside libQt6Pdf, after
// the document is destroyed); that is not a leak of the reader.
extern "C" const char* __lsan_default_suppressions() { return "leak:libQt6Pdf\n"; }

// Fuzz target for the RTF reader: any bytes must read without a crash, a hang or undefined
// behaviour, the text read must keep the model's invariants, and what the writer makes of it must
// read again without a problem.
#include <cstdint>
#include <cstdlib>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QVariantMap documentAttributes;
    qly::RTFParseResult result;
    const std::optional<qly::AttributedString> text = qly::attributedStringFromRTF(bytes, &documentAttributes, &result);
    if (!text)
        return 0;
    if (!text->checkInvariants())
        std::abort();
    const QByteArray again = qly::RTFFromRange(*text, qly::Range{0, text->length()}, documentAttributes);
    for (char c : again) {
        if (static_cast<unsigned char>(c) >= 0x80)
            std::abort(); // the writer's output is 7-bit
    }
    qly::RTFParseResult second;
    if (!qly::attributedStringFromRTF(again, nullptr, &second) || !second)
        std::abort();
    return 0;
}

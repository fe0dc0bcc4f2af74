// Fuzz target for reading the comparison tool's output: any bytes must read without a crash, a hang or
// undefined behaviour, and the removed and added stretches must lie in the text, in order, apart.
#include <cstdint>
#include <cstdlib>

#include <qlyappkit/formats/comparison/DiffOutput_p.h>

namespace {

void checkStretches(const std::vector<qly::Range>& ranges, qsizetype length)
{
    qsizetype previousEnd = 0;
    for (const qly::Range& r : ranges) {
        if (r.location < previousEnd || r.length < 0 || r.end() > length)
            std::abort();
        previousEnd = r.end();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const std::optional<qly::diffoutput::MergedText> merged = qly::diffoutput::mergedTextFromDiffOutput(bytes);
    if (!merged)
        return 0;
    checkStretches(merged->removed, merged->text.size());
    checkStretches(merged->added, merged->text.size());
    return 0;
}

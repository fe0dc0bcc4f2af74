// Fuzz target for comparing two texts through the system's comparison tool. The first byte chooses the
// diff type; the rest is the older text, a 0xFE byte (never part of UTF-8), and the newer text. Any
// texts must compare without a crash, and deleting the added stretches must give the older text,
// deleting the removed ones the newer.
#include <cstdint>
#include <cstdlib>

#include <QCoreApplication>

#include <qlyappkit/formats/comparison/TextComparison.h>

namespace {

QString without(const qly::AttributedString& merged, const QString& change)
{
    QString out;
    merged.enumerateAttribute(qly::XQChangedTextAttributeName, qly::Range{0, merged.length()},
                              [&](const QVariant& value, qly::Range r) {
                                  if (value.toString() != change)
                                      out += merged.substring(r);
                                  return true;
                              });
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_text_comparison";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    if (size == 0)
        return 0;
    const qly::XQDiffType type = data[0] & 7;
    const QByteArray rest(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    const qsizetype split = rest.indexOf('\xfe');
    const QString older = QString::fromUtf8(split < 0 ? rest : rest.left(split));
    const QString newer = split < 0 ? QString() : QString::fromUtf8(rest.mid(split + 1));
    qly::Error error;
    const std::optional<qly::AttributedString> merged = qly::attributedStringShowingDifferencesFrom(
        qly::AttributedString(newer), qly::AttributedString(older), type, {}, &error);
    if (!merged)
        std::abort(); // valid texts always compare
    if (!merged->checkInvariants() || without(*merged, qly::XQChangedTextNew) != older
        || without(*merged, qly::XQChangedTextOld) != newer)
        std::abort();
    return 0;
}

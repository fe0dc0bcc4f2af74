// Fuzz target for the extended RTF writer: the input bytes choose a tiny attributed text (notes of
// every kind, comments, keep-with-next, bookmarks, page references, sections, pictures, links, lists,
// tables, separators, non-ASCII) and the export options; whatever they choose, the writer's output
// must be one balanced group of 7-bit RTF, with no marker left, that the platform reader reads
// without a problem.
#include <QApplication>
#include <QTemporaryDir>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/platform/services/UserDefaults.h>

#include "interchange/ExtendedWriterRandomInput.h"

namespace {

// Choices taken from the input: one byte each (two for choices among more than 256), 0 once the
// input is used up, so that a short input means a plain text with few options.
class ByteChoices {
public:
    ByteChoices(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) { }
    int operator()(int n)
    {
        if (n <= 1)
            return 0;
        unsigned value = next();
        if (n > 256)
            value = value << 8 | next();
        return int(value % unsigned(n));
    }

private:
    unsigned next() { return m_at < m_size ? m_data[m_at++] : 0; }
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

} // namespace

// The system font configuration library keeps its caches until the process ends; they are not the
// writer's leaks.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Fonts are measured (single-page sections, through the fitting helper's text view, a widget) and
    // pictures encoded: a headless widget application is needed,
    // and user defaults must stay out of the developer's own settings. Both live as long as the
    // process, as the font caches the application fills do.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    new QApplication(*argc, *argv);
    static const QTemporaryDir* defaults = new QTemporaryDir;
    qly::UserDefaults::useIsolatedStorage(defaults->path());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteChoices choices(data, size);
    const writerinput::WriterInput input = writerinput::makeWriterInput(choices);
    const QByteArray rtf = qly::extendedRTFFromRange(input.text, input.range, input.documentAttributes, input.options);
    const QString problem = writerinput::wellFormednessProblem(rtf);
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "%s\n%s\n%s\n", qPrintable(problem), qPrintable(input.description), rtf.constData());
        std::abort();
    }
    return 0;
}

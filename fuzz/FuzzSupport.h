#pragma once
// Shared by the fuzz targets: a reader that takes typed values off the front of the input, a check
// that aborts with a message (so that a failed property is a crash libFuzzer keeps), and the quiet,
// isolated environment every target runs in.
#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <QtGlobal>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <qlyappkit/platform/services/UserDefaults.h>

namespace qly::fuzz {

/// Stops the run when a property does not hold, naming it.
#define QLY_FUZZ_CHECK(condition)                                                                                      \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition);                         \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)

/// Typed values taken off the front of the input; once it is used up every value is 0 or empty.
class InputReader {
public:
    InputReader(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) { }

    std::size_t remaining() const { return m_size - m_position; }
    std::uint8_t byte() { return m_position < m_size ? m_data[m_position++] : 0; }
    bool flag() { return byte() & 1; }
    /// A value in 0…bound-1 (bound > 0).
    unsigned below(unsigned bound) { return unsigned(uint16()) % bound; }
    std::uint16_t uint16() { return std::uint16_t(byte() | byte() << 8); }
    std::uint64_t uint64()
    {
        std::uint64_t value = 0;
        for (int i = 0; i < 8; ++i)
            value |= std::uint64_t(byte()) << (8 * i);
        return value;
    }
    /// Up to maxBytes bytes, the count given by the next byte.
    QByteArray bytes(unsigned maxBytes)
    {
        const std::size_t n = std::min<std::size_t>(byte() % (maxBytes + 1), remaining());
        QByteArray out(reinterpret_cast<const char*>(m_data + m_position), qsizetype(n));
        m_position += n;
        return out;
    }
    /// Up to maxBytes bytes read as UTF-8 (invalid sequences become U+FFFD).
    QString text(unsigned maxBytes) { return QString::fromUtf8(bytes(maxBytes)); }
    /// Everything left.
    QByteArray rest()
    {
        QByteArray out(reinterpret_cast<const char*>(m_data + m_position), qsizetype(remaining()));
        m_position = m_size;
        return out;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_position = 0;
};

/// Silences Qt's messages (readers log what they skip; printing it for every input would slow the
/// run down) and points the user defaults at a private folder, so that nothing the targets do reads
/// or changes the developer's settings. Call once, first thing in every input.
inline void prepareEnvironment()
{
    static const bool prepared = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        static QTemporaryDir defaults;
        UserDefaults::useIsolatedStorage(defaults.path());
        return true;
    }();
    (void)prepared;
}

/// A text as the platform RTF writer and reader give it back: every paragraph terminator (CR LF, CR,
/// U+2029) is written as the one paragraph mark and read as LF. Everything else comes back as it was.
inline QString withParagraphBreaksAsLineFeeds(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QChar(u'\r'), QChar(u'\n'));
    text.replace(QChar(0x2029), QChar(u'\n'));
    return text;
}

} // namespace qly::fuzz

#include <qlyappkit/platform/rtf/RTFOutput_p.h>

namespace qly::rtf {

void Output::word(Word w)
{
    m_bytes.append('\\');
    const std::string_view name = wordName(w);
    m_bytes.append(name.data(), qsizetype(name.size()));
    m_pendingWord = true;
}

void Output::word(Word w, int value)
{
    word(w);
    number(value);
}

void Output::number(long long value)
{
    char buffer[24];
    int n = 0;
    const bool negative = value < 0;
    unsigned long long v =
        negative ? 0ULL - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
    do {
        buffer[n++] = char('0' + v % 10);
        v /= 10;
    } while (v);
    if (negative)
        m_bytes.append('-');
    while (n)
        m_bytes.append(buffer[--n]);
}

void Output::raw(const char* markup)
{
    m_bytes.append(markup);
    m_pendingWord = false;
}

void Output::newline()
{
    m_bytes.append('\n');
    m_pendingWord = false;
}

void Output::delimit()
{
    if (m_pendingWord) {
        m_bytes.append(' ');
        m_pendingWord = false;
    }
}

void Output::unicode(char16_t unit)
{
    m_bytes.append("\\uc0\\u");
    number(unit);
    m_bytes.append(' ');
    m_pendingWord = false;
}

void Output::paragraphBreak()
{
    m_bytes.append("\\\n");
    m_pendingWord = false;
}

void Output::text(QStringView text)
{
    const QChar* chars = text.data();
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        // Stretches of plain printable ASCII go in one copy.
        qsizetype j = i;
        while (j < n) {
            const char16_t c = chars[j].unicode();
            if (c < 0x20 || c >= 0x7F || c == '\\' || c == '{' || c == '}')
                break;
            ++j;
        }
        if (j > i) {
            delimit();
            const qsizetype at = m_bytes.size();
            m_bytes.resize(at + (j - i));
            char* out = m_bytes.data() + at;
            for (qsizetype k = i; k < j; ++k)
                *out++ = char(chars[k].unicode());
            i = j;
            if (i >= n)
                break;
        }
        const char16_t u = chars[i].unicode();
        if (u >= 0x20 && u < 0x7F) {
            if (u == '\\' || u == '{' || u == '}') {
                m_bytes.append('\\');
                m_bytes.append(char(u));
                m_pendingWord = false;
            } else {
                delimit();
                m_bytes.append(char(u));
            }
        } else if (u == '\t') {
            word(Word::Tab);
            m_bytes.append(' ');
            m_pendingWord = false;
        } else if (u == 0x0C) {
            word(Word::Page);
            m_bytes.append(' ');
            m_pendingWord = false;
        } else {
            unicode(u);
        }
    }
}

} // namespace qly::rtf

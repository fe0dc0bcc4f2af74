#include <qlyappkit/platform/rtf/RTFTokenizer_p.h>

#include <algorithm>
#include <limits>

namespace qly::rtf {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

Token Tokenizer::next()
{
    const qsizetype n = qsizetype(m_data.size());
    while (m_pos < n) {
        const qsizetype start = m_pos;
        const char c = m_data[size_t(m_pos)];
        switch (c) {
        case '{':
            ++m_pos;
            return Token{TokenKind::GroupStart, {}, 0, false, 0, 0, start};
        case '}':
            ++m_pos;
            return Token{TokenKind::GroupEnd, {}, 0, false, 0, 0, start};
        case '\\':
            return controlToken(start);
        case '\r':
        case '\n':
            ++m_pos; // line breaks in RTF source carry no meaning
            continue;
        default: {
            while (m_pos < n) {
                const char d = m_data[size_t(m_pos)];
                if (d == '\\' || d == '{' || d == '}' || d == '\r' || d == '\n')
                    break;
                ++m_pos;
            }
            return Token{TokenKind::Text, m_data.substr(size_t(start), size_t(m_pos - start)), 0, false, 0, 0, start};
        }
        }
    }
    return Token{TokenKind::End, {}, 0, false, 0, 0, n};
}

Token Tokenizer::controlToken(qsizetype start)
{
    const qsizetype n = qsizetype(m_data.size());
    m_pos = start + 1;
    if (m_pos >= n)
        return Token{TokenKind::End, {}, 0, false, 0, 0, n}; // a lone backslash at the very end
    const char c = m_data[size_t(m_pos)];

    if (isLetter(c)) {
        const qsizetype nameStart = m_pos;
        while (m_pos < n && isLetter(m_data[size_t(m_pos)]))
            ++m_pos;
        const qsizetype nameLength = std::min<qsizetype>(m_pos - nameStart, MaxWordLength);
        Token token{
            TokenKind::ControlWord, m_data.substr(size_t(nameStart), size_t(nameLength)), 0, false, 0, 0, start};

        bool negative = false;
        if (m_pos + 1 < n && m_data[size_t(m_pos)] == '-' && isDigit(m_data[size_t(m_pos) + 1])) {
            negative = true;
            ++m_pos;
        }
        if (m_pos < n && isDigit(m_data[size_t(m_pos)])) {
            // Saturate: documents hold 16- and 32-bit values, hostile ones anything.
            long long value = 0;
            while (m_pos < n && isDigit(m_data[size_t(m_pos)])) {
                if (value < 10'000'000'000LL)
                    value = value * 10 + (m_data[size_t(m_pos)] - '0');
                ++m_pos;
            }
            if (negative)
                value = -value;
            value = std::clamp<long long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
            token.parameter = int(value);
            token.hasParameter = true;
        }
        if (m_pos < n && m_data[size_t(m_pos)] == ' ')
            ++m_pos; // the delimiting blank belongs to the control word

        if (token.text == "bin" && token.hasParameter && token.parameter > 0) {
            const qsizetype length = std::min<qsizetype>(token.parameter, n - m_pos);
            Token binary{TokenKind::Binary, m_data.substr(size_t(m_pos), size_t(length)), 0, false, 0, 0, start};
            m_pos += length;
            return binary;
        }
        return token;
    }

    if (c == '\'') {
        if (m_pos + 2 < n) {
            const int hi = hexValue(m_data[size_t(m_pos) + 1]);
            const int lo = hexValue(m_data[size_t(m_pos) + 2]);
            if (hi >= 0 && lo >= 0) {
                m_pos += 3;
                return Token{TokenKind::HexByte, {}, 0, false, 0, std::uint8_t(hi * 16 + lo), start};
            }
        }
        ++m_pos;
        return Token{TokenKind::ControlSymbol, {}, 0, false, '\'', 0, start};
    }

    if (c == '\r' || c == '\n') {
        // A backslash before a line break is a paragraph mark.
        ++m_pos;
        if (c == '\r' && m_pos < n && m_data[size_t(m_pos)] == '\n')
            ++m_pos;
        return Token{TokenKind::ControlWord, std::string_view("par"), 0, false, 0, 0, start};
    }

    ++m_pos;
    return Token{TokenKind::ControlSymbol, {}, 0, false, c, 0, start};
}

bool Tokenizer::skipGroup()
{
    int depth = 1;
    for (;;) {
        const Token token = next();
        switch (token.kind) {
        case TokenKind::GroupStart:
            ++depth;
            break;
        case TokenKind::GroupEnd:
            if (--depth == 0)
                return true;
            break;
        case TokenKind::End:
            return false;
        default:
            break;
        }
    }
}

} // namespace qly::rtf

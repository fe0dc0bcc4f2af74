#pragma once
// The RTF tokenizer: cuts RTF bytes into group marks, control words and symbols, text runs, hex bytes
// and binary data. It never allocates and never fails: malformed input comes out as the tokens it
// most plausibly means, and the end of the input as an End token.
#include <QtGlobal>
#include <cstdint>
#include <string_view>

namespace qly::rtf {

enum class TokenKind : std::uint8_t {
    GroupStart,
    GroupEnd,
    ControlWord, ///< name in text; parameter when hasParameter ("\par" from "\" + line break too)
    ControlSymbol, ///< a backslash and one non-letter, in symbol
    Text, ///< bytes without markup and without line breaks
    HexByte, ///< "\'hh", in byte
    Binary, ///< the bytes of "\binN" (its control word is not reported)
    End,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string_view text;
    int parameter = 0;
    bool hasParameter = false;
    char symbol = 0;
    std::uint8_t byte = 0;
    qsizetype offset = 0; ///< where the token starts in the input
};

class Tokenizer {
public:
    /// Control word names longer than this are cut (the rest of the letters is still consumed).
    static constexpr int MaxWordLength = 32;

    explicit Tokenizer(std::string_view data, qsizetype start = 0) : m_data(data), m_pos(start) { }

    Token next();
    /// Consumes everything up to and including the end of the current group (whose start has been
    /// read). False when the input ends first.
    bool skipGroup();
    qsizetype offset() const { return m_pos; }

private:
    Token controlToken(qsizetype start);

    std::string_view m_data;
    qsizetype m_pos = 0;
};

} // namespace qly::rtf

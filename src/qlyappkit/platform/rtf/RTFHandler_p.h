#pragma once
// The interface between the RTF tokenizer and what makes sense of the tokens, and the loop that
// feeds one to the other. The loop is the single place where unwanted destinations are skipped: a
// handler asks for it by returning SkipGroup from controlWord().
#include <cstdint>
#include <string_view>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFTokenizer_p.h>

namespace qly::rtf {

enum class HandlerAction { Continue, SkipGroup };

class Handler {
public:
    virtual ~Handler() = default;
    virtual void groupStart() = 0;
    virtual void groupEnd() = 0;
    virtual HandlerAction controlWord(std::string_view name, bool hasParameter, int parameter) = 0;
    virtual void controlSymbol(char symbol) = 0;
    virtual void text(std::string_view bytes) = 0;
    virtual void hexByte(std::uint8_t byte) = 0;
    virtual void binary(std::string_view bytes) = 0;
    /// The document ended (its outermost group closed, or the data ran out).
    virtual void end() = 0;
};

/// Feeds the tokens of the outermost group starting at the tokenizer's position to the handler,
/// until that group closes or the data ends.
RTFParseResult feedTokens(Tokenizer& tokenizer, Handler& handler);

} // namespace qly::rtf

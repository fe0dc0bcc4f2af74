#include <qlyappkit/platform/rtf/RTFReader.h>

#include <qlyappkit/platform/rtf/RTFHandler_p.h>
#include <qlyappkit/platform/rtf/RTFInterpreter_p.h>

namespace qly {

namespace {

const QByteArray DocumentStart = QByteArrayLiteral("{\\rtf");

} // namespace

QString RTFParseResult::description() const
{
    switch (status) {
    case RTFParseStatus::Ok:
        return QStringLiteral("no error");
    case RTFParseStatus::NotRTF:
        return QStringLiteral("not RTF: the data does not begin with {\\rtf");
    case RTFParseStatus::UnexpectedEnd:
        return QStringLiteral("the RTF ends inside a group at byte %1").arg(offset);
    }
    return {};
}

namespace rtf {

RTFParseResult feedTokens(Tokenizer& tokenizer, Handler& handler)
{
    qsizetype depth = 0;
    for (;;) {
        const Token token = tokenizer.next();
        switch (token.kind) {
        case TokenKind::GroupStart:
            ++depth;
            handler.groupStart();
            break;
        case TokenKind::GroupEnd:
            // The document ends with its outermost group, whose state still applies to the last paragraph.
            if (--depth <= 0) {
                handler.end();
                return {};
            }
            handler.groupEnd();
            break;
        case TokenKind::ControlWord:
            if (handler.controlWord(token.text, token.hasParameter, token.parameter) == HandlerAction::SkipGroup) {
                if (!tokenizer.skipGroup()) {
                    handler.end();
                    return {RTFParseStatus::UnexpectedEnd, tokenizer.offset()};
                }
                if (--depth <= 0) {
                    handler.end();
                    return {};
                }
                handler.groupEnd();
            }
            break;
        case TokenKind::ControlSymbol:
            handler.controlSymbol(token.symbol);
            break;
        case TokenKind::Text:
            handler.text(token.text);
            break;
        case TokenKind::HexByte:
            handler.hexByte(token.byte);
            break;
        case TokenKind::Binary:
            handler.binary(token.text);
            break;
        case TokenKind::End:
            handler.end();
            return {RTFParseStatus::UnexpectedEnd, token.offset};
        }
    }
}

} // namespace rtf

std::optional<AttributedString> attributedStringFromRTF(const QByteArray& rtf, QVariantMap* documentAttributes,
                                                        RTFParseResult* result)
{
    qsizetype start = 0;
    while (start < rtf.size()
           && (rtf.at(start) == ' ' || rtf.at(start) == '\t' || rtf.at(start) == '\r' || rtf.at(start) == '\n'))
        ++start;
    if (!QByteArrayView(rtf).sliced(start).startsWith(DocumentStart)) {
        if (result)
            *result = {RTFParseStatus::NotRTF, start};
        return std::nullopt;
    }
    rtf::Tokenizer tokenizer(std::string_view(rtf.constData(), size_t(rtf.size())), start);
    rtf::Interpreter interpreter;
    const RTFParseResult parsed = rtf::feedTokens(tokenizer, interpreter);
    if (result)
        *result = parsed;
    if (documentAttributes)
        *documentAttributes = interpreter.documentAttributes();
    return interpreter.result();
}

} // namespace qly

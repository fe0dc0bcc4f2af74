#include <qlyappkit/formats/comparison/DiffEscapes_p.h>

#include <bitset>
#include <utility>

namespace qly::diffescape {

namespace {

const QString MarkerStem = QStringLiteral("XQ_DiFf_");
constexpr qsizetype MarkerLetter = 1; // the "Q"

constexpr char16_t NoncharacterFirst = 0xFDD0, NoncharacterLast = 0xFDEF;
constexpr char16_t PrivateUseFirst = 0xE000, PrivateUseLast = 0xF8FF;

bool isCandidate(char16_t c)
{
    return (c >= NoncharacterFirst && c <= NoncharacterLast) || (c >= PrivateUseFirst && c <= PrivateUseLast);
}

} // namespace

std::optional<Escapes> escapesFor(QStringView older, QStringView newer)
{
    const bool nul = older.contains(QChar(0)) || newer.contains(QChar(0));
    const bool marker = older.contains(MarkerStem) || newer.contains(MarkerStem);
    if (!nul && !marker)
        return Escapes{};
    std::bitset<0x10000> used;
    for (QStringView text : {older, newer}) {
        for (QChar c : text) {
            if (isCandidate(c.unicode()))
                used.set(c.unicode());
        }
    }
    auto take = [&]() -> char16_t {
        for (auto [first, last] :
             {std::pair{NoncharacterFirst, NoncharacterLast}, std::pair{PrivateUseFirst, PrivateUseLast}}) {
            for (char32_t c = first; c <= last; ++c) {
                if (!used.test(c)) {
                    used.set(c);
                    return char16_t(c);
                }
            }
        }
        return 0;
    };
    Escapes escapes;
    if (nul && !(escapes.nul = take()))
        return std::nullopt;
    if (marker && !(escapes.marker = take()))
        return std::nullopt;
    return escapes;
}

QString escaped(QStringView text, const Escapes& escapes)
{
    QString out = text.toString();
    if (escapes.nul)
        out.replace(QChar(0), QChar(escapes.nul));
    if (escapes.marker) {
        for (qsizetype at = out.indexOf(MarkerStem); at >= 0; at = out.indexOf(MarkerStem, at + MarkerStem.size()))
            out[at + MarkerLetter] = QChar(escapes.marker);
    }
    return out;
}

void unescape(QString& text, const Escapes& escapes)
{
    if (escapes.nul)
        text.replace(QChar(escapes.nul), QChar(0));
    if (escapes.marker)
        text.replace(QChar(escapes.marker), MarkerStem.at(MarkerLetter));
}

} // namespace qly::diffescape

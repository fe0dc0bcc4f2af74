#pragma once
// Characters of the compared texts that the tool or the reading of its output would misread, swapped
// for code points that neither text holds and swapped back in the merged text: NUL, which makes the
// tool take the files for binary ones, and the "Q" of "XQ_DiFf_", which every marker holds, so that a
// text quoting a marker keeps it as text.
#include <QString>
#include <QStringView>
#include <optional>

namespace qly::diffescape {

struct Escapes {
    char16_t nul = 0; ///< stands for U+0000 when not 0
    char16_t marker = 0; ///< stands for the "Q" of "XQ_DiFf_" when not 0
    bool any() const { return nul || marker; }
};

/// What the two texts need; nothing when they need an escape and every candidate code point (the
/// noncharacters U+FDD0–U+FDEF, then the private use area) occurs in them.
std::optional<Escapes> escapesFor(QStringView older, QStringView newer);
/// The text with the characters swapped; the length is unchanged.
QString escaped(QStringView text, const Escapes& escapes);
/// Swaps the characters back in place.
void unescape(QString& text, const Escapes& escapes);

} // namespace qly::diffescape

#pragma once
// The RTF numbering controls of footnotes and endnotes, document- or section-wide.
#include <QString>

namespace qly {

/// "\" + ("s" for a section) + ("a" for endnotes) + the style's code: 0 "ftnnar" (1, 2, 3),
/// 1 "ftnnalc" (a, b), 2 "ftnnauc" (A, B), 3 "ftnnrlc" (i, ii), 4 "ftnnruc" (I, II), 5 "ftnnchi"
/// (symbols). Other styles have no code, leaving the backslash and flag letters alone; readers
/// ignore that control, which is what such a style should get.
QString RTFFootnoteStyleControlForFootnoteStyle(int footnoteStyle, bool isEndnote, bool isSection);

} // namespace qly

#pragma once
// Code pages of 8-bit RTF text: the code page a font's character set stands for, and decoding with
// Qt's converters, with a built-in Windows-1252 table for builds without them.
#include <QByteArrayView>
#include <QString>

namespace qly::rtf {

inline constexpr int DefaultCodePage = 1252;

/// The code page of an "\fcharsetN" font; charsets 0 (ANSI) and 1 (default) take the document's.
int codePageForCharset(int charset, int documentCodePage);
/// Decodes bytes in a Windows code page; undecodable bytes become U+FFFD. Unknown code pages are read
/// as Windows-1252.
QString decodeCodePage(QByteArrayView bytes, int codePage);
/// Windows-1252 by the built-in table (bytes 0x81, 0x8D, 0x8F, 0x90, 0x9D pass through as C1 controls).
QString decodeWindows1252(QByteArrayView bytes);

} // namespace qly::rtf

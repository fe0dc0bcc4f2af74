#pragma once
// The two text decodings of OPML files: attribute values, whose entity references arrive unreplaced,
// and element text, whose entity references are resolved by a short fixed table.
#include <QByteArray>
#include <QString>
#include <QStringView>

namespace qly {

/// An attribute value as OPML writers escape it: "&#10;", "&quot;", "&apos;", "&lt;", "&gt;" and, last,
/// "&amp;" are replaced, case-insensitively (so "&amp;lt;" gives "&lt;", not "<"). Nothing else is decoded.
QString stringByTranslatingOPMLTagsFromString(const QString& string);
/// The same decoding over UTF-8 bytes (every escape is ASCII), appending the result to out.
void appendTranslatingOPMLTags(QByteArray& out, const char* utf8, qsizetype size);

/// Raw element text (entity references still written as "&name;") with each reference resolved: "amp",
/// "#10", "quot", "apos", "lt" and "gt" by their characters, any other by its bare name. An "&" that does
/// not start a reference stays as it is.
QString OPMLElementTextFromRawText(QStringView raw);

} // namespace qly

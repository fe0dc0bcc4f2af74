#pragma once
// The platform RTF reader: RTF bytes from any word processor into attributed text with fonts,
// colours, paragraph styles (tabs, spacing, lists, table cells), links and document attributes.
// Text that is not markup, such as the framework's own tags written as escaped RTF text, comes back
// exactly as written. Malformed input never crashes or hangs: what can be read is returned, and the
// problem is reported as a status with the byte offset where it was found.
//
// Breaks: every paragraph mark (\par, \sect, a backslash before a line break) reads as a line feed.
// The platform writer writes every paragraph terminator (LF, CR, CR LF, U+2029) as that mark, so
// through RTF they all become LF, as on the platform. A line separator breaks a line, not a
// paragraph: \line and U+2028 (written \uc0\u8232) read as U+2028.
#include <QByteArray>
#include <QString>
#include <QVariantMap>
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

enum class RTFParseStatus {
    Ok,
    NotRTF, ///< the data does not begin with "{\rtf" (after blanks): nothing was read
    UnexpectedEnd, ///< the data ended inside a group (truncated file or missing braces)
};

struct RTFParseResult {
    RTFParseStatus status = RTFParseStatus::Ok;
    qsizetype offset = 0; ///< byte offset where the problem was found
    explicit operator bool() const { return status == RTFParseStatus::Ok; }
    /// A short English description of the status, for messages.
    QString description() const;
};

/// Reads RTF. Nothing when the data is not RTF; otherwise the text, with the page size, margins,
/// author and view mode put in documentAttributes (keys from PlatformAttributes.h) when asked for.
std::optional<AttributedString> attributedStringFromRTF(const QByteArray& rtf,
                                                        QVariantMap* documentAttributes = nullptr,
                                                        RTFParseResult* result = nullptr);

} // namespace qly

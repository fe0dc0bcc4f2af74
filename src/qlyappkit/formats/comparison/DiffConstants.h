#pragma once
// The text comparison's names and fixed texts: the chunk separator and the tags that the comparison
// tool's output carries, the changed-text attribute, the keys of the caller's colours, the diff types,
// the default colours and the error messages.
#include <QString>

#include <qlyappkit/platform/values/Color.h>

namespace qly {

// ---- markers in the files handed to the comparison tool and in its output. Deliberately odd
// mixed-case texts that ordinary prose never holds.

/// Ends every chunk, so that each chunk is one line for the line-based tool (ends with a line feed).
inline const QString XQDiffChunkSeparatorString = QStringLiteral("((-##-XQ_DiFf_SePaRaToR-##-))\n");
inline const QString XQDiffOldTextStartTag = QStringLiteral("[[-##-XQ_DiFf_OlDtXt_StArT-##-]]");
inline const QString XQDiffOldTextEndTag = QStringLiteral("[[-##-XQ_DiFf_OlDtXt_EnD-##-]]");
inline const QString XQDiffNewTextStartTag = QStringLiteral("[[-##-XQ_DiFf_NeWtXt_StArT-##-]]");
inline const QString XQDiffNewTextEndTag = QStringLiteral("[[-##-XQ_DiFf_NeWtXt_EnD-##-]]");

// ---- the merged text

/// Value: XQChangedTextOld on removed text, XQChangedTextNew on added text.
inline const QString XQChangedTextAttributeName = QStringLiteral("XQChangedTextAttributeName");
inline const QString XQChangedTextOld = QStringLiteral("OldText");
inline const QString XQChangedTextNew = QStringLiteral("NewText");

// ---- keys of the caller's diff attributes; each value is a Color, and each may be absent

inline const QString XQOldTextForegroundColor = QStringLiteral("XQOldTextForegroundColor");
inline const QString XQOldTextBackgroundColor = QStringLiteral("XQOldTextBackgroundColor");
inline const QString XQNewTextForegroundColor = QStringLiteral("XQNewTextForegroundColor");
inline const QString XQNewTextBackgroundColor = QStringLiteral("XQNewTextBackgroundColor");

// ---- what is compared: a mask of these bits

using XQDiffType = unsigned;
/// A paragraph found unchanged (same text, same line break) anywhere in the other text stays one unit.
inline constexpr XQDiffType XQDiffTypeParagraphs = 1;
/// Text is cut into clauses, each ending just after a punctuation character.
inline constexpr XQDiffType XQDiffTypeClauses = 2;
/// Text is cut into words and the stretches between them.
inline constexpr XQDiffType XQDiffTypeWords = 4;

// ---- colours when the caller gives none

inline constexpr Color XQDiffDefaultRemovedTextColor = Color(0.706, 0.271, 0.298);
inline constexpr Color XQDiffDefaultAddedTextColor = Color(0.29, 0.478, 0.655);

// ---- the temporary files' names (localisation keys; the file names add ".txt")

inline constexpr char XQDiffOldFileNameKey[] = "DiffTextOld";
inline constexpr char XQDiffNewFileNameKey[] = "DiffTextNew";
inline const QString XQDiffFileExtension = QStringLiteral(".txt");

/// The comparison tool, run with an argument list (never through a shell).
inline const QString XQDiffToolPath = QStringLiteral("/usr/bin/diff");

// ---- error messages (English texts, localised where they are used)

inline constexpr char XQDiffNoTemporaryDirectoryDescription[] = "Temporary directory unavailable.";
inline constexpr char XQDiffNoTemporaryDirectorySuggestion[] =
    "Could not access the temporary directory for the current user. In order to compare text, the temporary "
    "directory is required to store temporary .txt files.";
inline constexpr char XQDiffOutputUnreadableDescription[] = "Could not create diff'd text";
inline constexpr char XQDiffOutputUnreadableSuggestion[] = "There was a problem creating the comparison text.";

} // namespace qly

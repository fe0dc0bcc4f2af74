#pragma once
// Exporting a stored text as RTF for word processors: the whole path from what the application keeps
// to what a word processor opens, as one call.
//
// The stored RTF has no way to hold bookmarks, page references or pictures, so they travel as links:
// "qlybookmark:NAME" on the bookmarked text, "qlypageref:NAME" on the text that shows the page
// number, and "qlypicture:FILE" on the text a picture replaces, FILE relative to the document's folder
// (percent-encoding allowed). Each link becomes the attribute the writer reads and the link goes.
#include <qlyappkit/platform/text/AttributedString.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace qly {

inline const QString XQExportBookmarkLinkScheme = QStringLiteral("qlybookmark:");
inline const QString XQExportPageRefLinkScheme = QStringLiteral("qlypageref:");
inline const QString XQExportPictureLinkScheme = QStringLiteral("qlypicture:");

struct WordRTFExportSettings {
    /// The writer's XQRTF… options.
    QVariantMap options;
    /// Document attributes that take the place of those the stored text had (page size, author …).
    QVariantMap documentAttributes;
    /// Inline annotations become footnotes of the third kind (linked comments written as footnotes).
    bool annotationsAsFootnotes = false;
    /// The folder picture links are relative to; with none, picture links are refused.
    QString resourceFolder;
};

/// Turns the three link conventions into bookmark, page-reference and picture attributes. A picture
/// whose name is absolute, leaves the folder (by ".." or a symbolic link) or cannot be read is left
/// out, with a warning naming the link; the rest of the text is unaffected.
AttributedString attributedStringByResolvingExportLinks(const AttributedString& text, const QString& resourceFolder,
                                                        QStringList* warnings = nullptr);

/// Marks a section at the start of the text and after each page break, running to the next one and
/// titled by the visible text of its first paragraph (inline notes and pictures left out). Notes must
/// be inline already: text inserted later carries no section and would split one.
AttributedString attributedStringByMarkingSectionsAtPageBreaks(const AttributedString& text);

/// Sets an option from its text form ("NAME=VALUE": yes/no and true/false as booleans, integers as
/// numbers, anything else as text). False with *problem for an unknown name or a missing "=".
bool setRTFOptionFromString(QVariantMap& options, const QString& assignment, QString* problem = nullptr);

/// The stored text (notes as attributes, comments loaded; see StoredText.h) as RTF for word
/// processors: links resolved, sections marked, linked comments made inline annotations, then the
/// extended RTF writer. storedAttributes are the document attributes the stored text carried.
QByteArray wordRTFFromStoredText(const AttributedString& storedText, const QVariantMap& storedAttributes,
                                 const WordRTFExportSettings& settings, QStringList* warnings = nullptr);

} // namespace qly

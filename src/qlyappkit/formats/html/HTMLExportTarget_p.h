#pragma once
// What may be replaced at the path an HTML page is exported to, and the replacement itself. A page
// with pictures is a folder (the page and its images folder inside); whatever an export replaces is
// either nothing, a file, a symbolic link (replaced itself, never followed) or the folder of an
// earlier export of the same page. A folder holding anything else is the user's and is refused.
#include <QString>

#include <qlyappkit/platform/services/Error.h>

namespace qly::htmlexport {

enum class TargetKind {
    Missing,
    File,
    Link,
    EarlierExport, ///< a folder holding at most the page (a file) and the images folder (files only)
    Refused, ///< anything else: left alone
};

/// What is at path, for a page named pageName with its images in imagesName; *reason says why a
/// target is refused.
TargetKind inspectTarget(const QString& path, const QString& pageName, const QString& imagesName, QString* reason);

/// A new empty folder beside path (a hidden name of its own), to write an export into before it
/// takes the path's place; empty when none can be made.
QString makeStagingFolder(const QString& path);
/// A fresh hidden file name beside path, for a page to be written before it takes the path's place.
QString stagingFileName(const QString& path);

/// Puts staged (a file or folder beside path) at path, replacing what inspectTarget allows there; an
/// earlier export's folder is removed afterwards, entry by entry. False (and *error) when the target
/// has become one that is refused or a rename fails; the target is then as it was.
bool replaceTarget(const QString& staged, const QString& path, const QString& pageName, const QString& imagesName,
                   Error* error);

/// Removes a folder that inspectTarget calls an earlier export (a staging folder too), and nothing
/// else: false when it holds anything more.
bool removeExportFolder(const QString& folder, const QString& pageName, const QString& imagesName);

} // namespace qly::htmlexport

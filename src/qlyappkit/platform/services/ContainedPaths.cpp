#include <qlyappkit/platform/services/ContainedPaths.h>

#include <qlyappkit/platform/services/Localization.h>

#include <QDir>
#include <QFileInfo>

namespace qly {

namespace {

bool isInside(const QString& path, const QString& folder)
{
    return path == folder || path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

std::optional<QString> refuse(QString* problem, const QString& reason)
{
    if (problem)
        *problem = reason;
    return std::nullopt;
}

// The canonical form of the longest existing leading part of path, with the rest appended: what the
// path resolves to once every existing symbolic link on the way is followed.
QString resolvedAsFarAsItExists(const QString& path)
{
    QString existing = path;
    QString rest;
    while (!QFileInfo::exists(existing) && !QFileInfo(existing).isSymLink()) {
        const qsizetype slash = existing.lastIndexOf(u'/');
        if (slash <= 0)
            return path;
        rest = existing.mid(slash) + rest;
        existing = existing.left(slash);
    }
    const QString canonical = QFileInfo(existing).canonicalFilePath();
    // A dangling link has no canonical form: its target cannot be told to be inside.
    return canonical.isEmpty() ? QString() : canonical + rest;
}

} // namespace

std::optional<QString> pathInsideFolder(const QString& folder, const QString& name, QString* problem)
{
    if (name.isEmpty())
        return refuse(problem, localized("The file name is empty."));
    if (QDir::isAbsolutePath(name) || name.startsWith(u'~') || name.startsWith(u'\\')
        || (name.size() > 1 && name.at(0).isLetter() && name.at(1) == u':'))
        return refuse(problem, localized("The file name is an absolute path."));
    if (name.contains(QChar(0)))
        return refuse(problem, localized("The file name holds a null character."));

    const QString base = QDir::cleanPath(QDir(folder).absolutePath());
    const QString joined = QDir::cleanPath(base + u'/' + name);
    if (!isInside(joined, base) || joined == base)
        return refuse(problem, localized("The file name leads out of its folder."));

    const QString canonicalBase = QFileInfo(base).canonicalFilePath();
    const QString resolved = resolvedAsFarAsItExists(joined);
    if (!canonicalBase.isEmpty() && (resolved.isEmpty() || !isInside(resolved, canonicalBase)))
        return refuse(problem, localized("The file name leads through a link to a place outside its folder."));
    return joined;
}

} // namespace qly

#include <qlyappkit/formats/html/HTMLExportTarget_p.h>

#include <QFile>
#include <QRandomGenerator>
#include <filesystem>
#include <system_error>

#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/platform/services/Localization.h>

namespace qly::htmlexport {

namespace fs = std::filesystem;

namespace {

constexpr int StagingAttempts = 16;

fs::path fsPath(const QString& path) { return fs::path(QFile::encodeName(path).toStdString()); }
QString qPath(const fs::path& path) { return QFile::decodeName(QByteArray::fromStdString(path.string())); }

QString hiddenNameBeside(const QString& path, const char* purpose)
{
    const fs::path p = fsPath(path);
    const QString name = QLatin1Char('.') + qPath(p.filename()) + QLatin1Char('.') + QLatin1String(purpose)
        + QLatin1Char('-') + QString::number(QRandomGenerator::global()->generate64(), 16);
    return qPath(p.parent_path() / fsPath(name));
}

fs::file_status statusOf(const fs::path& path)
{
    std::error_code ec;
    return fs::symlink_status(path, ec); // never follows a link
}

// True when folder holds nothing but regular files.
bool holdsOnlyFiles(const fs::path& folder, QString* offending)
{
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        if (!fs::is_regular_file(statusOf(it->path()))) {
            *offending = qPath(it->path().filename());
            return false;
        }
    }
    return !ec;
}

bool isEarlierExport(const fs::path& folder, const QString& pageName, const QString& imagesName, QString* offending)
{
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const QString name = qPath(it->path().filename());
        const fs::file_status status = statusOf(it->path());
        if (name == pageName && fs::is_regular_file(status))
            continue;
        if (name == imagesName && fs::is_directory(status)) {
            QString inner;
            if (holdsOnlyFiles(it->path(), &inner))
                continue;
            *offending = imagesName + u'/' + inner;
            return false;
        }
        *offending = name;
        return false;
    }
    if (ec)
        *offending = QString::fromStdString(ec.message());
    return !ec;
}

} // namespace

TargetKind inspectTarget(const QString& path, const QString& pageName, const QString& imagesName, QString* reason)
{
    const fs::path p = fsPath(path);
    const fs::file_status status = statusOf(p);
    switch (status.type()) {
    case fs::file_type::not_found:
        return TargetKind::Missing;
    case fs::file_type::symlink:
        return TargetKind::Link;
    case fs::file_type::regular:
        return TargetKind::File;
    case fs::file_type::directory: {
        QString offending;
        if (isEarlierExport(p, pageName, imagesName, &offending))
            return TargetKind::EarlierExport;
        if (reason)
            *reason =
                localized("The folder \u201C%1\u201D holds \u201C%2\u201D, which is not part of an earlier export "
                          "of this page; nothing was removed.")
                    .arg(path, offending);
        return TargetKind::Refused;
    }
    default:
        if (reason)
            *reason = localized("\u201C%1\u201D is neither a file nor a folder; nothing was removed.").arg(path);
        return TargetKind::Refused;
    }
}

QString makeStagingFolder(const QString& path)
{
    for (int attempt = 0; attempt < StagingAttempts; ++attempt) {
        const QString folder = hiddenNameBeside(path, "export");
        std::error_code ec;
        if (fs::create_directory(fsPath(folder), ec) && !ec)
            return folder;
    }
    return QString();
}

QString stagingFileName(const QString& path) { return hiddenNameBeside(path, "page"); }

bool removeExportFolder(const QString& folder, const QString& pageName, const QString& imagesName)
{
    const fs::path p = fsPath(folder);
    QString offending;
    if (!fs::is_directory(statusOf(p)) || !isEarlierExport(p, pageName, imagesName, &offending))
        return false;
    std::error_code ec;
    const fs::path images = p / fsPath(imagesName);
    if (fs::is_directory(statusOf(images))) {
        for (fs::directory_iterator it(images, ec), end; !ec && it != end; it.increment(ec))
            fs::remove(it->path(), ec); // regular files only, as checked
        fs::remove(images, ec);
    }
    fs::remove(p / fsPath(pageName), ec);
    return fs::remove(p, ec) && !ec;
}

bool replaceTarget(const QString& staged, const QString& path, const QString& pageName, const QString& imagesName,
                   Error* error)
{
    QString reason;
    const TargetKind kind = inspectTarget(path, pageName, imagesName, &reason);
    if (kind == TargetKind::Refused) {
        setError(error, XQHTMLExportErrorDomain, XQHTMLExportTargetInUseError, reason);
        return false;
    }
    const fs::path target = fsPath(path), source = fsPath(staged);
    std::error_code ec;
    const bool stagedIsFolder = fs::is_directory(statusOf(source));
    // A file replaces a file or a link in one rename; anything else first moves the old entry aside.
    if (kind == TargetKind::Missing || (!stagedIsFolder && kind != TargetKind::EarlierExport)) {
        fs::rename(source, target, ec);
        if (ec)
            setError(
                error, XQHTMLExportErrorDomain, XQHTMLExportWriteError,
                localized("\u201C%1\u201D could not be written: %2").arg(path, QString::fromStdString(ec.message())));
        return !ec;
    }
    const QString asideName = hiddenNameBeside(path, "earlier");
    const fs::path aside = fsPath(asideName);
    fs::rename(target, aside, ec);
    if (!ec)
        fs::rename(source, target, ec);
    if (ec) {
        std::error_code back;
        if (fs::exists(statusOf(aside)))
            fs::rename(aside, target, back);
        setError(error, XQHTMLExportErrorDomain, XQHTMLExportWriteError,
                 localized("\u201C%1\u201D could not be replaced: %2").arg(path, QString::fromStdString(ec.message())));
        return false;
    }
    if (kind == TargetKind::EarlierExport)
        removeExportFolder(asideName, pageName, imagesName);
    else
        fs::remove(aside, ec); // a file, or a link itself (not what it points to)
    return true;
}

} // namespace qly::htmlexport

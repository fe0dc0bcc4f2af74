#include <qlyappkit/formats/html/HTMLImageFiles.h>

#include <QFile>
#include <QFileInfo>

#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/platform/services/AtomicFile.h>
#include <qlyappkit/platform/services/ContainedPaths.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/strings/CharacterSets.h>

namespace qly {

namespace {

const QString JPEGExtension = QStringLiteral("jpg");
const QString LongJPEGExtension = QStringLiteral("jpeg");
const QString PNGExtension = QStringLiteral("png");
constexpr int MaxNameBytes = 200; // file systems allow 255; numbers may still be added
constexpr int MaxNumberedNames = 100000;

// The base name and the extension (after the last dot; empty when there is none).
std::pair<QString, QString> splitExtension(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return {name, QString()};
    return {name.left(dot), name.mid(dot + 1)};
}

// A plain file name: the last part of a path, without controls and leading dots or blanks.
QString plainFileName(const QString& name)
{
    QString plain = name;
    plain.replace(QLatin1Char('\\'), QLatin1Char('/'));
    plain = plain.mid(plain.lastIndexOf(QLatin1Char('/')) + 1);
    plain.removeIf([](QChar c) { return c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() <= 0x9F); });
    qsizetype start = 0;
    while (start < plain.size()
           && (plain.at(start) == QLatin1Char('.') || isWhitespaceOrNewline(plain.at(start).unicode())))
        ++start;
    return plain.mid(start);
}

// Shortens the base so that the whole name fits the file system with room for a number.
QString shortened(const QString& base, const QString& extension)
{
    QString b = base;
    while (!b.isEmpty() && (b + u'.' + extension).toUtf8().size() > MaxNameBytes)
        b.chop(QChar::isLowSurrogate(b.back().unicode()) && b.size() > 1 ? 2 : 1);
    return b + u'.' + extension;
}

} // namespace

QString HTMLImageNaming::fileNameForImage(const QString& attachmentFileName, bool* isJPEG)
{
    QString name = plainFileName(attachmentFileName);
    if (name.isEmpty())
        name = localized(XQHTMLDefaultImageName);
    if (name.startsWith(XQMathTypeImageNamePrefix)) {
        const QString slot = m_equationImages > 0 ? QString::number(m_equationImages) : XQHTMLAbsentNumberText;
        name = localized(XQHTMLEquationImageName) + slot + u'.' + splitExtension(name).second;
        ++m_equationImages;
    } else if (m_stripWhitespace) {
        name.removeIf([](QChar c) { return isWhitespaceOrNewline(c.unicode()); });
    }
    auto [base, extension] = splitExtension(name);
    const QString lower = extension.toLower();
    const bool jpeg = lower == JPEGExtension || lower == LongJPEGExtension;
    if (isJPEG)
        *isJPEG = jpeg;
    if (!jpeg)
        extension = PNGExtension;
    if (base.isEmpty())
        base = localized(XQHTMLDefaultImageName);
    return shortened(base, extension);
}

std::optional<QString> HTMLImageFolder::store(const QString& fileName, const QByteArray& bytes, bool* written)
{
    if (written)
        *written = false;
    const size_t bytesHash = qHash(bytes);
    QHash<size_t, QString>& stored = m_storedByHash[fileName];
    const auto earlier = stored.constFind(bytesHash);
    if (earlier != stored.constEnd() && sameBytes(*earlier, bytes, bytesHash))
        return *earlier;

    const auto [base, extension] = splitExtension(fileName);
    QString candidate = fileName;
    int number = 0;
    for (int attempts = 0; attempts < MaxNumberedNames; ++attempts) {
        switch (entryFor(candidate, bytes, bytesHash)) {
        case Entry::Same:
            stored.insert(bytesHash, candidate);
            return candidate;
        case Entry::Free: {
            const std::optional<QString> path = pathInsideFolder(m_folder, candidate);
            if (!path || !(m_staged ? writeNewFileInStagedFolder(*path, bytes) : writeFileAtomically(*path, bytes)))
                return std::nullopt;
            m_known.insert(candidate, Known{bytes.size(), bytesHash});
            stored.insert(bytesHash, candidate);
            if (number > 0)
                m_nextNumber.insert(fileName, number + 1);
            if (written)
                *written = true;
            return candidate;
        }
        case Entry::Other:
            if (const Known known = m_known.value(candidate); known.size >= 0)
                stored.insert(known.hash, candidate); // a later image with these bytes finds them here
            number = number == 0 ? m_nextNumber.value(fileName, 1) : number + 1;
            candidate = base + QString::number(number) + u'.' + extension;
            break;
        }
    }
    return std::nullopt;
}

HTMLImageFolder::Entry HTMLImageFolder::entryFor(const QString& name, const QByteArray& bytes, size_t bytesHash)
{
    if (!m_known.contains(name)) {
        const std::optional<QString> path = pathInsideFolder(m_folder, name);
        if (!path)
            return Entry::Other; // a name that leads out through a link is never used
        const QFileInfo info(*path);
        if (!info.exists() && !info.isSymLink())
            return Entry::Free;
        Known known;
        QFile file(*path);
        if (!info.isSymLink() && info.isFile() && file.open(QIODevice::ReadOnly)) {
            const QByteArray existing = file.readAll();
            known = Known{existing.size(), qHash(existing)};
        }
        m_known.insert(name, known);
    }
    return sameBytes(name, bytes, bytesHash) ? Entry::Same : Entry::Other;
}

bool HTMLImageFolder::sameBytes(const QString& name, const QByteArray& bytes, size_t bytesHash)
{
    const Known known = m_known.value(name);
    if (known.size != bytes.size() || known.hash != bytesHash)
        return false;
    // Equal hashes are confirmed byte for byte.
    const std::optional<QString> path = pathInsideFolder(m_folder, name);
    QFile file(path.value_or(QString()));
    return path && !QFileInfo(*path).isSymLink() && file.open(QIODevice::ReadOnly) && file.readAll() == bytes;
}

} // namespace qly

#pragma once
// The image files of an HTML page: their names, made from the attachments' own names, and the
// images folder they are written into.
#include <QByteArray>
#include <QHash>
#include <QString>
#include <optional>

namespace qly {

/// Names image files in the order the images come. A name from a document is reduced to a plain file
/// name first: folders in front of it, control characters and leading dots go, so that "../../x.png"
/// or "/etc/x.png" names "x.png" inside the images folder. Then: no name gives "img"; a name with
/// XQMathTypeImageNamePrefix becomes "MathTypeEquation", a number slot, "." and its extension (the
/// slot reads "(null)" until one equation image has been numbered, then 1, 2, …); other names lose
/// their white space when asked to. A "jpg"/"jpeg" name (any case) keeps its extension and is
/// written as JPEG; any other gets the extension "png".
class HTMLImageNaming {
public:
    explicit HTMLImageNaming(bool stripWhitespace) : m_stripWhitespace(stripWhitespace) { }
    /// The file name for the next image; *isJPEG tells which encoding the name asks for.
    QString fileNameForImage(const QString& attachmentFileName, bool* isJPEG);

private:
    bool m_stripWhitespace;
    int m_equationImages = 0;
};

/// The folder the images of one page go into. A name already holding the same bytes is used again;
/// a name holding other bytes gives way to the first free numbered one ("photo1.png", "photo2.png" …,
/// where one holding the same bytes is used again too). Files are written atomically; names are
/// resolved only inside the folder, and an existing symbolic link is never written through or read.
class HTMLImageFolder {
public:
    /// With staged, the folder is a private one that is moved into place whole: files are created
    /// without a flush each (see writeNewFileInStagedFolder).
    explicit HTMLImageFolder(const QString& folder, bool staged = false) : m_folder(folder), m_staged(staged) { }
    /// The file name the bytes are stored under, and in *written whether this call wrote the file;
    /// nothing when they cannot be written.
    std::optional<QString> store(const QString& fileName, const QByteArray& bytes, bool* written);

private:
    enum class Entry { Free, Same, Other };
    Entry entryFor(const QString& name, const QByteArray& bytes, size_t bytesHash);
    bool sameBytes(const QString& name, const QByteArray& bytes, size_t bytesHash);

    QString m_folder;
    bool m_staged;
    struct Known {
        qint64 size = -1; ///< -1: not a regular file (or not readable)
        size_t hash = 0;
    };
    QHash<QString, Known> m_known; // what names in the folder hold, as far as looked at
    QHash<QString, int> m_nextNumber; // per asked name: the first number not known to be taken
    QHash<QString, QHash<size_t, QString>> m_storedByHash; // per asked name: where bytes went
};

} // namespace qly

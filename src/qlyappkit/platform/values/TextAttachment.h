#pragma once
// TextAttachment: a picture or file embedded in text at an attachment character (U+FFFC).
// Attachments compare by identity (the shared pointer), as the platform's objects do.
#include <QByteArray>
#include <QImage>
#include <QMetaType>
#include <QSizeF>
#include <QString>
#include <memory>

namespace qly {

class TextAttachment {
public:
    TextAttachment() = default;
    /// An attachment holding a file's bytes under a preferred file name.
    TextAttachment(const QString& fileName, const QByteArray& contents);
    static TextAttachment fromImage(const QImage& image, const QString& fileName = QStringLiteral("image.png"));
    /// An attachment that refers to a file on disk instead of holding it.
    static TextAttachment linkedToFile(const QString& path);

    bool isNull() const { return !d; }
    QString fileName() const;
    QByteArray contents() const;
    /// Path of the file the attachment links to (empty when it holds its bytes).
    QString linkedFilePath() const;
    bool isLinkedFile() const;
    /// The picture, decoded on first use; null when the contents are not an image.
    QImage image() const;
    /// Display size in points: as set, else the image's pixel size read at 72 dpi (one pixel per
    /// point), else empty.
    QSizeF bounds() const;
    /// Sets the display size on the attachment object (every copy sees it: copies are the same object).
    void setBounds(const QSizeF& size);
    /// True when setBounds() gave the size (archiving keeps only a size that was set).
    bool hasExplicitBounds() const;
    /// The object's identity, for comparing and archiving shared references.
    const void* identity() const { return d.get(); }

    friend bool operator==(const TextAttachment& a, const TextAttachment& b) { return a.d == b.d; }

private:
    struct Data;
    std::shared_ptr<Data> d;
};

} // namespace qly

Q_DECLARE_METATYPE(qly::TextAttachment)

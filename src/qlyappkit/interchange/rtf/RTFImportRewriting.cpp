#include "RTFImportRewriting_p.h"

#include <QBuffer>
#include <QImageReader>

#include "ExtendedRTFExport_p.h"
#include "RTFImportPictures_p.h"
#include "RTFImportTags.h"
#include "RTFTextToolkit.h"

namespace qly::rtfimport {

namespace {

using extendedrtf::Edit;

constexpr int LongestControlWord = 32;
constexpr int LongestParameter = 10;

enum class GroupKind {
    Plain,
    Footnote,
    Annotation,
    RangeStart,
    RangeEnd,
    AnnotationRef,
    AlternativePicture,
    ShapePicture,
    Object,
    Shape,
    Picture,
    PictureFileName,
};

struct Group {
    qsizetype open = 0; ///< index of its "{"
    GroupKind kind = GroupKind::Plain;
    qsizetype openingEnd = 0; ///< notes: the end of the control word that made the group a note
    qsizetype contentStart = 0; ///< groups whose text is read: where the text begins
    bool endnote = false;
    QString annotationRef;
    QList<int> pictures; ///< numbers of the pictures this group is replaced by
};

// The picture whose "\pict" group is open.
struct OpenPicture {
    qsizetype dataStart = 0;
    int goalWidth = 0, goalHeight = 0, scaleX = 0, scaleY = 0;
    bool isJPEG = false;
    bool binary = false;
    QString fileName;
};

bool isAsciiLetter(QChar c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
bool isAsciiDigit(QChar c) { return c >= u'0' && c <= u'9'; }

int hexValue(QChar c)
{
    if (c >= u'0' && c <= u'9')
        return c.unicode() - u'0';
    if (c >= u'a' && c <= u'f')
        return c.unicode() - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c.unicode() - u'A' + 10;
    return -1;
}

class Rewriter {
public:
    Rewriter(const QString& rtf, bool commentsInline) : m_s(rtf), m_commentsInline(commentsInline) { }

    RewrittenRTF run()
    {
        const qsizetype n = m_s.size();
        qsizetype i = 0;
        while (i < n) {
            const QChar c = m_s.at(i);
            if (c == u'\\') {
                if (i + 1 < n && isAsciiLetter(m_s.at(i + 1))) {
                    i = controlWord(i);
                    continue;
                }
                // Control symbols: "\'hh" takes two more characters; others ("\\", "\{", "\*") one.
                i += (i + 1 < n && m_s.at(i + 1) == u'\'') ? 4 : 2;
                continue;
            }
            if (c == u'{') {
                Group group;
                group.open = i;
                m_stack.push_back(std::move(group));
            } else if (c == u'}' && !m_stack.empty())
                closeGroup(i);
            ++i;
        }
        // A document cut short: its open groups are closed at the end, so that a note or picture cut
        // off keeps what it has.
        m_out.unclosedGroups = int(m_stack.size());
        while (!m_stack.empty()) {
            m_edits.push_back({n, 0, QStringLiteral("}")});
            closeGroup(n - 1);
        }
        m_out.rtf = extendedrtf::applyEdits(m_s, m_edits);
        return std::move(m_out);
    }

private:
    // Reads the control word at i and returns the index after it (and after its delimiter).
    qsizetype controlWord(qsizetype i)
    {
        const qsizetype n = m_s.size();
        qsizetype j = i + 1;
        while (j < n && isAsciiLetter(m_s.at(j)) && j - i <= LongestControlWord)
            ++j;
        const QStringView name = QStringView(m_s).mid(i + 1, j - i - 1);
        bool hasParameter = false;
        qint64 parameter = 0;
        bool negative = false;
        if (j < n && m_s.at(j) == u'-' && j + 1 < n && isAsciiDigit(m_s.at(j + 1))) {
            negative = true;
            ++j;
        }
        for (int digits = 0; j < n && isAsciiDigit(m_s.at(j)) && digits < LongestParameter; ++j, ++digits) {
            parameter = parameter * 10 + (m_s.at(j).unicode() - u'0');
            hasParameter = true;
        }
        if (negative)
            parameter = -parameter;
        const qsizetype wordEnd = j;
        if (j < n && m_s.at(j) == u' ')
            ++j;
        if (name == u"bin" && hasParameter && parameter > 0) {
            // Binary data is not RTF text: step over it. A picture given so is left to the platform reader.
            if (m_picture && m_pictureDepth == m_stack.size())
                m_picture->binary = true;
            j = std::min<qsizetype>(n, j + parameter);
        }
        handleWord(name, hasParameter, int(std::clamp<qint64>(parameter, INT_MIN, INT_MAX)), i, wordEnd, j);
        return j;
    }

    Group* top() { return m_stack.empty() ? nullptr : &m_stack.back(); }

    void handleWord(QStringView name, bool hasParameter, int parameter, qsizetype start, qsizetype wordEnd,
                    qsizetype next)
    {
        if (name == u"u" && hasParameter && parameter == -3913) {
            m_edits.push_back({start, wordEnd - start, XQRTFSymbolBulletReplacement});
            return;
        }
        if (name == u"itap") {
            if (m_openNotes > 0)
                m_edits.push_back({start, next - start, QString()});
            return;
        }
        Group* group = top();
        if (!group)
            return;
        if (m_picture && m_pictureDepth == m_stack.size()) {
            pictureWord(name, parameter, next);
            return;
        }
        if (group->kind != GroupKind::Plain) {
            if (name == u"ftnalt" && group->kind == GroupKind::Footnote)
                group->endnote = true;
            return;
        }
        // The document's own group is never a note or a picture, whatever control words stray into it.
        if (m_alternativeDepth > 0 || m_stack.size() == 1)
            return;
        if (name == u"footnote" || name == u"annotation") {
            group->kind = name == u"footnote" ? GroupKind::Footnote : GroupKind::Annotation;
            group->openingEnd = wordEnd;
            ++m_openNotes;
        } else if ((name == u"atrfstart" || name == u"atrfend") && !m_commentsInline) {
            group->kind = name == u"atrfstart" ? GroupKind::RangeStart : GroupKind::RangeEnd;
            group->contentStart = next;
        } else if (name == u"atnref") {
            group->kind = GroupKind::AnnotationRef;
            group->contentStart = next;
        } else if (name == u"nonshppict") {
            group->kind = GroupKind::AlternativePicture;
            ++m_alternativeDepth;
        } else if (name == u"shppict") {
            group->kind = GroupKind::ShapePicture;
        } else if (name == u"object") {
            group->kind = GroupKind::Object;
        } else if (name == u"shp") {
            group->kind = GroupKind::Shape;
        } else if (name == u"pict" && !m_picture) {
            group->kind = GroupKind::Picture;
            m_picture = OpenPicture();
            m_picture->dataStart = next;
            m_pictureDepth = m_stack.size();
        } else if (name == u"nisusfilename" && m_picture) {
            group->kind = GroupKind::PictureFileName;
            group->contentStart = next;
        }
    }

    void pictureWord(QStringView name, int parameter, qsizetype next)
    {
        OpenPicture& p = *m_picture;
        if (name == u"picwgoal")
            p.goalWidth = parameter;
        else if (name == u"pichgoal")
            p.goalHeight = parameter;
        else if (name == u"picscalex")
            p.scaleX = parameter;
        else if (name == u"picscaley")
            p.scaleY = parameter;
        else if (name.compare(u"jpegblip", Qt::CaseInsensitive) == 0)
            p.isJPEG = true;
        // The picture's data is the text after its last control word.
        p.dataStart = next;
    }

    QString contentOf(const Group& g, qsizetype close) const
    {
        return m_s.mid(g.contentStart, close - g.contentStart).trimmed();
    }

    Group* nearestEnclosing(GroupKind kind)
    {
        for (auto it = m_stack.rbegin() + 1; it < m_stack.rend(); ++it) {
            if (it->kind == kind)
                return &*it;
        }
        return nullptr;
    }

    QString placeholders(const QList<int>& numbers) const
    {
        QString text;
        for (int number : numbers)
            text += XQRTFImportPicturePlaceholderFormat.arg(number);
        return text;
    }

    void closeGroup(qsizetype close)
    {
        Group& g = m_stack.back();
        switch (g.kind) {
        case GroupKind::Footnote:
        case GroupKind::Annotation: {
            const bool footnote = g.kind == GroupKind::Footnote;
            m_edits.push_back({g.open, g.openingEnd - g.open,
                               footnote ? XQRTFImportFootnoteStartTag : XQRTFImportAnnotationStartTag});
            m_edits.push_back({close + 1, 0, footnote ? XQRTFImportFootnoteEndTag : XQRTFImportAnnotationEndTag});
            --m_openNotes;
            if (!footnote)
                m_out.annotationRefs.append(g.annotationRef);
            else if (g.endnote)
                ++m_out.endnotes;
            else
                ++m_out.footnotes;
            break;
        }
        case GroupKind::RangeStart:
        case GroupKind::RangeEnd: {
            const bool start = g.kind == GroupKind::RangeStart;
            m_edits.push_back(
                {g.open, close + 1 - g.open, start ? XQRTFImportCommentStartTag : XQRTFImportCommentEndTag});
            (start ? m_out.rangeStartIds : m_out.rangeEndIds).append(contentOf(g, close));
            break;
        }
        case GroupKind::AnnotationRef:
            if (Group* annotation = nearestEnclosing(GroupKind::Annotation))
                annotation->annotationRef = contentOf(g, close);
            break;
        case GroupKind::AlternativePicture:
            m_edits.push_back({g.open, close + 1 - g.open, QString()});
            --m_alternativeDepth;
            break;
        case GroupKind::PictureFileName:
            if (m_picture)
                m_picture->fileName = contentOf(g, close);
            break;
        case GroupKind::Picture:
            closePicture(g, close);
            break;
        case GroupKind::ShapePicture:
        case GroupKind::Object:
        case GroupKind::Shape:
            if (!g.pictures.isEmpty())
                m_edits.push_back({g.open, close + 1 - g.open, placeholders(g.pictures)});
            break;
        case GroupKind::Plain:
            break;
        }
        m_stack.pop_back();
        // A group closing inside the picture's group comes before its data.
        if (m_picture && m_pictureDepth == m_stack.size())
            m_picture->dataStart = close + 1;
    }

    void closePicture(Group& g, qsizetype close)
    {
        const OpenPicture p = *m_picture;
        m_picture.reset();
        if (p.binary)
            return;
        std::optional<QByteArray> data = bytesFromHexadecimal(QStringView(m_s).mid(p.dataStart, close - p.dataStart));
        if (!data || data->isEmpty())
            return;
        QBuffer buffer(&*data);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer);
        const QSize pixels = reader.size();
        if (!reader.canRead() || !pixels.isValid() || pixels.isEmpty())
            return;
        const int number = int(m_out.pictures.size()) + 1;
        ImportedPicture picture;
        picture.isJPEG = p.isJPEG;
        // The image's own size is its print size when the file states its resolution; otherwise it is
        // measured as attachments are, a pixel a point.
        picture.pixels = pixels;
        picture.pixelsPerPoint = statedPixelsPerPoint(*data).value_or(1.0);
        picture.size = pictureDisplaySize(QSizeF(pixels) / picture.pixelsPerPoint, p.goalWidth, p.goalHeight,
                                          p.scaleX, p.scaleY);
        QString name = p.fileName;
        if (name.contains(u'\\'))
            name = stringFromRTFFragment(name).trimmed();
        if (name.isEmpty())
            name = XQRTFImportPictureNameFormat.arg(number);
        picture.fileName = name + (p.isJPEG ? QStringLiteral(".jpg") : QStringLiteral(".png"));
        picture.data = std::move(*data);
        m_out.pictures.push_back(std::move(picture));

        // The picture stands for the picture-shape group around it, or the object group; a picture
        // anchored to its paragraph is a drawing shape ("\shp"), whose groups the platform reader skips.
        Group* widened = nearestEnclosing(GroupKind::ShapePicture);
        if (!widened)
            widened = nearestEnclosing(GroupKind::Object);
        if (!widened)
            widened = nearestEnclosing(GroupKind::Shape);
        if (widened)
            widened->pictures.append(number);
        else
            m_edits.push_back({g.open, close + 1 - g.open, XQRTFImportPicturePlaceholderFormat.arg(number)});
    }

    const QString& m_s;
    const bool m_commentsInline;
    std::vector<Group> m_stack;
    std::vector<Edit> m_edits;
    std::optional<OpenPicture> m_picture;
    size_t m_pictureDepth = 0;
    int m_openNotes = 0;
    int m_alternativeDepth = 0;
    RewrittenRTF m_out;
};

} // namespace

RewrittenRTF rewriteWordProcessorRTF(const QString& rtf, bool commentsInline)
{
    return Rewriter(rtf, commentsInline).run();
}

std::optional<QByteArray> bytesFromHexadecimal(QStringView hex)
{
    QByteArray bytes;
    bytes.reserve(hex.size() / 2);
    int high = -1;
    for (QChar c : hex) {
        if (c == u' ' || c == u'\n' || c == u'\r' || c == u'\t')
            continue;
        const int v = hexValue(c);
        if (v < 0)
            return std::nullopt;
        if (high < 0) {
            high = v;
        } else {
            bytes.append(char(high * 16 + v));
            high = -1;
        }
    }
    if (high >= 0)
        return std::nullopt;
    return bytes;
}

} // namespace qly::rtfimport

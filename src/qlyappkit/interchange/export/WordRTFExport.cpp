#include <qlyappkit/interchange/export/WordRTFExport.h>

#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/interchange/rtf/RTFBookmarks.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/services/ContainedPaths.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/notes/NoteConversions.h>

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <vector>

namespace qly {

namespace {

const QChar PageBreak(0x000C);

void warn(QStringList* warnings, const QString& message)
{
    if (warnings)
        warnings->append(message);
}

QString decodedName(const QString& link, const QString& scheme)
{
    return QUrl::fromPercentEncoding(link.mid(scheme.size()).toUtf8());
}

// The picture a link names, or nothing (with a warning) when it may not or cannot be read.
std::optional<TextAttachment> pictureForLink(const QString& link, const QString& folder, QStringList* warnings)
{
    QString problem;
    const std::optional<QString> path = folder.isEmpty()
        ? std::nullopt
        : pathInsideFolder(folder, decodedName(link, XQExportPictureLinkScheme), &problem);
    if (!path) {
        if (problem.isEmpty())
            problem = localized("There is no folder to read pictures from.");
        warn(warnings, localized("picture link \u201C%1\u201D refused: %2").arg(link, problem));
        return std::nullopt;
    }
    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly)) {
        warn(warnings, localized("picture link \u201C%1\u201D left out: %2").arg(link, file.errorString()));
        return std::nullopt;
    }
    return TextAttachment(QFileInfo(*path).fileName(), file.readAll());
}

// The visible text of a range: note texts written inline (footnotes, comments, annotations) and
// pictures are not part of a title.
QString visibleText(const AttributedString& text, Range range)
{
    AttributedString part = text.attributedSubstring(range);
    std::vector<Range> notes;
    for (const QString& name : {XQFootnoteAttributeName, XQLinkedCommentAttributeName, XQAnnotationAttributeName}) {
        part.enumerateAttribute(name, Range{0, part.length()}, [&](const QVariant& v, Range r) {
            if (v.isValid())
                notes.push_back(r);
            return true;
        });
    }
    const QString all = part.string();
    std::vector<bool> hidden(size_t(all.size()), false);
    for (const Range& r : notes)
        std::fill(hidden.begin() + r.location, hidden.begin() + r.end(), true);
    QString visible;
    visible.reserve(all.size());
    for (qsizetype i = 0; i < all.size(); ++i) {
        if (!hidden[size_t(i)] && all.at(i) != QChar(AttachmentCharacter))
            visible.append(all.at(i));
    }
    return visible.trimmed();
}

} // namespace

AttributedString attributedStringByResolvingExportLinks(const AttributedString& source, const QString& resourceFolder,
                                                        QStringList* warnings)
{
    struct Found {
        Range range;
        QString target;
    };
    std::vector<Found> found;
    source.enumerateAttribute(LinkAttributeName, Range{0, source.length()}, [&](const QVariant& v, Range r) {
        if (const std::optional<QString> link = linkString(v)) {
            if (link->startsWith(XQExportBookmarkLinkScheme) || link->startsWith(XQExportPageRefLinkScheme)
                || link->startsWith(XQExportPictureLinkScheme))
                found.push_back({r, *link});
        }
        return true;
    });
    AttributedString text = source;
    // Back to front, so that replacing a picture's run keeps the earlier ranges valid.
    for (auto it = found.rbegin(); it != found.rend(); ++it) {
        text.removeAttribute(LinkAttributeName, it->range);
        if (it->target.startsWith(XQExportBookmarkLinkScheme)) {
            text.addAttribute(XQRTFBookmarkAttributeName,
                              RTFBookmarkNameForString(decodedName(it->target, XQExportBookmarkLinkScheme)), it->range);
        } else if (it->target.startsWith(XQExportPageRefLinkScheme)) {
            text.addAttribute(XQRTFPageRefFieldAttributeName,
                              RTFBookmarkNameForString(decodedName(it->target, XQExportPageRefLinkScheme)), it->range);
        } else if (const std::optional<TextAttachment> picture = pictureForLink(it->target, resourceFolder, warnings)) {
            Attributes attributes = text.attributes(it->range.location);
            attributes.remove(LinkAttributeName);
            attributes.insert(AttachmentAttributeName, QVariant::fromValue(*picture));
            text.replaceCharacters(it->range, AttributedString(QString(QChar(AttachmentCharacter)), attributes));
        } else {
            text.deleteCharacters(it->range);
        }
    }
    return text;
}

AttributedString attributedStringByMarkingSectionsAtPageBreaks(const AttributedString& source)
{
    AttributedString text = source;
    std::vector<qsizetype> breaks;
    const QString all = text.string(); // once, for the scan
    for (qsizetype i = all.indexOf(PageBreak); i >= 0; i = all.indexOf(PageBreak, i + 1))
        breaks.push_back(i);
    breaks.push_back(all.size());
    qsizetype start = 0;
    for (qsizetype end : breaks) {
        if (end > start) {
            // A page break does not end a paragraph: the title is the section's own part of it.
            const qsizetype titleEnd = std::min(text.paragraphRange(Range{start, 0}).end(), end);
            const QString title = visibleText(text, Range{start, titleEnd - start});
            text.addAttribute(XQRTFSectionInfoAttributeName,
                              QVariantMap{{XQRTFSectionTitle, title}, {XQRTFSectionIsPartOfFrontMatter, false}},
                              Range{start, end - start});
        }
        start = end + 1;
    }
    return text;
}

bool setRTFOptionFromString(QVariantMap& options, const QString& assignment, QString* problem)
{
    const qsizetype eq = assignment.indexOf(QLatin1Char('='));
    const QString name = eq < 0 ? assignment : assignment.left(eq);
    if (eq < 0 || !allRTFOptionKeys().contains(name)) {
        if (problem)
            *problem = eq < 0 ? localized("an option is set as NAME=VALUE, not \u201C%1\u201D").arg(assignment)
                              : localized("unknown option \u201C%1\u201D").arg(name);
        return false;
    }
    const QString value = assignment.mid(eq + 1);
    const QString lower = value.toLower();
    bool isInt = false;
    const int number = value.toInt(&isInt);
    if (lower == QLatin1String("yes") || lower == QLatin1String("true"))
        options.insert(name, true);
    else if (lower == QLatin1String("no") || lower == QLatin1String("false"))
        options.insert(name, false);
    else if (isInt)
        options.insert(name, number);
    else
        options.insert(name, value);
    return true;
}

QByteArray wordRTFFromStoredText(const AttributedString& storedText, const QVariantMap& storedAttributes,
                                 const WordRTFExportSettings& settings, QStringList* warnings)
{
    AttributedString text = attributedStringByResolvingExportLinks(storedText, settings.resourceFolder, warnings);
    text = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, InlineLinkedComments);
    // Annotations written as footnotes are the third footnote kind, with their own endnote option.
    if (settings.annotationsAsFootnotes)
        text = attributedStringByConvertingInlineAnnotationsToFootnotes(text);
    // Sections are marked last: note text inserted after marking would carry no section and cut a
    // chapter's run in pieces, each of which would become a section.
    text = attributedStringByMarkingSectionsAtPageBreaks(text);

    QVariantMap documentAttributes = storedAttributes;
    for (auto it = settings.documentAttributes.cbegin(); it != settings.documentAttributes.cend(); ++it)
        documentAttributes.insert(it.key(), it.value());
    return extendedRTFFromRange(text, Range{0, text.length()}, documentAttributes, settings.options);
}

} // namespace qly

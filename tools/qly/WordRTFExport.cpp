// qly convert --to word-rtf: a stored text (RTF with note tags, comments in a side file) exported as
// RTF that word processors read with real footnotes, annotations, bookmarks, sections and pictures.
#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/interchange/rtf/RTFBookmarks.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/notes/NoteConversions.h>
#include <qlyappkit/text/notes/NoteTags.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSizeF>
#include <QUrl>
#include <vector>

#include "Commands.h"

namespace qly::tool {

// The stored RTF has no way to hold bookmarks, page references or pictures, so they travel as links
// with these schemes; the link itself goes once it has become the attribute the writer reads.
const QString WordRTFBookmarkLinkScheme = QStringLiteral("qlybookmark:");
const QString WordRTFPageRefLinkScheme = QStringLiteral("qlypageref:");
const QString WordRTFPictureLinkScheme = QStringLiteral("qlypicture:");

namespace {

const QString CommentsSideFileSuffix = QStringLiteral(".comments.xml");
const QChar PageBreak(0x000C);

struct Settings {
    QString input, output, commentsPath;
    QVariantMap options, documentAttributes;
    bool annotationsAsFootnotes = false;
};

bool takeValue(const QStringList& args, int& i, QString& value)
{
    if (i + 1 >= args.size()) {
        printError(QStringLiteral("%1 needs a value").arg(args.at(i)));
        return false;
    }
    value = args.at(++i);
    return true;
}

// A value typed as the option expects it: booleans from yes/no, integers from digits, texts as given.
bool parseOption(const QString& assignment, QVariantMap& options)
{
    const qsizetype eq = assignment.indexOf(QLatin1Char('='));
    const QString name = eq < 0 ? assignment : assignment.left(eq);
    if (eq < 0 || !allRTFOptionKeys().contains(name)) {
        printError(eq < 0 ? QStringLiteral("--option needs NAME=VALUE")
                          : QStringLiteral("unknown option %1").arg(name));
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

bool parseNumbers(const QString& text, QChar separator, int count, std::vector<double>& numbers)
{
    const QStringList parts = text.split(separator);
    if (parts.size() != count)
        return false;
    numbers.clear();
    for (const QString& part : parts) {
        bool ok = false;
        const double n = part.trimmed().toDouble(&ok);
        if (!ok || n < 0)
            return false;
        numbers.push_back(n);
    }
    return true;
}

// 0 to go on, otherwise the exit code.
int parseArguments(const QStringList& args, Settings& s)
{
    for (int i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        QString value;
        if (arg == QLatin1String("-o")) {
            if (!takeValue(args, i, s.output))
                return 2;
        } else if (arg == QLatin1String("--to")) {
            if (!takeValue(args, i, value))
                return 2;
        } else if (arg == QLatin1String("--comments")) {
            if (!takeValue(args, i, s.commentsPath))
                return 2;
        } else if (arg == QLatin1String("--option")) {
            if (!takeValue(args, i, value) || !parseOption(value, s.options))
                return 2;
        } else if (arg == QLatin1String("--annotations-as-footnotes")) {
            s.annotationsAsFootnotes = true;
        } else if (arg == QLatin1String("--author")) {
            if (!takeValue(args, i, value))
                return 2;
            s.documentAttributes.insert(AuthorDocumentAttribute, value);
        } else if (arg == QLatin1String("--paper")) {
            std::vector<double> n;
            if (!takeValue(args, i, value))
                return 2;
            if (!parseNumbers(value.toLower(), QLatin1Char('x'), 2, n) || n[0] <= 0 || n[1] <= 0) {
                printError(QStringLiteral("--paper takes WIDTHxHEIGHT in points, not '%1'").arg(value));
                return 2;
            }
            s.documentAttributes.insert(PaperSizeDocumentAttribute, QSizeF(n[0], n[1]));
        } else if (arg == QLatin1String("--margins")) {
            std::vector<double> n;
            if (!takeValue(args, i, value))
                return 2;
            if (!parseNumbers(value, QLatin1Char(','), 4, n)) {
                printError(QStringLiteral("--margins takes LEFT,RIGHT,TOP,BOTTOM in points, not '%1'").arg(value));
                return 2;
            }
            s.documentAttributes.insert(LeftMarginDocumentAttribute, n[0]);
            s.documentAttributes.insert(RightMarginDocumentAttribute, n[1]);
            s.documentAttributes.insert(TopMarginDocumentAttribute, n[2]);
            s.documentAttributes.insert(BottomMarginDocumentAttribute, n[3]);
        } else if (s.input.isEmpty()) {
            s.input = arg;
        } else {
            printError(QStringLiteral("convert takes one input file"));
            return 2;
        }
    }
    if (s.input.isEmpty() || s.output.isEmpty()) {
        printError(QStringLiteral(
            "usage: qly convert IN.rtf -o OUT.rtf --to word-rtf [--comments FILE.xml] "
            "[--option NAME=VALUE]... [--paper WxH] [--margins L,R,T,B] [--author NAME] [--annotations-as-footnotes]"));
        return 2;
    }
    return 0;
}

// Links of the three schemes become bookmarks, page references and pictures (read from files
// relative to the input's folder; a picture that cannot be read is left out with a warning).
AttributedString resolveLinks(AttributedString text, const QDir& base)
{
    struct Found {
        Range range;
        QString target;
    };
    std::vector<Found> found;
    text.enumerateAttribute(LinkAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range r) {
        if (const std::optional<QString> link = linkString(v)) {
            const QString& target = *link;
            if (target.startsWith(WordRTFBookmarkLinkScheme) || target.startsWith(WordRTFPageRefLinkScheme)
                || target.startsWith(WordRTFPictureLinkScheme))
                found.push_back({r, target});
        }
        return true;
    });
    // Back to front, so that replacing a picture's run keeps the earlier ranges valid.
    for (auto it = found.rbegin(); it != found.rend(); ++it) {
        text.removeAttribute(LinkAttributeName, it->range);
        if (it->target.startsWith(WordRTFBookmarkLinkScheme)) {
            const QString name = QUrl::fromPercentEncoding(it->target.mid(WordRTFBookmarkLinkScheme.size()).toUtf8());
            text.addAttribute(XQRTFBookmarkAttributeName, RTFBookmarkNameForString(name), it->range);
        } else if (it->target.startsWith(WordRTFPageRefLinkScheme)) {
            const QString name = QUrl::fromPercentEncoding(it->target.mid(WordRTFPageRefLinkScheme.size()).toUtf8());
            text.addAttribute(XQRTFPageRefFieldAttributeName, RTFBookmarkNameForString(name), it->range);
        } else {
            const QString path =
                base.filePath(QUrl::fromPercentEncoding(it->target.mid(WordRTFPictureLinkScheme.size()).toUtf8()));
            QFile file(path);
            Attributes attributes = text.attributes(it->range.location);
            if (!file.open(QIODevice::ReadOnly)) {
                printError(QStringLiteral("warning: picture %1 left out: %2").arg(path, file.errorString()));
                text.deleteCharacters(it->range);
                continue;
            }
            attributes.remove(LinkAttributeName);
            attributes.insert(AttachmentAttributeName,
                              QVariant::fromValue(TextAttachment(QFileInfo(path).fileName(), file.readAll())));
            text.replaceCharacters(it->range, AttributedString(QString(QChar(AttachmentCharacter)), attributes));
        }
    }
    return text;
}

// Sections start at the top and after each page break and run up to the next one; each is titled by
// its first paragraph. The attribute covers the whole section, whose length and layout decide
// whether it is a single page.
void markSections(AttributedString& text)
{
    std::vector<qsizetype> breaks;
    const QString all = text.string(); // once, for the scan
    for (qsizetype i = all.indexOf(PageBreak); i >= 0; i = all.indexOf(PageBreak, i + 1))
        breaks.push_back(i);
    breaks.push_back(all.size());
    qsizetype start = 0;
    for (qsizetype end : breaks) {
        if (end > start) {
            const Range paragraph = text.paragraphRange(Range{start, 0});
            QString title = text.substring(paragraph).trimmed();
            title.remove(QChar(AttachmentCharacter));
            text.addAttribute(XQRTFSectionInfoAttributeName,
                              QVariantMap{{XQRTFSectionTitle, title}, {XQRTFSectionIsPartOfFrontMatter, false}},
                              Range{start, end - start});
        }
        start = end + 1;
    }
}

bool writeAtomically(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        printError(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
        return false;
    }
    return true;
}

} // namespace

int runWordRTFExport(const QStringList& args)
{
    Settings s;
    if (const int code = parseArguments(args, s))
        return code;

    QFile file(s.input);
    if (!file.open(QIODevice::ReadOnly)) {
        printError(QStringLiteral("cannot read %1: %2").arg(s.input, file.errorString()));
        return 1;
    }
    QVariantMap storedAttributes;
    RTFParseResult result;
    std::optional<AttributedString> read = attributedStringFromRTF(file.readAll(), &storedAttributes, &result);
    if (!read) {
        printError(QStringLiteral("%1: %2").arg(s.input, result.description()));
        return 1;
    }
    if (!result)
        printError(QStringLiteral("%1: warning: %2").arg(s.input, result.description()));

    QString commentsPath = s.commentsPath;
    if (commentsPath.isEmpty() && s.input.endsWith(QLatin1String(".rtf"), Qt::CaseInsensitive)) {
        const QString beside = s.input.left(s.input.size() - 4) + CommentsSideFileSuffix;
        if (QFileInfo::exists(beside))
            commentsPath = beside;
    }
    if (!s.commentsPath.isEmpty() && !commentsFromURL(s.commentsPath)) {
        printError(QStringLiteral("%1: not a comments file").arg(s.commentsPath));
        return 1;
    }

    MutableAttributedString stored(attributedStringByConvertingTagsToAttributes(*read));
    if (!commentsPath.isEmpty())
        loadCommentsFromURL(stored, commentsPath);
    AttributedString text = resolveLinks(stored.attributedString(), QFileInfo(s.input).absoluteDir());
    markSections(text);
    text = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, InlineLinkedComments);
    // Annotations written as footnotes are the third footnote kind, with their own endnote option.
    if (s.annotationsAsFootnotes)
        text = attributedStringByConvertingInlineAnnotationsToFootnotes(text);

    // Settings from the command line win over those the stored RTF had.
    QVariantMap documentAttributes = storedAttributes;
    for (auto it = s.documentAttributes.cbegin(); it != s.documentAttributes.cend(); ++it)
        documentAttributes.insert(it.key(), it.value());

    const QByteArray rtf = extendedRTFFromRange(text, Range{0, text.length()}, documentAttributes, s.options);
    return writeAtomically(s.output, rtf) ? 0 : 1;
}

} // namespace qly::tool

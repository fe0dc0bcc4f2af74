#pragma once
// Random inputs for the extended RTF writer, and what its output must be. The inputs are tiny texts
// whose runs carry any mix of the attributes the writer turns into RTF (notes of every kind, comments,
// keep-with-next, bookmarks, page references, sections, pictures, links, lists, tables, separators,
// non-ASCII and RTF-special characters), with random options and document attributes. The choices come
// from a caller's source, so that the randomised test draws them from a seeded generator and the fuzz
// target (fuzz/fuzz_extended_writer.cpp) from its input bytes.
#include <QBuffer>
#include <QImage>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <memory>
#include <vector>

#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/notes/NoteConversions.h>

namespace writerinput {

struct WriterInput {
    qly::AttributedString text;
    qly::Range range; ///< what to export
    QVariantMap documentAttributes;
    QVariantMap options;
    QString description; ///< readable, for failure messages
};

inline QByteArray encodedImage(const char* format)
{
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

/// Builds one input; pick(n) returns a choice in [0, n).
template <typename Pick> WriterInput makeWriterInput(Pick&& pick)
{
    using namespace qly;
    auto chance = [&](int inTen) { return pick(10) < inTen; };
    auto oneOf = [&](const QStringList& list) { return list.at(pick(int(list.size()))); };

    static const QStringList pieces{QStringLiteral("a"),
                                    QStringLiteral("word "),
                                    QStringLiteral(" "),
                                    QStringLiteral("\n"),
                                    QStringLiteral("\n\n"),
                                    QStringLiteral("\r"),
                                    QStringLiteral("x\ny"),
                                    QStringLiteral("\u2028"),
                                    QStringLiteral("\u2029"),
                                    QStringLiteral("\t"),
                                    QStringLiteral("\f"),
                                    QStringLiteral("\u00e9t\u00e9"),
                                    QStringLiteral("\u6771\u4eac"),
                                    QStringLiteral("\U0001F680"),
                                    QStringLiteral("{"),
                                    QStringLiteral("}"),
                                    QStringLiteral("\\"),
                                    QStringLiteral("<$p>"),
                                    QString(QChar(AttachmentCharacter)),
                                    XQRTFColumnsMarker};
    static const QStringList names{QStringLiteral("Mark"), QStringLiteral("Caf\u00e9_1"), QStringLiteral("a}b"),
                                   QStringLiteral("x y"), QStringLiteral("\\h")};
    static const QStringList links{QStringLiteral("https://example.com/a?b=1&c"), QStringLiteral("rtfbkmklink://Mark"),
                                   QStringLiteral("mailto:a@example.org")};
    static const QStringList noteTexts{QStringLiteral("note"), QStringLiteral("two\nparagraphs"), QStringLiteral("\n"),
                                       QStringLiteral("\u00fcber {x}"), QString()};
    static const QStringList headerTexts{QStringLiteral("<$p>"),
                                         QStringLiteral("<$sectiontitle>\t<$p>"),
                                         QStringLiteral("**b** _u_ *i*"),
                                         QStringLiteral("{{\\b raw}}"),
                                         QStringLiteral("<$P-R> of <$pagecount>"),
                                         QStringLiteral("\u00dcber\t<$SECTIONTITLE>\t<$p-r>"),
                                         QStringLiteral("a}b{c\\"),
                                         QString()};

    WriterInput input;
    QStringList described;
    std::shared_ptr<XQComment> comment;
    const int segments = 1 + pick(6);
    for (int s = 0; s < segments; ++s) {
        const QString piece = pieces.at(pick(int(pieces.size())));
        Attributes a{{FontAttributeName,
                      QVariant::fromValue(chance(5) ? Font(QStringLiteral("Times"), 12)
                                                    : Font::fromFamily(QStringLiteral("Helvetica"), 9.5, pick(4)))}};
        QStringList what;
        if (chance(3)) {
            static const QVariantList kinds{true, 1, 2, 3, QStringLiteral("2"), 7};
            a.insert(XQFootnoteAttributeName, kinds.at(pick(int(kinds.size()))));
            what << QStringLiteral("footnote");
        }
        if (chance(2)) {
            a.insert(XQAnnotationAttributeName, QVariant::fromValue(Color(1, 0, 0)));
            what << QStringLiteral("annotation");
        }
        if (chance(3)) {
            if (!comment || chance(5))
                comment = XQComment::create(AttributedString(oneOf(noteTexts)), chance(3));
            a.insert(XQCommentAttributeName, variantFromComment(comment));
            what << QStringLiteral("comment");
        }
        if (chance(3)) {
            a.insert(XQKeepWithNextAttributeName, chance(8) ? QVariant(true) : QVariant(QStringLiteral("YES")));
            what << QStringLiteral("keep");
        }
        if (chance(2)) {
            a.insert(XQRTFBookmarkAttributeName, oneOf(names));
            what << QStringLiteral("bookmark");
        }
        if (chance(2)) {
            a.insert(XQRTFPageRefFieldAttributeName, oneOf(names));
            what << QStringLiteral("pageref");
        }
        if (chance(2)) {
            QVariantMap info{{XQRTFSectionIsPartOfFrontMatter, chance(5)}};
            if (chance(8))
                info.insert(XQRTFSectionTitle, oneOf(names));
            a.insert(XQRTFSectionInfoAttributeName, info);
            what << QStringLiteral("section");
        }
        if (chance(2)) {
            a.insert(LinkAttributeName, oneOf(links));
            what << QStringLiteral("link");
        }
        if (chance(2)) {
            ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
            switch (pick(4)) {
            case 0:
                style.setTextLists({TextList{QStringLiteral("{disc}")}});
                break;
            case 1:
                style.setTextLists({TextList{QStringLiteral("{decimal}.")}, TextList{QStringLiteral("{lower-roman}")}});
                break;
            case 2:
                style.setTextBlocks({TextBlock{std::make_shared<TextTable>(TextTable{2})}});
                break;
            default:
                style.setFirstLineHeadIndent(18);
                style.setAlignment(TextAlignment(pick(5)));
                break;
            }
            a.insert(ParagraphStyleAttributeName, QVariant::fromValue(style));
            what << QStringLiteral("style");
        }
        if (chance(1)) {
            a.insert(BackgroundColorAttributeName, QVariant::fromValue(Color(1, 1, 0)));
            a.insert(UnderlineStyleAttributeName, 1);
        }
        if (piece == QString(QChar(AttachmentCharacter)) && chance(8)) {
            const int kind = pick(3);
            const TextAttachment picture = kind == 0 ? TextAttachment(QStringLiteral("p.png"), encodedImage("PNG"))
                : kind == 1                          ? TextAttachment(QStringLiteral("photo.jpg"), encodedImage("JPEG"))
                            : TextAttachment(QStringLiteral("broken.png"), QByteArray("not an image"));
            a.insert(AttachmentAttributeName, QVariant::fromValue(picture));
            what << QStringLiteral("picture");
        }
        input.text.append(piece, a);
        described << QStringLiteral("\"%1\"%2")
                         .arg(piece.toHtmlEscaped(),
                              what.isEmpty() ? QString()
                                             : QLatin1Char('[') + what.join(QLatin1Char(',')) + QLatin1Char(']'));
    }
    if (chance(6))
        input.text = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(
            input.text, InlineLinkedComments);
    const qsizetype length = input.text.length();
    input.range = Range{0, length};
    // A part of the text, unless that could cut the caller's columns marker into plain text.
    if (chance(1) && length > 1 && !input.text.string().contains(XQRTFColumnsMarker)) {
        const qsizetype from = pick(int(length));
        input.range = Range{from, pick(int(length - from) + 1)};
    }

    // Options: each present or not, with a value from its kind's pool.
    static const QStringList stringKeys{XQRTFHeaderString,          XQRTFFooterString,
                                        XQRTFFirstPageHeaderString, XQRTFFirstPageFooterString,
                                        XQRTFAlternateHeaderString, XQRTFAlternateFooterString};
    static const QStringList intKeys{XQRTFHeaderAlignment,
                                     XQRTFFooterAlignment,
                                     XQRTFFirstPageHeaderAlignment,
                                     XQRTFFirstPageFooterAlignment,
                                     XQRTFAlternateHeaderAlignment,
                                     XQRTFAlternateFooterAlignment,
                                     XQRTFNumberOfColumns,
                                     XQRTFColumnSpacingInTwips,
                                     XQRTFFootnoteStyle,
                                     XQRTFEndnoteStyle};
    static const QStringList boolKeys{XQRTFUseMSWordOptions,
                                      XQRTFDifferentFirstPages,
                                      XQRTFStartRegularHeaderAndFooterAfterFrontMatter,
                                      XQRTFCountFirstPages,
                                      XQRTFHasFacingPages,
                                      XQRTFNoHeaderOnNewPages,
                                      XQRTFNoHeaderOrFooterOnSinglePages,
                                      XQRTFIndentFootnotesToMatchText,
                                      XQRTFRestartFootnoteNumberingEachPage,
                                      XQRTFFootnotesUsePeriodMarkerStyle,
                                      XQRTFAvoidWidowsAndOrphans,
                                      XQRTFInlineFootnotesAsEndnotes,
                                      XQRTFLinkedFootnotesAsEndnotes,
                                      XQRTFLinkedCommentsFootnotesAsEndnotes,
                                      XQRTFUseCocoaStyleListIndents,
                                      XQRTFEnsureHyperlinksHaveColorAndUnderline};
    for (const QString& key : stringKeys) {
        if (chance(3))
            input.options.insert(key, oneOf(headerTexts));
    }
    for (const QString& key : intKeys) {
        if (chance(3))
            input.options.insert(key, pick(8) - 1);
    }
    for (const QString& key : boolKeys) {
        if (chance(3))
            input.options.insert(key, chance(7));
    }
    if (chance(2))
        input.options.insert(XQRTFHeaderFont, QVariant::fromValue(Font(QStringLiteral("Courier"), 10)));
    if (chance(3))
        input.documentAttributes.insert(
            AuthorDocumentAttribute,
            oneOf({QStringLiteral("Ann"), QStringLiteral("Zo\u00eb {x}"), QStringLiteral("a\\b")}));
    if (chance(3)) {
        input.documentAttributes.insert(PaperSizeDocumentAttribute, QSizeF(300 + pick(400), 400 + pick(500)));
        input.documentAttributes.insert(LeftMarginDocumentAttribute, double(pick(100)));
        input.documentAttributes.insert(RightMarginDocumentAttribute, double(pick(100)));
    }

    QStringList options;
    for (auto it = input.options.cbegin(); it != input.options.cend(); ++it)
        options << QStringLiteral("%1=%2").arg(it.key(), it.value().toString());
    input.description = QStringLiteral("text %1, range %2+%3\noptions %4\ndocument %5")
                            .arg(described.join(QLatin1Char(' ')))
                            .arg(input.range.location)
                            .arg(input.range.length)
                            .arg(options.join(QStringLiteral(", ")),
                                 QStringList(input.documentAttributes.keys()).join(QLatin1Char(',')));
    return input;
}

/// Empty when the writer's output is well formed: one balanced group of 7-bit RTF that the platform
/// reader reads without a problem, with no marker left; otherwise what is wrong with it.
inline QString wellFormednessProblem(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return QStringLiteral("no output");
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (uchar(bytes.at(i)) >= 0x80)
            return QStringLiteral("byte %1 is not 7-bit").arg(i);
    }
    const QString rtf = QString::fromLatin1(bytes);
    const qsizetype offset = qly::RTFGroupStructureProblemOffset(rtf);
    if (offset >= 0)
        return QStringLiteral("unbalanced groups at offset %1: \u2026%2").arg(offset).arg(rtf.mid(offset - 40, 80));
    qly::RTFParseResult result;
    if (!qly::attributedStringFromRTF(bytes, nullptr, &result) || !result)
        return QStringLiteral("the reader says %1 at %2").arg(result.description()).arg(result.offset);
    for (const char* leftover : {"<<**", "<$--QLY", "QLY_KEEP_WITH_NEXT", "JVT_"}) {
        if (rtf.contains(QLatin1String(leftover)))
            return QStringLiteral("a marker is left: %1").arg(QLatin1String(leftover));
    }
    return QString();
}

} // namespace writerinput

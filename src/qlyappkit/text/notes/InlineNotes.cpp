#include <qlyappkit/text/notes/InlineNotes.h>

#include <cmath>
#include <optional>
#include <vector>

#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/notes/FootnoteNumbering.h>
#include <qlyappkit/text/notes/FootnoteRule.h>
#include <qlyappkit/text/notes/NoteConversions.h>
#include <qlyappkit/text/notes/TaggedFootnotes.h>

#include "NoteEdits_p.h"

namespace qly {

using notes::TextEdit;

namespace {

const QString SectionBreak = QStringLiteral("\n\f");
const QString DashesSeparator = QStringLiteral("----------");
const QString WordJoiner = QStringLiteral("\u2060");
const QString LabelPeriod = QStringLiteral(".");

struct InlineOptions {
    int numberStyle = DecimalFootnoteStyle;
    int markerStyle = SuperscriptFootnoteMarkers | ReducedFootnoteMarkers;
    int separatorType = RuleFootnoteSeparator;
    bool indentToMatchText = false;
    bool periodStyle = false;
    QString annotationOpening = QStringLiteral("[");
    QString annotationClosing = QStringLiteral("]");

    bool superscript() const { return markerStyle & SuperscriptFootnoteMarkers; }
    bool reduced() const { return markerStyle & ReducedFootnoteMarkers; }

    static InlineOptions from(const QVariantMap& map)
    {
        InlineOptions o;
        auto read = [&](const QString& key, auto& field, auto convert) {
            auto it = map.constFind(key);
            if (it != map.constEnd())
                field = convert(*it);
        };
        read(XQInlineFootnotesStyle, o.numberStyle, [](const QVariant& v) { return v.toInt(); });
        read(XQInlineFootnotesMarkerStyle, o.markerStyle, [](const QVariant& v) { return v.toInt(); });
        read(XQInlineFootnotesSeparatorType, o.separatorType, [](const QVariant& v) { return v.toInt(); });
        read(XQInlineFootnotesIndentToMatchText, o.indentToMatchText, [](const QVariant& v) { return v.toBool(); });
        read(XQInlineFootnotesUsePeriodMarkerStyle, o.periodStyle, [](const QVariant& v) { return v.toBool(); });
        read(XQInlineAnnotationOpeningMarker, o.annotationOpening, [](const QVariant& v) { return v.toString(); });
        read(XQInlineAnnotationClosingMarker, o.annotationClosing, [](const QVariant& v) { return v.toString(); });
        return o;
    }
};

struct CollectedNote {
    QString label;
    AttributedString text;
    int number = 0;
};

std::optional<Font> fontIn(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<Font>())
        return value.value<Font>();
    return std::nullopt;
}

// The font of marks and labels: the given font without bold and italic (the default user font when no
// such face exists), at two thirds of its size when reduced.
Font plainNoteFont(const std::optional<Font>& font, bool reduce)
{
    Font plain = font.value_or(Font::userFont())
                     .convertedToHaveTrait(UnboldFontMask | UnitalicFontMask)
                     .value_or(Font::userFont());
    if (reduce) {
        const double size = plain.pointSize();
        plain = plain.withSize(std::round(size / 3 + size / 3));
    }
    return plain;
}

Attributes noteMarkAttributes(const std::optional<Font>& font, bool reduce, bool superscript)
{
    Attributes attributes{{FontAttributeName, QVariant::fromValue(plainNoteFont(font, reduce))}};
    if (superscript)
        attributes.insert(SuperscriptAttributeName, 1);
    return attributes;
}

template <typename Fn> void forEachRun(const AttributedString& text, const QString& name, Fn fn)
{
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid())
            fn(range, value);
        return true;
    });
}

AttributedString inlineAnnotations(const AttributedString& text, const InlineOptions& options, bool inlined,
                                   bool deleteOthers)
{
    std::vector<TextEdit> edits;
    forEachRun(text, XQAnnotationAttributeName, [&](Range range, const QVariant& value) {
        if (!inlined) {
            if (deleteOthers)
                edits.push_back(TextEdit::deletion(range));
            return;
        }
        AttributedString annotation = text.attributedSubstring(range);
        annotation.removeAttribute(XQAnnotationAttributeName, Range{0, annotation.length()});
        AttributedString piece(options.annotationOpening, annotation.attributes(0));
        piece.append(annotation);
        piece.append(options.annotationClosing, annotation.attributes(annotation.length() - 1));
        const Range all{0, piece.length()};
        if (value.metaType() == QMetaType::fromType<Color>())
            piece.addAttribute(ForegroundColorAttributeName, value, all);
        piece.removeAttribute(XQFootnoteAttributeName, all);
        piece.removeAttribute(XQCommentAttributeName, all);
        edits.push_back(TextEdit::attributed(range, piece));
    });
    return notes::applyingEdits(text, std::move(edits));
}

void highlightCommentAnchors(AttributedString& text)
{
    std::vector<std::pair<Range, Color>> anchors;
    forEachRun(text, XQCommentAttributeName, [&](Range range, const QVariant& value) {
        const XQCommentPtr comment = commentFromVariant(value);
        if (comment && comment->color())
            anchors.emplace_back(range, *comment->color());
    });
    for (const auto& [range, colour] : anchors)
        text.addAttribute(BackgroundColorAttributeName, QVariant::fromValue(colour), range);
}

AttributedString replaceFootnotesByMarks(const AttributedString& text, const InlineOptions& options, bool inlined,
                                         bool deleteOthers, std::vector<CollectedNote>& notesOut)
{
    std::vector<TextEdit> edits;
    std::optional<Attributes> markAttributes;
    int counter = 1;
    forEachRun(text, XQFootnoteAttributeName, [&](Range range, const QVariant&) {
        if (!inlined) {
            if (deleteOthers)
                edits.push_back(TextEdit::deletion(range));
            return;
        }
        const QString number = stringFromInt(counter, options.numberStyle);
        QString mark = options.superscript() ? number : QStringLiteral("[%1]").arg(number);
        const QString label = options.periodStyle && !options.superscript() ? number : mark;
        AttributedString noteText =
            attributedStringByRemovingTextBlocks(text.attributedSubstring(range), Range{0, range.length});
        noteText.removeAttribute(XQFootnoteAttributeName, Range{0, noteText.length()});
        notesOut.push_back(CollectedNote{label, noteText, counter});
        if (options.superscript())
            mark.prepend(WordJoiner);

        // The mark takes the place of the note's characters, and so their attributes.
        AttributedString markText(mark,
                                  notes::withoutAttributes(text.attributes(range.location), {XQFootnoteAttributeName}));
        const Range all{0, markText.length()};
        if (!markAttributes) {
            const qsizetype fontSource = range.location > 0 ? range.location - 1 : 0;
            markAttributes = noteMarkAttributes(fontIn(text.attribute(FontAttributeName, fontSource)),
                                                options.reduced(), options.superscript());
        }
        if (options.superscript() || options.reduced())
            markText.addAttributes(*markAttributes, all);
        markText.addAttribute(XQInlineFootnoteMarkerAttributeName, counter, all);
        markText.removeAttribute(ForegroundColorAttributeName, all);
        edits.push_back(TextEdit::attributed(range, markText));
        ++counter;
    });
    return notes::applyingEdits(text, std::move(edits));
}

void appendSeparator(AttributedString& text, int separatorType)
{
    const Attributes attributes = notes::plainAttributesAtEnd(text);
    if (separatorType == LineFeedFootnoteSeparator) {
        text.append(QStringLiteral("\n"), attributes);
        return;
    }
    text.append(QStringLiteral("\n\n"), attributes);
    if (separatorType == DashesFootnoteSeparator) {
        text.append(DashesSeparator, attributes);
    } else if (separatorType == RuleFootnoteSeparator) {
        const std::optional<Font> font =
            text.isEmpty() ? std::nullopt : fontIn(text.attribute(FontAttributeName, text.length() - 1));
        Attributes ruleAttributes = attributes;
        ruleAttributes.insert(AttachmentAttributeName,
                              QVariant::fromValue(footnoteSeparatorRuleAttachment(font ? font->pointSize() : 12.0)));
        if (font)
            ruleAttributes.insert(FontAttributeName, QVariant::fromValue(*font));
        text.append(QString(QChar(AttachmentCharacter)), ruleAttributes);
    }
}

ParagraphStyle noteParagraphStyle(const AttributedString& noteText, const ParagraphStyle& textStyle,
                                  bool indentToMatchText)
{
    ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
    if (!noteText.isEmpty()) {
        const QVariant own = noteText.attribute(ParagraphStyleAttributeName, 0);
        if (own.metaType() == QMetaType::fromType<ParagraphStyle>())
            style = own.value<ParagraphStyle>();
    }
    style.setFirstLineHeadIndent(indentToMatchText ? textStyle.firstLineHeadIndent() : 0);
    style.setHeadIndent(indentToMatchText ? textStyle.headIndent() : 0);
    style.setTailIndent(indentToMatchText ? textStyle.tailIndent() : 0);
    style.setLineHeightMultiple(textStyle.lineHeightMultiple());
    style.setMaximumLineHeight(textStyle.maximumLineHeight());
    style.setMinimumLineHeight(textStyle.minimumLineHeight());
    style.setLineSpacing(textStyle.lineSpacing());
    style.setParagraphSpacing(textStyle.paragraphSpacing());
    style.setParagraphSpacingBefore(textStyle.paragraphSpacingBefore());
    style.setAlignment(textStyle.alignment());
    return style;
}

void appendNotes(AttributedString& text, const std::vector<CollectedNote>& notes, const InlineOptions& options)
{
    const ParagraphStyle textStyle = mostUsedParagraphStyle(text);
    appendSeparator(text, options.separatorType);

    // Label attributes come from the first note's text.
    const CollectedNote& first = notes.front();
    const Range firstTrimmed = notes::trimmedRange(first.text, Range{0, first.text.length()});
    const std::optional<Font> firstFont =
        firstTrimmed.isEmpty() ? std::nullopt : fontIn(first.text.attribute(FontAttributeName, firstTrimmed.location));
    const Attributes labelAttributes = noteMarkAttributes(firstFont, options.reduced() && !options.periodStyle,
                                                          options.superscript() && !options.periodStyle);

    for (const CollectedNote& note : notes) {
        Attributes lineAttributes = notes::plainAttributesAtEnd(text);
        lineAttributes.insert(ParagraphStyleAttributeName,
                              QVariant::fromValue(ParagraphStyle::defaultParagraphStyle()));
        text.append(QStringLiteral("\n"), lineAttributes);

        const qsizetype labelStart = text.length();
        Attributes label = notes::withoutAttributes(lineAttributes, {ForegroundColorAttributeName});
        for (auto it = labelAttributes.begin(); it != labelAttributes.end(); ++it)
            label.insert(it.key(), it.value());
        label.insert(XQInlineFootnoteLabelAttributeName, note.number);
        text.append(note.label, label);

        if (notes::trimmedRange(note.text, Range{0, note.text.length()}).isEmpty())
            continue;
        // The period belongs to the label ("3."), in front of the space that separates it from the text.
        if (options.periodStyle)
            text.append(LabelPeriod, label);
        if (note.text.characterAt(0) != u' ')
            text.append(QStringLiteral(" "), lineAttributes);
        text.append(note.text);
        text.addAttribute(ParagraphStyleAttributeName,
                          QVariant::fromValue(noteParagraphStyle(note.text, textStyle, options.indentToMatchText)),
                          Range::fromBounds(labelStart, text.length()));
    }
}

AttributedString convertGroup(const AttributedString& source, bool annotationsInline, bool footnotesInline,
                              bool deleteNoneInlineAttributes, const InlineOptions& options)
{
    const Range all{0, source.length()};
    const bool hadInlineComments = attributeExistsInRange(source, XQLinkedCommentAttributeName, all);

    AttributedString text = attributedStringByConvertingLinkedCommentsToAnnotations(source);
    text = attributedStringByRemovingTextBlocksFromNotes(text);
    text = attributedStringByConvertingTaggedFootnotesToStandardFootnotes(text);

    text = inlineAnnotations(text, options, annotationsInline, deleteNoneInlineAttributes);
    if (annotationsInline && hadInlineComments)
        highlightCommentAnchors(text);

    std::vector<CollectedNote> collected;
    text = replaceFootnotesByMarks(text, options, footnotesInline, deleteNoneInlineAttributes, collected);
    if (!collected.empty())
        appendNotes(text, collected, options);
    return text;
}

} // namespace

AttributedString attributedStringWithAnnotationsInline(const AttributedString& text, bool annotationsInline,
                                                       bool footnotesInline, bool deleteNoneInlineAttributes,
                                                       const QVariantMap& inlineOptions)
{
    return convertGroup(text, annotationsInline, footnotesInline, deleteNoneInlineAttributes,
                        InlineOptions::from(inlineOptions));
}

AttributedString attributedStringWithAnnotationsInline(const AttributedString& text, bool annotationsInline,
                                                       bool footnotesInline, bool deleteNoneInlineAttributes,
                                                       int footnoteMarkerStyle)
{
    const QVariantMap options{{XQInlineFootnotesStyle, 0},
                              {XQInlineFootnotesMarkerStyle, footnoteMarkerStyle},
                              {XQInlineFootnotesSeparatorType, 1}};
    return attributedStringWithAnnotationsInline(text, annotationsInline, footnotesInline, deleteNoneInlineAttributes,
                                                 options);
}

AttributedString attributedStringWithAnnotationsInline(const AttributedString& text, bool annotationsInline,
                                                       bool footnotesInline, bool deleteNoneInlineAttributes,
                                                       const QVariantMap& inlineOptions, int footnotesGroupType)
{
    const InlineOptions options = InlineOptions::from(inlineOptions);
    auto convert = [&](Range range) {
        return convertGroup(text.attributedSubstring(range), annotationsInline, footnotesInline,
                            deleteNoneInlineAttributes, options);
    };
    const Range all{0, text.length()};
    const bool hasNotes = attributeExistsInRange(text, XQFootnoteAttributeName, all)
        || attributeExistsInRange(text, XQCommentAttributeName, all);
    if (!hasNotes || footnotesGroupType == SingleFootnoteGroup)
        return convert(all);

    const QString s = text.string();
    switch (footnotesGroupType) {
    case FootnoteGroupPerSection: {
        if (!s.contains(SectionBreak))
            return convert(all);
        AttributedString out;
        qsizetype start = 0;
        for (qsizetype at = s.indexOf(SectionBreak); at >= 0; at = s.indexOf(SectionBreak, start)) {
            out.append(convert(Range::fromBounds(start, at)));
            out.append(text.attributedSubstring(Range{at, SectionBreak.size()}));
            start = at + SectionBreak.size();
        }
        out.append(convert(Range::fromBounds(start, s.size())));
        return out;
    }
    case FootnoteGroupsAroundLastPageBreak: {
        const qsizetype at = s.lastIndexOf(SectionBreak);
        if (at < 0)
            return convert(all);
        AttributedString out = convert(Range{0, at});
        out.append(convert(Range::fromBounds(at, s.size())));
        return out;
    }
    case FootnoteGroupsAroundEndnotesMarker: {
        const Range marker = rangeOfUnescapedString(s, XQEndnotesPlacementMarker, BackwardsSearch);
        if (marker.isNotFound())
            return convert(all);
        const qsizetype beforeEnd =
            marker.location > 0 && s.at(marker.location - 1) == u'\n' ? marker.location - 1 : marker.location;
        AttributedString out = convert(Range{0, beforeEnd});
        out.append(convert(Range::fromBounds(marker.end(), s.size())));
        return out;
    }
    default:
        return convert(all);
    }
}

} // namespace qly

#include <qlyappkit/text/attributes/AttributeQueries.h>

#include <QFileInfo>
#include <QImageReader>
#include <QSet>
#include <algorithm>
#include <map>
#include <unordered_map>
#include <vector>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly {

namespace {

// The range within the text; a start at or past the end gives an empty range at the end.
Range clipped(const AttributedString& text, Range range)
{
    const qsizetype length = text.length();
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length);
    const qsizetype end = std::clamp<qsizetype>(range.location + std::max<qsizetype>(range.length, 0), start, length);
    return Range{start, end - start};
}

std::optional<ParagraphStyle> paragraphStyleFrom(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<ParagraphStyle>())
        return value.value<ParagraphStyle>();
    return std::nullopt;
}

// Deletes the attachment characters of the attachment runs that `remove` accepts.
AttributedString withoutAttachments(const AttributedString& text,
                                    const std::function<bool(const TextAttachment&)>& remove)
{
    std::vector<Range> doomed; // ascending, neighbours merged
    text.enumerateAttribute(AttachmentAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range run) {
        if (value.metaType() != QMetaType::fromType<TextAttachment>() || !remove(value.value<TextAttachment>()))
            return true;
        const QString characters = text.substring(run);
        for (qsizetype i = 0; i < characters.size(); ++i) {
            if (characters.at(i) != QChar(AttachmentCharacter))
                continue;
            const qsizetype at = run.location + i;
            if (!doomed.empty() && doomed.back().end() == at)
                ++doomed.back().length;
            else
                doomed.push_back(Range{at, 1});
        }
        return true;
    });
    AttributedString result(text);
    // From the end, so earlier ranges keep their positions.
    for (auto it = doomed.rbegin(); it != doomed.rend(); ++it)
        result.deleteCharacters(*it);
    return result;
}

} // namespace

Attributes attributesWithoutAttachmentsAtIndex(const AttributedString& text, qsizetype index, Range* effectiveRange)
{
    Attributes attributes = text.attributes(index, effectiveRange);
    attributes.remove(AttachmentAttributeName);
    return attributes;
}

std::optional<Attributes> attributesAtIndexWithoutAttachments(const AttributedString& text, qsizetype index,
                                                              Range* effectiveRange)
{
    if (index < 0 || index >= text.length())
        return std::nullopt;
    return attributesWithoutAttachmentsAtIndex(text, index, effectiveRange);
}

bool attributeExistsInRange(const AttributedString& text, const QString& name, Range range)
{
    bool found = false;
    text.enumerateAttribute(name, clipped(text, range), [&](const QVariant& value, Range) {
        found = value.isValid();
        return !found;
    });
    return found;
}

QVariant firstAttribute(const AttributedString& text, const QString& name, Range range, Range* effectiveRange)
{
    if (effectiveRange)
        *effectiveRange = Range::notFound();
    if (range.location >= text.length())
        return {};
    QVariant found;
    text.enumerateAttribute(name, clipped(text, range), [&](const QVariant& value, Range run) {
        if (!value.isValid())
            return true;
        found = value;
        if (effectiveRange)
            *effectiveRange = run;
        return false;
    });
    return found;
}

QVariant lastAttribute(const AttributedString& text, const QString& name, Range range, Range* effectiveRange)
{
    if (effectiveRange)
        *effectiveRange = Range::notFound();
    if (range.location >= text.length())
        return {};
    const Range within = clipped(text, range);
    qsizetype index = within.end() - 1;
    while (index >= within.location) {
        Range run;
        const QVariant value = text.attribute(name, index, &run, within);
        if (value.isValid()) {
            if (effectiveRange)
                *effectiveRange = run;
            return value;
        }
        if (run.location >= index + 1 || run.isEmpty()) // cannot happen; never loop forever
            break;
        index = run.location - 1;
    }
    return {};
}

QVariantList valuesForAttribute(const AttributedString& text, const QString& name, Range range)
{
    QVariantList values;
    text.enumerateAttribute(name, clipped(text, range), [&](const QVariant& value, Range) {
        if (value.isValid())
            values.append(value);
        return true;
    });
    return values;
}

TextAlignment mostCommonTextAlignment(const AttributedString& text)
{
    if (text.isEmpty())
        return NaturalTextAlignment;
    std::map<int, qsizetype> totals;
    std::optional<TextAlignment> leader;
    text.enumerateAttribute(ParagraphStyleAttributeName, Range{0, text.length()},
                            [&](const QVariant& value, Range run) {
                                const std::optional<ParagraphStyle> style = paragraphStyleFrom(value);
                                const TextAlignment alignment = style ? style->alignment() : LeftTextAlignment;
                                const qsizetype total = (totals[alignment] += run.length);
                                // Strictly greater: on a tie the earlier leader stays.
                                if (!leader || total > totals[*leader])
                                    leader = alignment;
                                return true;
                            });
    return leader.value_or(NaturalTextAlignment);
}

bool rangeContainsTextBlocks(const AttributedString& text, Range range)
{
    bool found = false;
    text.enumerateAttribute(ParagraphStyleAttributeName, clipped(text, range), [&](const QVariant& value, Range) {
        const std::optional<ParagraphStyle> style = paragraphStyleFrom(value);
        found = style && !style->textBlocks().isEmpty();
        return !found;
    });
    return found;
}

AttributedString attributedStringWithoutAttachments(const AttributedString& text)
{
    return withoutAttachments(text, [](const TextAttachment&) { return true; });
}

bool isImageFileExtension(const QString& extension)
{
    static const QSet<QString> types = [] {
        QSet<QString> set;
        const QList<QByteArray> formats = QImageReader::supportedImageFormats();
        for (const QByteArray& format : formats)
            set.insert(QString::fromLatin1(format).toLower());
        // PDF pictures are shown and exported as images as well.
        set.insert(QStringLiteral("pdf"));
        return set;
    }();
    return !extension.isEmpty() && types.contains(extension.toLower());
}

AttributedString attributedStringByRemovingNonImageAttachments(const AttributedString& text)
{
    return withoutAttachments(text, [](const TextAttachment& attachment) {
        if (attachment.isNull())
            return false;
        if (attachment.isLinkedFile()) {
            const QFileInfo info(attachment.linkedFilePath());
            if (!info.isSymLink() && !info.isFile())
                return false;
        }
        return !isImageFileExtension(QFileInfo(attachment.fileName()).suffix());
    });
}

ParagraphStyle mostUsedParagraphStyle(const AttributedString& text)
{
    std::vector<std::pair<ParagraphStyle, qsizetype>> counts;
    qsizetype best = -1;
    text.enumerateAttribute(ParagraphStyleAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range r) {
        if (v.metaType() != QMetaType::fromType<ParagraphStyle>())
            return true;
        const ParagraphStyle style = v.value<ParagraphStyle>();
        auto it = std::find_if(counts.begin(), counts.end(), [&](const auto& c) { return c.first == style; });
        if (it == counts.end())
            it = counts.insert(counts.end(), {style, 0});
        it->second += r.length;
        if (best < 0 || it->second > counts[size_t(best)].second)
            best = it - counts.begin();
        return true;
    });
    return best < 0 ? ParagraphStyle::defaultParagraphStyle() : counts[size_t(best)].first;
}

namespace {

// Buckets values for mostUsedAttributeValue() so that a text with many distinct values is not compared
// pair by pair; values in one bucket are told apart by equality.
size_t bucketOf(const QVariant& value)
{
    const QMetaType type = value.metaType();
    size_t h = size_t(type.id());
    if (type == QMetaType::fromType<Font>()) {
        const Font font = value.value<Font>();
        h ^= qHash(font.familyName()) ^ qHash(font.pointSize()) ^ font.traits();
    } else if (type == QMetaType::fromType<ParagraphStyle>()) {
        const ParagraphStyle style = value.value<ParagraphStyle>();
        h ^= qHash(int(style.alignment())) ^ qHash(style.firstLineHeadIndent()) ^ qHash(style.headIndent())
            ^ qHash(style.lineSpacing());
    } else if (type == QMetaType::fromType<QString>()) {
        h ^= qHash(value.toString());
    }
    return h;
}

} // namespace

std::optional<QVariant> mostUsedAttributeValue(const AttributedString& text, const QString& name, QMetaType type)
{
    struct Total {
        QVariant value;
        qsizetype characters = 0;
    };
    std::vector<Total> totals; // in the order the values are first met
    std::unordered_multimap<size_t, size_t> buckets;
    qsizetype without = 0;
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range run) {
        if (!value.isValid() || (type.isValid() && value.metaType() != type)) {
            without += run.length;
            return true;
        }
        const size_t bucket = bucketOf(value);
        auto [it, end] = buckets.equal_range(bucket);
        while (it != end && !(totals[it->second].value == value))
            ++it;
        if (it == end) {
            buckets.emplace(bucket, totals.size());
            totals.push_back({value, run.length});
        } else {
            totals[it->second].characters += run.length;
        }
        return true;
    });
    std::optional<QVariant> winner;
    qsizetype best = without;
    for (const Total& total : totals) {
        if (total.characters > best) {
            best = total.characters;
            winner = total.value;
        }
    }
    return winner;
}

std::optional<Font> mostUsedFont(const AttributedString& text)
{
    const std::optional<QVariant> value = mostUsedAttributeValue(text, FontAttributeName, QMetaType::fromType<Font>());
    if (!value)
        return std::nullopt;
    return value->value<Font>();
}

} // namespace qly

#include <qlyappkit/platform/text/MutableAttributedString.h>

#include <algorithm>
#include <typeinfo>

#include "AttributedString_p.h"

namespace qly {

MutableAttributedString::MutableAttributedString() = default;
MutableAttributedString::MutableAttributedString(const QString& text, const Attributes& attributes)
    : m_backing(text, attributes)
{
}
MutableAttributedString::MutableAttributedString(const AttributedString& text) : m_backing(text) { }
MutableAttributedString::~MutableAttributedString() = default;

QString MutableAttributedString::string() const { return m_backing.string(); }

Attributes MutableAttributedString::attributes(qsizetype index, Range* effectiveRange) const
{
    return m_backing.attributes(index, effectiveRange);
}

void MutableAttributedString::replaceCharacters(Range range, const QString& text)
{
    m_backing.replaceCharacters(range, text);
}

void MutableAttributedString::setAttributes(const Attributes& attributes, Range range)
{
    m_backing.setAttributes(attributes, range);
}

qsizetype MutableAttributedString::length() const { return m_backing.length(); }

QChar MutableAttributedString::characterAt(qsizetype index) const { return m_backing.characterAt(index); }

QString MutableAttributedString::substring(Range range) const { return m_backing.substring(range); }

AttributedString MutableAttributedString::attributedString() const { return m_backing; }

AttributedString MutableAttributedString::attributedStringFromPrimitives() const
{
    AttributedString out;
    const QString text = string();
    const qsizetype n = text.size();
    for (qsizetype pos = 0; pos < n;) {
        Range effective;
        const Attributes attrs = attributes(pos, &effective);
        const qsizetype end = std::clamp(effective.end(), pos + 1, n);
        out.append(text.mid(pos, end - pos), attrs);
        pos = end;
    }
    return out;
}

AttributedString* MutableAttributedString::plainBacking()
{
    return typeid(*this) == typeid(MutableAttributedString) ? &m_backing : nullptr;
}

void MutableAttributedString::replaceRanges(const std::vector<AttributedString::Replacement>& replacements)
{
    if (AttributedString* backing = plainBacking()) {
        backing->replaceRanges(replacements);
        return;
    }
    const std::vector<Range> ranges = clippedReplacementRanges(replacements, length());
    EditingBatch batch(*this);
    for (size_t i = ranges.size(); i-- > 0;)
        replaceCharacters(ranges[i], replacements[i].text);
}

void MutableAttributedString::addAttribute(const QString& name, const QVariant& value, Range range)
{
    if (AttributedString* backing = plainBacking())
        return backing->addAttribute(name, value, range);
    const qsizetype end = std::min(range.end(), length());
    EditingBatch batch(*this);
    for (qsizetype pos = std::max<qsizetype>(range.location, 0); pos < end;) {
        Range effective;
        Attributes attrs = attributes(pos, &effective);
        const qsizetype runEnd = std::clamp(effective.end(), pos + 1, end);
        attrs.insert(name, value);
        setAttributes(attrs, Range{pos, runEnd - pos});
        pos = runEnd;
    }
}

void MutableAttributedString::removeAttribute(const QString& name, Range range)
{
    if (AttributedString* backing = plainBacking())
        return backing->removeAttribute(name, range);
    const qsizetype end = std::min(range.end(), length());
    EditingBatch batch(*this);
    for (qsizetype pos = std::max<qsizetype>(range.location, 0); pos < end;) {
        Range effective;
        Attributes attrs = attributes(pos, &effective);
        const qsizetype runEnd = std::clamp(effective.end(), pos + 1, end);
        if (attrs.remove(name) > 0)
            setAttributes(attrs, Range{pos, runEnd - pos});
        pos = runEnd;
    }
}

void MutableAttributedString::replaceCharacters(Range range, const AttributedString& text)
{
    if (AttributedString* backing = plainBacking())
        return backing->replaceCharacters(range, text);
    EditingBatch batch(*this);
    replaceCharacters(range, text.string());
    qsizetype offset = range.location;
    text.enumerateAttributes(Range{0, text.length()}, [&](const Attributes& attrs, Range run) {
        setAttributes(attrs, Range{offset + run.location, run.length});
        return true;
    });
}

QVariant MutableAttributedString::attribute(const QString& name, qsizetype index, Range* effectiveRange) const
{
    return attributes(index, effectiveRange).value(name);
}

Attributes MutableAttributedString::attributes(qsizetype index, Range* longestRange, Range inRange) const
{
    return attributedString().attributes(index, longestRange, inRange);
}

QVariant MutableAttributedString::attribute(const QString& name, qsizetype index, Range* longestRange,
                                            Range inRange) const
{
    return attributedString().attribute(name, index, longestRange, inRange);
}

AttributedString MutableAttributedString::attributedSubstring(Range range) const
{
    return attributedString().attributedSubstring(range);
}

void MutableAttributedString::addAttributes(const Attributes& attributes, Range range)
{
    EditingBatch batch(*this);
    for (auto it = attributes.begin(); it != attributes.end(); ++it)
        addAttribute(it.key(), it.value(), range);
}

} // namespace qly

#include <qlyappkit/interchange/rtf/RTFExportRepairs.h>

#include <QSet>
#include <QUrl>
#include <vector>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>

namespace qly {

namespace {

QString linkText(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QUrl>())
        return value.toUrl().toString(QUrl::FullyEncoded);
    return value.toString();
}

} // namespace

void fixUpListIndents(AttributedString& text)
{
    std::vector<std::pair<Range, ParagraphStyle>> changes;
    text.enumerateAttribute(ParagraphStyleAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range r) {
        if (v.metaType() != QMetaType::fromType<ParagraphStyle>())
            return true;
        ParagraphStyle style = v.value<ParagraphStyle>();
        if (style.textLists().isEmpty() || style.tabStops().isEmpty())
            return true;
        const QVector<TextTab>& tabs = style.tabStops();
        style.setFirstLineHeadIndent(tabs.size() > 1 ? tabs.at(0).location : 0);
        style.setHeadIndent(tabs.size() > 1 ? tabs.at(1).location : tabs.at(0).location);
        changes.push_back({r, style});
        return true;
    });
    for (const auto& [range, style] : changes)
        text.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(style), range);
}

QStringList addColorAndUnderlineToAllHyperlinks(AttributedString& text)
{
    QStringList targets;
    QSet<QString> seen;
    std::vector<Range> links;
    text.enumerateAttribute(LinkAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range r) {
        if (!v.isValid())
            return true;
        const QString target = linkText(v);
        if (!target.isEmpty() && !seen.contains(target)) {
            seen.insert(target);
            targets.append(target);
        }
        links.push_back(r);
        return true;
    });
    for (const Range& r : links) {
        text.enumerateAttributes(r, [&](const Attributes& a, Range sub) {
            Attributes add;
            if (!a.contains(ForegroundColorAttributeName))
                add.insert(ForegroundColorAttributeName, QVariant::fromValue(Color(0, 0, 1)));
            if (a.value(UnderlineStyleAttributeName).toInt() == 0)
                add.insert(UnderlineStyleAttributeName, 1);
            if (!add.isEmpty())
                text.addAttributes(add, sub);
            return true;
        });
    }
    return targets;
}

void removeWhiteHighlights(AttributedString& text)
{
    std::vector<Range> white;
    text.enumerateAttribute(BackgroundColorAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range r) {
        if (v.metaType() == QMetaType::fromType<Color>()) {
            const Color c = v.value<Color>();
            if (c.redComponent() >= 1.0 && c.greenComponent() >= 1.0 && c.blueComponent() >= 1.0)
                white.push_back(r);
        }
        return true;
    });
    for (const Range& r : white)
        text.removeAttribute(BackgroundColorAttributeName, r);
}

} // namespace qly

#include <qlyappkit/interchange/package/StyleIdentifierGroups.h>

#include <algorithm>

#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly {

namespace {

void collectChanges(const AttributedString& text, const QString& name, bool paragraph,
                    std::vector<StyleIdentifierChange>& changes)
{
    QString current;
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range run) {
        const QString identifier = value.isValid() ? value.toString() : QString();
        if (identifier != current)
            changes.push_back({run.location, paragraph, identifier});
        current = identifier;
        return true;
    });
}

} // namespace

std::vector<StyleIdentifierChange> styleIdentifierChanges(const AttributedString& text)
{
    std::vector<StyleIdentifierChange> changes;
    collectChanges(text, XQParagraphStyleIDAttributeName, true, changes);
    collectChanges(text, XQCharacterStyleIDAttributeName, false, changes);
    std::stable_sort(changes.begin(), changes.end(),
                     [](const StyleIdentifierChange& a, const StyleIdentifierChange& b) { return a.at < b.at; });
    return changes;
}

void appendStyleIdentifierGroup(QByteArray& rtf, const StyleIdentifierChange& change)
{
    rtf.append("{\\*\\");
    rtf.append(change.paragraph ? PackageRTFParagraphStyleIDWord : PackageRTFCharacterStyleIDWord);
    rtf.append(' ');
    rtf.append(RTFEscapedText(change.identifier).toLatin1());
    rtf.append('}');
}

void applyStyleIdentifierChanges(AttributedString& text, const std::vector<StyleIdentifierChange>& changes)
{
    for (const bool paragraph : {true, false}) {
        const QString& name = paragraph ? XQParagraphStyleIDAttributeName : XQCharacterStyleIDAttributeName;
        const StyleIdentifierChange* open = nullptr;
        auto close = [&](qsizetype end) {
            if (open && !open->identifier.isEmpty()) {
                const qsizetype start = std::clamp(open->at, qsizetype(0), text.length());
                end = std::clamp(end, start, text.length());
                if (end > start)
                    text.addAttribute(name, open->identifier, Range::fromBounds(start, end));
            }
        };
        for (const StyleIdentifierChange& change : changes) {
            if (change.paragraph != paragraph)
                continue;
            close(change.at);
            open = &change;
        }
        close(text.length());
    }
}

} // namespace qly

// qly outline: prints an OPML file's head and its items as an indented tree or as JSON.
#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/formats/outline/OPMLOutline.h>
#include <qlyappkit/formats/outline/XQOutlineController.h>
#include <qlyappkit/platform/services/NamedException.h>

#include <vector>

#include "CommandLine.h"
#include "Commands.h"

namespace qly::tool {

namespace {

// Indentation stops growing here, so that a hostile nesting depth cannot make the output quadratic;
// deeper lines say their level instead.
constexpr int MaximumIndentLevels = 64;

QString indentFor(int level)
{
    QString indent(qMin(level, MaximumIndentLevels) * 2, u' ');
    if (level > MaximumIndentLevels)
        indent += QStringLiteral("[level %1] ").arg(level);
    return indent;
}

QString textOutline(const XQOPMLDictionary& head, const XQBaseNodeList& top)
{
    QString out;
    for (const XQOPMLDictionary::Entry& entry : head.entries())
        out += entry.first + u'\t' + oneLine(entry.second) + u'\n';
    out += u'\n';
    // Depth first with an explicit stack: files may nest deeper than the call stack allows.
    std::vector<std::pair<const XQBaseNodeList*, qsizetype>> stack{{&top, 0}};
    while (!stack.empty()) {
        const XQBaseNodeList& list = *stack.back().first;
        const qsizetype index = stack.back().second++;
        if (index >= list.size()) {
            stack.pop_back();
            continue;
        }
        const XQBaseNode& node = *list[index];
        out += indentFor(int(stack.size()) - 1) + oneLine(node.title());
        for (auto it = node.properties().cbegin(); it != node.properties().cend(); ++it)
            out += u'\t' + it.key() + u'=' + oneLine(it.value().toString());
        out += u'\n';
        if (node.childCount() > 0)
            stack.push_back({&node.children(), 0});
    }
    return out;
}

QString jsonString(const QString& text)
{
    QString out = QStringLiteral("\"");
    for (QChar c : text) {
        switch (c.unicode()) {
        case u'"':
            out += QStringLiteral("\\\"");
            break;
        case u'\\':
            out += QStringLiteral("\\\\");
            break;
        case u'\n':
            out += QStringLiteral("\\n");
            break;
        case u'\r':
            out += QStringLiteral("\\r");
            break;
        case u'\t':
            out += QStringLiteral("\\t");
            break;
        default:
            if (c.unicode() < 0x20)
                out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
    }
    return out + u'"';
}

// {"head":{...},"items":[{"text":…,"attributes":{…},"children":[…]}]} on one line; groups have
// "children", leaves do not. Written with an explicit stack for the same reason as the text form.
QString jsonOutline(const XQOPMLDictionary& head, const XQBaseNodeList& top)
{
    QString out = QStringLiteral("{\"head\":{");
    for (qsizetype i = 0; i < head.entries().size(); ++i) {
        const XQOPMLDictionary::Entry& entry = head.entries()[i];
        out += (i ? QStringLiteral(",") : QString()) + jsonString(entry.first) + u':' + jsonString(entry.second);
    }
    out += QStringLiteral("},\"items\":[");
    std::vector<std::pair<const XQBaseNodeList*, qsizetype>> stack{{&top, 0}};
    while (!stack.empty()) {
        const XQBaseNodeList& list = *stack.back().first;
        const qsizetype index = stack.back().second++;
        if (index >= list.size()) {
            stack.pop_back();
            out += stack.empty() ? QStringLiteral("]") : QStringLiteral("]}");
            continue;
        }
        const XQBaseNode& node = *list[index];
        if (index > 0)
            out += u',';
        out += QStringLiteral("{\"text\":") + jsonString(node.title()) + QStringLiteral(",\"attributes\":{");
        bool first = true;
        for (auto it = node.properties().cbegin(); it != node.properties().cend(); ++it) {
            out += (first ? QString() : QStringLiteral(",")) + jsonString(it.key()) + u':'
                + jsonString(it.value().toString());
            first = false;
        }
        out += u'}';
        if (node.isLeaf()) {
            out += u'}';
        } else {
            out += QStringLiteral(",\"children\":[");
            stack.push_back({&node.children(), 0});
        }
    }
    return out + QStringLiteral("}\n");
}

void sortAll(const XQBaseNodeList& top, XQBaseNodeList& sortedTop)
{
    sortedTop = top;
    std::stable_sort(sortedTop.begin(), sortedTop.end(), [](const XQBaseNodePtr& a, const XQBaseNodePtr& b) {
        return a->caseInsensitiveCompare(*b) == OrderedAscending;
    });
    for (const XQBaseNodePtr& node : top)
        node->sortAllChildrenUsingSelector(&XQBaseNode::caseInsensitiveCompare);
}

} // namespace

int runOutline(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("outline"), QStringLiteral("[--json] [--sort] [--unique-titles] FILE"),
        QStringLiteral("Prints an OPML file (\"-\" reads standard input): its head as name<TAB>value lines,\n"
                       "an empty line, then its items as a tree indented two spaces per level, each\n"
                       "line the item's text followed by <TAB>name=value for its other attributes.\n"
                       "Line breaks in values are printed as \\n."));
    line.addOption({QStringLiteral("json"), QStringLiteral("Write the head and the items as JSON instead.")});
    line.addOption({QStringLiteral("sort"),
                    QStringLiteral("Order siblings by text, case-insensitively, numbers by value (2 before 10).")});
    line.addOption(
        {QStringLiteral("unique-titles"),
         QStringLiteral("Give siblings that share a text a number (\"Scene\", \"Scene-1\"), before sorting.")});
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;
    const QString path = line.arguments().constFirst();
    QByteArray bytes;
    if (!readInput(path, bytes))
        return ExitFailure;
    std::optional<XQOPMLStorage> storage;
    try {
        XQOPMLReadError error;
        storage = XQOPMLStorage::initWithData(std::move(bytes), &error);
        if (!storage) {
            printError(
                QStringLiteral("%1: not well-formed XML: %2 at offset %3").arg(path, error.message).arg(error.offset));
            return ExitFailure;
        }
    } catch (const NamedException& exception) {
        printError(QStringLiteral("%1: %2").arg(path, exception.reason()));
        return ExitFailure;
    }
    XQBaseNodeList top = XQBaseNodesFromOPMLStorage(*storage);
    if (line.isSet(QStringLiteral("unique-titles"))) {
        XQOutlineController controller;
        controller.setContents(top);
        controller.makeAllTitlesUnique();
    }
    if (line.isSet(QStringLiteral("sort"))) {
        XQBaseNodeList sorted;
        sortAll(top, sorted);
        top = sorted;
    }
    printOut(line.isSet(QStringLiteral("json")) ? jsonOutline(storage->head(), top)
                                                : textOutline(storage->head(), top));
    return ExitSuccess;
}

} // namespace qly::tool

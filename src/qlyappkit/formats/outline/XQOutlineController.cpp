#include <qlyappkit/formats/outline/XQOutlineController.h>

#include <QHash>

#include <algorithm>
#include <limits>

#include <vector>

namespace qly {

namespace {

const QChar NumberSeparator = u'-';

QString candidateTitle(const QString& base, qint64 number)
{
    return number == 0 ? base : base + NumberSeparator + QString::number(number);
}

// Counts matches into the number. A count that would pass the largest number starts again with the
// numbered title as the base, so that every title can still be made unique.
void advance(QString& base, qint64& number, qint64 matches)
{
    if (number > std::numeric_limits<qint64>::max() - matches) {
        base = candidateTitle(base, number);
        number = 0;
        return;
    }
    number += matches;
}

} // namespace

QString XQOutlineController::basenameFromTitle(const QString& title, qint64* currentNumber)
{
    qint64 number = 0;
    QString base = title;
    const qsizetype dash = title.lastIndexOf(NumberSeparator);
    if (dash >= 0 && dash + 1 < title.size()) {
        const QStringView digits = QStringView(title).mid(dash + 1);
        if (std::all_of(digits.begin(), digits.end(), [](QChar c) { return c.isDigit(); })) {
            bool fits = false;
            number = digits.toLongLong(&fits);
            if (!fits)
                number = 0; // too long for a number, or digits of another script: part of the title
            if (number != 0)
                base = title.left(dash);
        }
    }
    if (currentNumber)
        *currentNumber = number;
    return base;
}

void XQOutlineController::makeTitleOfItemUnique(const XQBaseNodePtr& item) const
{
    if (!item)
        return;
    const XQBaseNodePtr parent = item->parent();
    const XQBaseNodeList& siblings = parent ? parent->children() : m_contents;
    std::vector<QString> others;
    others.reserve(size_t(siblings.size()));
    for (const XQBaseNodePtr& sibling : siblings) {
        if (sibling != item)
            others.push_back(sibling->title().toLower());
    }
    qint64 number = 0;
    QString base = basenameFromTitle(item->title(), &number);
    QString candidate;
    for (;;) {
        candidate = candidateTitle(base, number);
        const QString lowered = candidate.toLower();
        const auto matches = std::count(others.begin(), others.end(), lowered);
        if (matches == 0)
            break;
        advance(base, number, matches);
    }
    if (candidate != item->title())
        item->setTitle(candidate);
}

void XQOutlineController::makeTitlesUniqueAmongSiblings(const XQBaseNodeList& siblings)
{
    // How many entries of the list carry each lower-cased title, and how often each node is listed
    // (a node listed twice is still not its own sibling).
    QHash<QString, qsizetype> titles;
    QHash<const XQBaseNode*, qsizetype> occurrences;
    std::vector<QString> lowered;
    titles.reserve(siblings.size());
    lowered.reserve(size_t(siblings.size()));
    for (const XQBaseNodePtr& node : siblings) {
        lowered.push_back(node->title().toLower());
        ++titles[lowered.back()];
        ++occurrences[node.get()];
    }
    for (qsizetype i = 0; i < siblings.size(); ++i) {
        const XQBaseNodePtr& item = siblings[i];
        const qsizetype own = occurrences.value(item.get());
        // A node listed twice may have been renamed at its first place.
        const QString ownLowered = own > 1 ? item->title().toLower() : lowered[size_t(i)];
        qint64 number = 0;
        QString base = basenameFromTitle(item->title(), &number);
        QString candidate;
        for (;;) {
            candidate = candidateTitle(base, number);
            const QString loweredCandidate = candidate == item->title() ? ownLowered : candidate.toLower();
            const qsizetype matches = titles.value(loweredCandidate) - (loweredCandidate == ownLowered ? own : 0);
            if (matches == 0)
                break;
            advance(base, number, matches);
        }
        if (candidate == item->title())
            continue;
        if ((titles[ownLowered] -= own) == 0)
            titles.remove(ownLowered);
        titles[candidate.toLower()] += own;
        item->setTitle(candidate);
    }
}

void XQOutlineController::makeAllTitlesUnique() const
{
    makeTitlesUniqueAmongSiblings(m_contents);
    std::vector<const XQBaseNode*> pending;
    for (const XQBaseNodePtr& top : m_contents)
        pending.push_back(top.get());
    while (!pending.empty()) {
        const XQBaseNode* node = pending.back();
        pending.pop_back();
        if (node->childCount() == 0)
            continue;
        makeTitlesUniqueAmongSiblings(node->children());
        for (const XQBaseNodePtr& child : node->children())
            pending.push_back(child.get());
    }
}

} // namespace qly

#pragma once
// Shared by the layout tests: texts in given fonts and styles, and a layout manager over them.
#include <QRandomGenerator>
#include <memory>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly::layouttest {

inline Attributes fontAttributes(const QString& name, double size)
{
    return Attributes{{FontAttributeName, QVariant::fromValue(Font(name, size))}};
}

inline Attributes styled(Attributes attributes, const ParagraphStyle& style)
{
    attributes.insert(ParagraphStyleAttributeName, QVariant::fromValue(style));
    return attributes;
}

/// A storage and a layout manager with containers of one size.
struct Layout {
    TextStorage storage;
    LayoutManager manager;

    explicit Layout(const AttributedString& text, QSizeF containerSize = QSizeF(300, TextContainer::LargeDimension),
                    int containers = 1)
        : storage(text)
    {
        manager.setTextStorage(&storage);
        for (int i = 0; i < containers; ++i)
            manager.addTextContainer(std::make_unique<TextContainer>(containerSize));
    }
    TextContainer* container(int i = 0) const { return manager.textContainers()[size_t(i)]; }
    std::vector<LineFragment> lines(int i = 0) { return manager.lineFragmentsForTextContainer(container(i)); }
    /// Every line of every container, in order.
    std::vector<LineFragment> allLines()
    {
        manager.ensureLayoutForAllText();
        std::vector<LineFragment> all;
        for (TextContainer* c : manager.textContainers()) {
            const auto some = manager.lineFragmentsForTextContainer(c);
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }
};

/// Words of varied length, from a seeded generator.
inline QString words(QRandomGenerator& random, int count)
{
    static const QStringList pool = {QStringLiteral("the"),
                                     QStringLiteral("manuscript"),
                                     QStringLiteral("of"),
                                     QStringLiteral("a"),
                                     QStringLiteral("long"),
                                     QStringLiteral("winter"),
                                     QStringLiteral("chapter"),
                                     QStringLiteral("writers"),
                                     QStringLiteral("live"),
                                     QStringLiteral("in"),
                                     QStringLiteral("it"),
                                     QStringLiteral("for"),
                                     QStringLiteral("years,"),
                                     QStringLiteral("never"),
                                     QStringLiteral("losing"),
                                     QStringLiteral("one"),
                                     QStringLiteral("word."),
                                     QStringLiteral("Quietly"),
                                     QStringLiteral("extraordinarily"),
                                     QStringLiteral("and")};
    QStringList out;
    for (int i = 0; i < count; ++i)
        out.append(pool.at(int(random.bounded(pool.size()))));
    return out.join(QLatin1Char(' '));
}

} // namespace qly::layouttest

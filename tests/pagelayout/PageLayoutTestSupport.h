#pragma once
// Shared by the page layout tests: a page layout view on its own storage and layout manager, and
// texts that fill a known number of lines.
#include <QApplication>
#include <QScrollArea>
#include <QTest>
#include <memory>

#include <qlyappkit/pagelayout/XQPageLayoutView.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/storages/XQTextStorage.h>

namespace qly::pagetest {

inline Attributes sans12()
{
    return Attributes{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Helvetica"), 12))}};
}

inline double lineHeight() { return LayoutManager::defaultLineHeightForFont(Font(QStringLiteral("Helvetica"), 12)); }

/// n short paragraphs, one line each.
inline QString paragraphs(int n)
{
    QString text;
    for (int i = 1; i <= n; ++i)
        text += QStringLiteral("Paragraph %1\n").arg(i);
    return text;
}

/// A view with its storage (a word-counting XQTextStorage) and layout manager.
struct Pages {
    XQTextStorage storage;
    LayoutManager manager;
    std::unique_ptr<XQPageLayoutView> view;

    explicit Pages(const QString& text = QString(), QSizeF pageSize = QSizeF(300, 200))
        : storage(AttributedString(text, sans12()))
    {
        manager.setTextStorage(&storage);
        view = std::make_unique<XQPageLayoutView>(QRectF(0, 0, 300, 200), &manager);
        view->setPageSize(pageSize);
        manager.ensureLayoutForAllText();
    }
    /// Lines that fit on one page of the view as set.
    int linesPerPage() const { return int(view->firstTextView()->frame().height() / lineHeight()); }
};

/// Counts the notifications of one name from one sender.
struct Counter {
    int count = 0;
    Notification last;
    ScopedObserver observer;
    Counter(const QString& name, const void* sender)
        : observer(name, sender, [this](const Notification& n) {
              ++count;
              last = n;
          })
    {
    }
};

} // namespace qly::pagetest

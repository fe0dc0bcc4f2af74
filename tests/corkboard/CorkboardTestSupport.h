#pragma once
// A data source and a delegate for corkboard tests: sections of cards described in a table, a choice
// of which optional methods they implement, and a record of every call the view makes.
#include <gtest/gtest.h>

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

#include <vector>

#include <qlyappkit/corkboard/XQCorkboardView.h>
#include <qlyappkit/platform/services/NotificationCenter.h>

namespace qly::corkboardtest {

struct TestCard {
    bool image = false;
    QPointF coordinate;
    QString text;
    QString title;
};

/// Sections of cards; every optional method can be switched off, and a switched-off method that is
/// called anyway fails the test.
class TestDataSource : public XQCorkboardViewDataSource {
public:
    static constexpr Methods AllMethods = Methods(0xFFFF);

    explicit TestDataSource(std::vector<std::vector<TestCard>> sections = {}, Methods methods = AllMethods)
        : sections(std::move(sections)), methods(methods)
    {
    }
    /// One section of n text cards.
    static TestDataSource plain(int n, Methods methods = AllMethods)
    {
        return TestDataSource({std::vector<TestCard>(size_t(n))}, methods);
    }
    /// Sections with the given numbers of text cards.
    static TestDataSource withSections(std::initializer_list<int> counts, Methods methods = AllMethods)
    {
        std::vector<std::vector<TestCard>> sections;
        for (int n : counts)
            sections.push_back(std::vector<TestCard>(size_t(n)));
        return TestDataSource(std::move(sections), methods);
    }

    std::vector<std::vector<TestCard>> sections;
    Methods methods;
    QList<qsizetype> drawingOrder;
    mutable std::vector<QString> calls;

    Methods implementedMethods() const override { return methods; }

    TestCard& card(qsizetype index)
    {
        for (auto& section : sections) {
            if (index < qsizetype(section.size()))
                return section[size_t(index)];
            index -= qsizetype(section.size());
        }
        static TestCard none;
        ADD_FAILURE() << "no card at that index";
        return none;
    }
    qsizetype total() const
    {
        qsizetype n = 0;
        for (const auto& section : sections)
            n += qsizetype(section.size());
        return n;
    }

    int numberOfSectionsInCorkboardView(XQCorkboardView*) override
    {
        check(NumberOfSectionsInCorkboardView, "numberOfSections");
        return int(sections.size());
    }
    int numberOfCardsInSectionAtIndex(XQCorkboardView*, int section) override
    {
        check(NumberOfCardsInSectionAtIndex, "numberOfCardsInSection");
        return section >= 0 && size_t(section) < sections.size() ? int(sections[size_t(section)].size()) : 0;
    }
    int numberOfCardsInCorkboardView(XQCorkboardView*) override
    {
        check(NumberOfCardsInCorkboardView, "numberOfCards");
        return int(total());
    }
    bool cardAtIndexIsImage(XQCorkboardView*, qsizetype index) override
    {
        check(CardAtIndexIsImage, "isImage");
        return card(index).image;
    }
    QImage imageForCardAtIndex(XQCorkboardView*, qsizetype index, bool) override
    {
        check(ImageForCardAtIndex, "image");
        if (!card(index).image)
            return {};
        QImage picture(40, 30, QImage::Format_RGB32);
        picture.fill(QColor(30, 90, 160));
        return picture;
    }
    QPointF coordinateOfCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        check(CoordinateOfCardAtIndex, "coordinate");
        return card(index).coordinate;
    }
    QString textForCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        check(TextForCardAtIndex, "text");
        return card(index).text;
    }
    QString titleForCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        check(TitleForCardAtIndex, "title");
        return card(index).title;
    }
    QImage iconForCardAtIndex(XQCorkboardView*, qsizetype) override
    {
        check(IconForCardAtIndex, "icon");
        return {};
    }
    QList<qsizetype> freeformDrawingOrderForCorkboardView(XQCorkboardView*) override
    {
        check(FreeformDrawingOrderForCorkboardView, "drawingOrder");
        return drawingOrder;
    }
    int relativeDragIndexForCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        check(RelativeDragIndexForCardAtIndex, "relativeDragIndex");
        return int(index) * 10;
    }
    QColor labelColorForCardAtIndex(XQCorkboardView*, qsizetype) override
    {
        check(LabelColorForCardAtIndex, "labelColor");
        return {};
    }
    QString stampForCardAtIndex(XQCorkboardView*, qsizetype) override
    {
        check(StampForCardAtIndex, "stamp");
        return {};
    }
    void setTitleForCardAtIndex(XQCorkboardView*, const QString& title, qsizetype index) override
    {
        check(SetTitleForCardAtIndex, "setTitle");
        card(index).title = title;
    }
    void setTextForCardAtIndex(XQCorkboardView*, const QString& text, qsizetype index) override
    {
        check(SetTextForCardAtIndex, "setText");
        card(index).text = text;
    }
    void setCoordinateOfCardAtIndex(XQCorkboardView*, QPointF coordinate, qsizetype index) override
    {
        check(SetCoordinateOfCardAtIndex, "setCoordinate");
        card(index).coordinate = coordinate;
    }

private:
    void check(Method method, const char* name) const
    {
        calls.push_back(QString::fromLatin1(name));
        if (!methods.testFlag(method))
            ADD_FAILURE() << "the view called " << name << ", which the data source does not implement";
    }
};

/// Records what the view tells its delegate.
class TestDelegate : public XQCorkboardViewDelegate {
public:
    Methods methods = Methods(0xFFFF);
    int colorChips = 0;
    std::vector<QString> calls;
    std::vector<XQIndexSet> oldSelections;
    Qt::KeyboardModifiers lastModifiers;
    XQIndexSet movedIndexes;
    qsizetype movedTo = -1;
    qsizetype doubleClicked = -1;

    Methods implementedMethods() const override { return methods; }
    int numberOfColorChipsForCardAtIndex(XQCorkboardView*, qsizetype) override { return colorChips; }
    void corkboardViewDidReceiveReturnKeyEvent(XQCorkboardView*, Qt::KeyboardModifiers modifiers) override
    {
        record("return", modifiers);
    }
    void corkboardViewDidReceiveDeleteKeyEvent(XQCorkboardView*, Qt::KeyboardModifiers modifiers) override
    {
        record("delete", modifiers);
    }
    void corkboardViewDidReceiveSpaceKeyEvent(XQCorkboardView*, Qt::KeyboardModifiers modifiers) override
    {
        record("space", modifiers);
    }
    void corkboardViewSelectionDidChange(XQCorkboardView*, const XQIndexSet& old) override
    {
        calls.push_back(QStringLiteral("selection"));
        oldSelections.push_back(old);
    }
    void moveCardsAtIndexes(XQCorkboardView*, const XQIndexSet& indexes, qsizetype to) override
    {
        calls.push_back(QStringLiteral("move"));
        movedIndexes = indexes;
        movedTo = to;
    }
    void doubleClickedCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        calls.push_back(QStringLiteral("doubleClick"));
        doubleClicked = index;
    }

private:
    void record(const char* name, Qt::KeyboardModifiers modifiers)
    {
        calls.push_back(QString::fromLatin1(name));
        lastModifiers = modifiers;
    }
};

/// The selection notifications a view posts while the recorder lives.
struct SelectionRecorder {
    explicit SelectionRecorder(const XQCorkboardView* view)
        : observer(XQCorkboardViewSelectionDidChangeNotification, view,
                   [this](const Notification& n) { userInfos.push_back(n.userInfo); })
    {
    }
    std::vector<QVariantMap> userInfos;
    ScopedObserver observer;
};

/// A board of the given visible size, not shown.
inline std::unique_ptr<XQCorkboardView> makeView(int width, int height)
{
    auto view = std::make_unique<XQCorkboardView>();
    view->resize(width, height);
    return view;
}

inline std::vector<QRectF> rects(const XQRectArray& array) { return array.rects; }

} // namespace qly::corkboardtest

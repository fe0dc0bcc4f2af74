#include <qlyappkit/geometry/XQTextMeasuring.h>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

namespace {

// One storage, layout manager and container reused by every measurement: building them costs more
// than measuring a card's text.
struct Measurer {
    TextStorage storage;
    LayoutManager layoutManager;
    TextContainer* container;

    Measurer()
    {
        layoutManager.setTextStorage(&storage);
        container = layoutManager.addTextContainer(std::make_unique<TextContainer>());
    }

    double height(const AttributedString& text, double width, double padding)
    {
        if (text.isEmpty())
            return 0;
        container->setLineFragmentPadding(padding);
        container->setSize(QSizeF(std::max(width, 0.0), TextContainer::LargeDimension));
        storage.setAttributedString(text);
        return layoutManager.usedRectForTextContainer(container).height();
    }
};

Measurer& measurer()
{
    static Measurer instance;
    return instance;
}

} // namespace

double XQDefaultLineHeightForFont(const Font& font) { return LayoutManager::defaultLineHeightForFont(font); }

double XQHeightForStringDrawing(const QString& string, double width, const Attributes& attributes)
{
    return XQHeightForStringDrawingBySettingPadding(AttributedString(string, attributes), width,
                                                    TextContainer::DefaultLineFragmentPadding);
}

double XQHeightForStringDrawing(const AttributedString& string, double width)
{
    return XQHeightForStringDrawingBySettingPadding(string, width, TextContainer::DefaultLineFragmentPadding);
}

double XQHeightForStringDrawingBySettingPadding(const QString& string, double width, const Attributes& attributes,
                                                double padding)
{
    return XQHeightForStringDrawingBySettingPadding(AttributedString(string, attributes), width, padding);
}

double XQHeightForStringDrawingBySettingPadding(const AttributedString& string, double width, double padding)
{
    return measurer().height(string, width, padding);
}

} // namespace qly

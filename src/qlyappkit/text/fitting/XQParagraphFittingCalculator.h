#pragma once
// XQParagraphFittingCalculator: measures one paragraph as it would be laid out inside a document —
// between two one-letter paragraphs, so that its spacing before and after and its line heights come
// out as in running text — and keeps its line fragment rectangles, measured from the end of the line
// before it. One shared instance per process, used from the main thread only; each setter lays the
// paragraph out again at once.
#include <QRectF>
#include <optional>
#include <vector>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

class TextContainer;

/// A layout manager that tells its delegate of each line fragment before recording it.
class XQParagraphCalculatingLayoutManager : public LayoutManager {
public:
    void setLineFragmentRect(const QRectF& fragmentRect, Range glyphRange, const QRectF& usedRect) override;
};

class XQParagraphFittingCalculator : public LayoutManagerDelegate {
public:
    /// The container's height, and its width until setContainerWidth() is called.
    static constexpr double ContainerDimension = 10000000.0;

    static XQParagraphFittingCalculator& sharedInstance();

    XQParagraphFittingCalculator();
    ~XQParagraphFittingCalculator() override;

    void setParagraphText(const AttributedString& text);
    std::optional<AttributedString> paragraphText() const { return m_paragraphText; }
    /// The container becomes width × ContainerDimension.
    void setContainerWidth(double width);
    double containerWidth() const;
    void setDefaultAttachmentScaling(ImageScaling scaling);

    /// The paragraph's line fragments, in order; y is measured from the bottom of the line before it.
    const std::vector<QRectF>& lineFragmentRects() const { return m_lineFragmentRects; }
    /// Bottom of the last fragment less the top of the first; 0 with no fragments.
    double paragraphHeight() const;
    /// Height of the first fragment; 0 with none.
    double firstLineHeight() const;
    /// The number of leading fragments whose bottom is at most height; counting stops at the first
    /// that is not.
    int numberOfLinesOfParagraphThatFitInHeight(double height) const;

    void layoutManagerDidSetLineFragmentRect(LayoutManager& layoutManager, const QRectF& lineFragmentRect,
                                             Range glyphRange) override;

private:
    void relayoutParagraph();

    TextStorage m_storage;
    XQParagraphCalculatingLayoutManager m_layoutManager;
    TextContainer* m_container = nullptr;
    std::optional<AttributedString> m_paragraphText;
    std::vector<QRectF> m_lineFragmentRects;
};

} // namespace qly

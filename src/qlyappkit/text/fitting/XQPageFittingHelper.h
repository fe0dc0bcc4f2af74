#pragma once
// XQPageFittingHelper: whether a text fits on one page of a given size and margins. The text is laid
// out in a text view the size of the page less its margins; it fits when layout of that one container
// reaches the end of the text. A leading form feed (alone or after one newline) and a trailing one
// are ignored; any other form feed ends the page, so such a text does not fit. Made per question.
// The text view is a widget: the process needs a QApplication (the extended RTF writer asks this
// helper for single-page sections).
#include <QSizeF>
#include <memory>

#include <qlyappkit/geometry/XQMargins.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

class TextContainer;

class XQPageFittingHelper : public LayoutManagerDelegate {
public:
    /// The text view's frame before setPageSize().
    static constexpr double InitialWidth = 375.0;
    static constexpr double InitialHeight = 500.0;

    XQPageFittingHelper();
    XQPageFittingHelper(QSizeF pageSize, const XQMargins& margins);
    ~XQPageFittingHelper() override;

    /// The text view becomes (page width − (first + second margin + line-fragment padding)) ×
    /// (page height − (third + fourth margin)).
    void setPageSize(QSizeF pageSize, const XQMargins& margins);
    /// Lays the text out and sets textFitsOnOnePage(); a null or empty text fits.
    void layoutWithText(const AttributedString* text);
    void layoutWithText(const AttributedString& text) { layoutWithText(&text); }
    bool textFitsOnOnePage() const { return m_textFitsOnOnePage; }

    /// The number of pages of this size the text takes when pages are added as it flows, a form feed
    /// starting a new page and keep-with-next paragraphs kept with the next (at least 1).
    int numberOfPagesForText(const AttributedString& text);

    const TextView& textView() const { return m_textView; }
    LayoutManager& layoutManager() { return m_layoutManager; }

    void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& layoutManager, TextContainer* container,
                                                        bool atEnd) override;

private:
    TextStorage m_storage;
    LayoutManager m_layoutManager;
    TextView m_textView;
    TextContainer* m_container = nullptr;
    bool m_textFitsOnOnePage = false;
};

/// Whether the text fits on one page of pageSize with the margins (left, right, top, bottom).
/// Needs a QGuiApplication (fonts).
bool fitsOnOnePageWithPageSize(const AttributedString& text, QSizeF pageSize, double leftMargin, double rightMargin,
                               double topMargin, double bottomMargin);
bool fitsOnOnePageWithPageSize(const AttributedString& text, QSizeF pageSize, const XQMargins& margins);

} // namespace qly

#include <qlyappkit/text/fitting/XQPageFittingHelper.h>

#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/text/fitting/XQKeepWithNextTypesetter.h>

namespace qly {

namespace {

constexpr char16_t FormFeed = u'\f';

// Adds a page whenever layout fills the last one, as a page view does.
class PageAdder : public LayoutManagerDelegate {
public:
    explicit PageAdder(QSizeF pageSize) : m_pageSize(pageSize) { }
    void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& layoutManager, TextContainer* container,
                                                        bool atEnd) override
    {
        if (!atEnd && container == layoutManager.textContainers().back())
            layoutManager.addTextContainer(std::make_unique<TextContainer>(m_pageSize));
    }

private:
    QSizeF m_pageSize;
};

} // namespace

XQPageFittingHelper::XQPageFittingHelper() : m_textView(QRectF(0, 0, InitialWidth, InitialHeight))
{
    m_layoutManager.setTextStorage(&m_storage);
    m_container =
        m_layoutManager.addTextContainer(std::make_unique<TextContainer>(QSizeF(InitialWidth, InitialHeight)));
    m_container->setWidthTracksTextView(true);
    m_container->setHeightTracksTextView(true);
    m_textView.setTextContainer(m_container);
    m_textView.setTextContainerInset(QSizeF(0, 0));
    m_textView.setHorizontallyResizable(false);
    m_textView.setVerticallyResizable(false);
}

XQPageFittingHelper::XQPageFittingHelper(QSizeF pageSize, const XQMargins& margins) : XQPageFittingHelper()
{
    setPageSize(pageSize, margins);
}

XQPageFittingHelper::~XQPageFittingHelper() { m_layoutManager.setDelegate(nullptr); }

void XQPageFittingHelper::setPageSize(QSizeF pageSize, const XQMargins& margins)
{
    m_textView.setFrame(QRectF(0, 0,
                               pageSize.width() - (margins.left + margins.right + m_container->lineFragmentPadding()),
                               pageSize.height() - (margins.top + margins.bottom)));
}

void XQPageFittingHelper::layoutWithText(const AttributedString* text)
{
    m_textFitsOnOnePage = true;
    if (!text || text->isEmpty())
        return;
    AttributedString copy = *text;
    const qsizetype formFeed = copy.string().indexOf(QChar(FormFeed));
    if (formFeed == 0)
        copy.deleteCharacters(Range{0, 1});
    else if (formFeed == 1 && copy.characterAt(0) == u'\n')
        copy.deleteCharacters(Range{0, 2});
    if (formFeed >= 0 && !copy.isEmpty() && copy.characterAt(copy.length() - 1) == QChar(FormFeed))
        copy.deleteCharacters(Range{copy.length() - 1, 1});
    m_storage.setAttributedString(copy);
    if (copy.isEmpty())
        return;
    m_textFitsOnOnePage = false;
    m_layoutManager.setDelegate(this);
    m_layoutManager.ensureLayoutForAllText();
    m_layoutManager.setDelegate(nullptr);
}

void XQPageFittingHelper::layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& layoutManager,
                                                                         TextContainer* container, bool atEnd)
{
    if (&layoutManager == &m_layoutManager && container == m_container)
        m_textFitsOnOnePage = atEnd;
}

int XQPageFittingHelper::numberOfPagesForText(const AttributedString& text)
{
    TextStorage storage(text);
    LayoutManager pages;
    auto typesetter = std::make_unique<XQKeepWithNextTypesetter>();
    typesetter->setAllowsKeepWithNext(true);
    pages.setTypesetter(std::move(typesetter));
    pages.setTextStorage(&storage);
    pages.addTextContainer(std::make_unique<TextContainer>(m_container->size()));
    PageAdder adder(m_container->size());
    pages.setDelegate(&adder);
    pages.ensureLayoutForAllText();
    pages.setDelegate(nullptr);
    // Pages after the one holding the end stay empty.
    int used = 1;
    for (size_t i = 0; i < pages.textContainers().size(); ++i) {
        if (pages.glyphRangeForTextContainer(pages.textContainers()[i]).length > 0)
            used = int(i) + 1;
    }
    return used;
}

bool fitsOnOnePageWithPageSize(const AttributedString& text, QSizeF pageSize, const XQMargins& margins)
{
    XQPageFittingHelper helper(pageSize, margins);
    helper.layoutWithText(text);
    return helper.textFitsOnOnePage();
}

bool fitsOnOnePageWithPageSize(const AttributedString& text, QSizeF pageSize, double leftMargin, double rightMargin,
                               double topMargin, double bottomMargin)
{
    return fitsOnOnePageWithPageSize(text, pageSize, XQMakeMargins(leftMargin, rightMargin, topMargin, bottomMargin));
}

} // namespace qly

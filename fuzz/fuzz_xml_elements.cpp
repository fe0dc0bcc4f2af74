// Fuzz target for the XML element readers: the input, parsed as an XML document, has its root element
// given to every element reader, none of which may fail. Each value read is written and read again and
// must come back equal (fonts by name and size, print settings field by field, item lists exactly).
#include "FuzzSupport.h"

#include <cmath>
#include <sstream>

#include <qlyappkit/interchange/xml/RichTextElement.h>
#include <qlyappkit/interchange/xml/XMLElements.h>

using namespace qly;

namespace {

// A written element read from a saved and parsed copy, as the next load of the file would.
template <typename Write, typename Read> auto throughDocument(Write write, Read read)
{
    pugi::xml_document document;
    write(document.append_child("Root"));
    std::ostringstream out;
    document.save(out);
    pugi::xml_document again;
    QLY_FUZZ_CHECK(again.load_string(out.str().c_str()));
    return read(again.document_element().first_child());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    pugi::xml_document document;
    if (!document.load_buffer(data, size))
        return 0;
    const pugi::xml_node element = document.document_element();

    const Font font = XQFontFromXMLElement(element);
    QLY_FUZZ_CHECK(font.isValid() && font.pointSize() > 0 && std::isfinite(font.pointSize()));

    const QList<qint64> ids = XQOutlineExpandedStateFromXMLElement(element);
    QLY_FUZZ_CHECK(throughDocument([&](pugi::xml_node p) { XQXMLElementFromOutlineExpandedState(p, ids); },
                                   XQOutlineExpandedStateFromXMLElement)
                   == ids);

    // Print settings pass through the float form, which rounds: written once, they are a fixed point.
    const PrintInfo info = XQPrintInfoFromXMLElement(element);
    QLY_FUZZ_CHECK(info.paperSize().width() > 0 && info.paperSize().height() > 0 && info.scaleFactor() > 0);
    QLY_FUZZ_CHECK(info.pagesAcross() >= 1 && info.pagesDown() >= 1);
    const PrintInfo once =
        throughDocument([&](pugi::xml_node p) { XQXMLElementFromPrintInfo(p, info); }, XQPrintInfoFromXMLElement);
    const PrintInfo twice =
        throughDocument([&](pugi::xml_node p) { XQXMLElementFromPrintInfo(p, once); }, XQPrintInfoFromXMLElement);
    QLY_FUZZ_CHECK(once == twice);

    const AttributedString text = XQAttributedStringFromXMLElement(element);
    QLY_FUZZ_CHECK(text.checkInvariants());
    (void)XQTextAttributesFromXMLElement(element);
    (void)XQTextAttributesFromHexadecimalDataInXMLElement(element);
    (void)XQParagraphStyleFromXMLElement(element);
    return 0;
}

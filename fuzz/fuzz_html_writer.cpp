// Fuzz target for the HTML writer over text read from any RTF: the page must come out without a
// crash, a hang or undefined behaviour, as valid UTF-8, and in its XML form well-formed XML before
// and after the nested-list repair, with no element the text did not ask for (no script, whatever
// the text or its links say).
#include <cstdint>
#include <cstring>

#include <QStringDecoder>
#include <pugixml.hpp>

#include <qlyappkit/formats/html/HTMLListRepair.h>
#include <qlyappkit/platform/html/HTMLWriter.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include "FuzzSupport.h"

namespace {

// Every element name the writer may write.
bool isWritersElement(const char* name)
{
    for (const char* known : {"html", "head", "meta", "title", "style", "body", "p",  "h1", "h2",    "h3", "h4",
                              "h5",   "h6",   "span", "a",     "br",    "ul",   "ol", "li", "table", "tr", "td"}) {
        if (std::strcmp(name, known) == 0)
            return true;
    }
    return false;
}

void checkWellFormed(const QString& page)
{
    const QByteArray bytes = page.toUtf8();
    pugi::xml_document doc;
    QLY_FUZZ_CHECK(doc.load_buffer(bytes.constData(), size_t(bytes.size())));
    for (const pugi::xpath_node& node : doc.select_nodes("//*"))
        QLY_FUZZ_CHECK(isWritersElement(node.node().name()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qly::fuzz::prepareEnvironment();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QVariantMap documentAttributes;
    const std::optional<qly::AttributedString> text = qly::attributedStringFromRTF(bytes, &documentAttributes);
    if (!text)
        return 0;
    const qly::Range all{0, text->length()};
    const QByteArray html = qly::HTMLFromRange(*text, all, documentAttributes);
    QStringDecoder decoder(QStringDecoder::Utf8);
    decoder.decode(html);
    QLY_FUZZ_CHECK(!decoder.hasError());

    documentAttributes.insert(qly::ExcludedElementsDocumentAttribute, QStringList());
    QString xhtml = QString::fromUtf8(qly::HTMLFromRange(*text, all, documentAttributes));
    checkWellFormed(xhtml);
    qly::fixUpNestedHTMLLists(xhtml);
    checkWellFormed(xhtml);
    return 0;
}

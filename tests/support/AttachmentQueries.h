#pragma once
// The attachments of a text, in order, for tests that count and measure pictures.
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly::testsupport {

inline std::vector<TextAttachment> attachmentsIn(const AttributedString& text)
{
    std::vector<TextAttachment> found;
    text.enumerateAttribute(AttachmentAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range) {
        if (v.isValid())
            found.push_back(v.value<TextAttachment>());
        return true;
    });
    return found;
}

} // namespace qly::testsupport

#pragma once
// The manuscript conversions qly convert applies between reading and writing, whatever the formats:
// italics to underlines, em dashes to hyphens, ellipses to full stops.
#include <qlyappkit/platform/text/AttributedString.h>

#include "CommandLine.h"

namespace qly::tool {

void addManuscriptOptions(CommandLine& line);
/// ExitSuccess when the options make sense together; otherwise prints why and returns ExitUsage.
int checkManuscriptOptions(const CommandLine& line);
/// The text with the conversions the options ask for (the text itself when they ask for none).
AttributedString applyManuscriptOptions(const CommandLine& line, const AttributedString& text);

} // namespace qly::tool

#pragma once
// Wrapping attribute runs in text tags that survive the platform's RTF writer, so that the RTF
// passes can find each run again and write it as what it stands for (a footnote, an annotation …).
#include <QString>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// "\b1"/"\b0" + "\i1"/"\i0" + "\ul"/"\ul0" for the bold and italic traits and the underline at index;
/// "\b0 \i0 \ul0 " at or past the end.
QString formatPlaceholderStringForAttributesAtIndex(const AttributedString& text, qsizetype index);

/// Puts "<<**start(payload)**>>" before and "<<**end(payload)**>>" after every run of the attribute
/// (payloads: the formatting at the run's start and just after it). With trimWhitespace, white space
/// at the run's ends stays outside the tags. With formatTagsWithAttributeValue, "%@" in the tag names
/// is replaced by the run's value as text. The tags take the run's attributes less the enclosed
/// attribute, footnote and annotation attributes, attachments and (except at a paragraph start) the
/// paragraph style. Returns whether any run was found.
bool encloseAttribute(AttributedString& text, const QString& attributeName, const QString& startTagName,
                      const QString& endTagName, bool trimWhitespace, bool formatTagsWithAttributeValue = false);

} // namespace qly

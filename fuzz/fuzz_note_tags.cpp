// Fuzz target for the note-tag readers: the input, as UTF-8 text, is read by both variants (with and
// without removing the line feeds around annotations). Each must finish in time linear in the text,
// keep the model's invariants and only take characters out (the markers), and every note it marks
// must carry a value of the right kind. A text read this way that holds no marker text of its own
// must come back the same from its tags: converting its notes to tags and reading those again gives
// the same characters, the same annotation colours (to the six decimals the tags hold) and the same
// footnote, preserve-formatting and keep-with-next runs.
#include "FuzzSupport.h"

#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/notes/NoteTags.h>

using namespace qly;

namespace {

// True when `out` is `in` with some characters taken out.
bool isSubsequence(const QString& out, const QString& in)
{
    qsizetype j = 0;
    for (qsizetype i = 0; i < in.size() && j < out.size(); ++i) {
        if (in.at(i) == out.at(j))
            ++j;
    }
    return j == out.size();
}

bool holdsMarkerText(const QString& s)
{
    for (const QString* marker : {&XQAnnotationOpeningReadForm, &XQAnnotationHexOpeningReadForm,
                                  &XQAnnotationClosingReadForm, &XQFootnoteOpeningReadForm, &XQFootnoteClosingReadForm,
                                  &XQPreserveFormattingOpeningReadForm, &XQPreserveFormattingClosingReadForm}) {
        if (s.contains(*marker, Qt::CaseInsensitive))
            return true;
    }
    return s.contains(XQKeepWithNextMarker);
}

// The annotation colour as the tags write it; empty for none.
QString annotationAt(const AttributedString& text, qsizetype i)
{
    const QVariant value = text.attribute(XQAnnotationAttributeName, i);
    return value.isValid() ? annotationOpeningTag(value.value<Color>()) : QString();
}

void checkNoteValues(const AttributedString& text)
{
    text.enumerateAttribute(XQAnnotationAttributeName, Range{0, text.length()}, [](const QVariant& value, Range) {
        QLY_FUZZ_CHECK(!value.isValid() || value.metaType() == QMetaType::fromType<Color>());
        return true;
    });
    for (const QString* name :
         {&XQFootnoteAttributeName, &XQPreserveFormattingAttributeName, &XQKeepWithNextAttributeName}) {
        text.enumerateAttribute(*name, Range{0, text.length()}, [](const QVariant& value, Range) {
            QLY_FUZZ_CHECK(!value.isValid() || (value.typeId() == QMetaType::Bool && value.toBool()));
            return true;
        });
    }
}

void checkSameNotes(const AttributedString& expected, const AttributedString& actual)
{
    QLY_FUZZ_CHECK(expected.string() == actual.string());
    for (qsizetype i = 0; i < expected.length(); ++i) {
        QLY_FUZZ_CHECK(annotationAt(expected, i) == annotationAt(actual, i));
        for (const QString* name :
             {&XQFootnoteAttributeName, &XQPreserveFormattingAttributeName, &XQKeepWithNextAttributeName})
            QLY_FUZZ_CHECK(expected.attribute(*name, i).toBool() == actual.attribute(*name, i).toBool());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    const QString input = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    const AttributedString text(input);
    for (bool removeNewlines : {false, true}) {
        const AttributedString read =
            attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(text, removeNewlines);
        QLY_FUZZ_CHECK(read.checkInvariants());
        QLY_FUZZ_CHECK(isSubsequence(read.string(), input));
        checkNoteValues(read);
        if (removeNewlines || holdsMarkerText(read.string()))
            continue;
        const AttributedString tagged = attributedStringByConvertingAttributesToTags(read);
        QLY_FUZZ_CHECK(tagged.checkInvariants());
        checkSameNotes(read, attributedStringByConvertingTagsToAttributes(tagged));
    }
    return 0;
}

#include <qlyappkit/text/notes/NoteRuns.h>

#include <qlyappkit/text/attributes/XQAttributeNames.h>

#include <algorithm>

namespace qly {

std::vector<InlineNoteRun> inlineNoteRuns(const AttributedString& text)
{
    const struct {
        const QString& attribute;
        InlineNoteKind kind;
    } kinds[] = {{XQAnnotationAttributeName, InlineNoteKind::Annotation},
                 {XQFootnoteAttributeName, InlineNoteKind::Footnote},
                 {XQPreserveFormattingAttributeName, InlineNoteKind::PreserveFormatting}};
    std::vector<InlineNoteRun> runs;
    for (const auto& kind : kinds) {
        text.enumerateAttribute(kind.attribute, Range{0, text.length()}, [&](const QVariant& value, Range range) {
            if (value.isValid())
                runs.push_back(InlineNoteRun{kind.kind, range});
            return true;
        });
    }
    std::stable_sort(runs.begin(), runs.end(), [](const InlineNoteRun& a, const InlineNoteRun& b) {
        return a.range.location != b.range.location ? a.range.location < b.range.location : a.kind < b.kind;
    });
    return runs;
}

} // namespace qly

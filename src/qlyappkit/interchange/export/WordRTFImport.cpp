#include "WordRTFImport.h"

#include <qlyappkit/interchange/export/Documents.h>
#include <qlyappkit/interchange/rtf/RTFExportRepairs.h>
#include <qlyappkit/platform/services/Localization.h>

namespace qly {

std::optional<WordRTFImport> importWordRTF(const QByteArray& rtf, const ExtendedRTFImportOptions& options, Error* error,
                                           QStringList* warnings)
{
    WordRTFImport imported;
    std::optional<AttributedString> text =
        attributedStringFromExtendedRTF(rtf, &imported.documentAttributes, {}, options, &imported.report);
    if (!text) {
        setError(error, XQDocumentErrorDomain, XQDocumentNotRTFError,
                 localized("the data is not RTF: it does not begin with {\\rtf"));
        return std::nullopt;
    }
    if (!imported.report.parse && warnings) {
        warnings->append(localized("%1 at byte %2; the text read up to there is used")
                             .arg(imported.report.parse.description())
                             .arg(imported.report.parse.offset));
    }
    removeWhiteHighlights(*text);
    fixUpListIndents(*text);
    imported.text = std::move(*text);
    return imported;
}

} // namespace qly

#include <qlyappkit/interchange/rtf/RTFFootnoteStyles.h>

namespace qly {

QString RTFFootnoteStyleControlForFootnoteStyle(int footnoteStyle, bool isEndnote, bool isSection)
{
    static const char* const codes[] = {"ftnnar", "ftnnalc", "ftnnauc", "ftnnrlc", "ftnnruc", "ftnnchi"};
    QString control = QStringLiteral("\\");
    if (isSection)
        control.append(QLatin1Char('s'));
    if (isEndnote)
        control.append(QLatin1Char('a'));
    if (unsigned(footnoteStyle) < std::size(codes))
        control.append(QLatin1String(codes[footnoteStyle]));
    return control;
}

} // namespace qly

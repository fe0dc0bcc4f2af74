#include "ManuscriptOptions.h"

#include <qlyappkit/formats/manuscript/ManuscriptEmphasis.h>
#include <qlyappkit/formats/manuscript/ManuscriptPunctuation.h>

namespace qly::tool {

namespace {

const QString ManuscriptOption = QStringLiteral("manuscript");
const QString KeepItalicsOption = QStringLiteral("keep-italics");
const QString DashesOption = QStringLiteral("dashes");
const QString EllipsesOption = QStringLiteral("ellipses");

int dashMode(const CommandLine& line)
{
    return line.isSet(DashesOption) ? line.value(DashesOption).toInt() : int(XQLeaveEmDashes);
}

} // namespace

void addManuscriptOptions(CommandLine& line)
{
    line.addOption({ManuscriptOption, QStringLiteral("Manuscript style: italics become underlines.")});
    line.addOption({KeepItalicsOption, QStringLiteral("With --manuscript: leaves italics as they are.")});
    line.addOption({DashesOption, QStringLiteral("Em dashes: 0 as they are, 1 two hyphens, 2 three hyphens."),
                    QStringLiteral("0|1|2")});
    line.addOption({EllipsesOption, QStringLiteral("Ellipsis characters become three full stops.")});
}

int checkManuscriptOptions(const CommandLine& line)
{
    if (line.isSet(DashesOption)) {
        const QString value = line.value(DashesOption);
        if (value != u'0' && value != u'1' && value != u'2')
            return line.usageError(QStringLiteral("--dashes takes 0, 1 or 2, not '%1'").arg(value));
    }
    if (line.isSet(KeepItalicsOption) && !line.isSet(ManuscriptOption))
        return line.usageError(QStringLiteral("--keep-italics goes with --manuscript"));
    return ExitSuccess;
}

AttributedString applyManuscriptOptions(const CommandLine& line, const AttributedString& text)
{
    AttributedString result = text;
    if (line.isSet(ManuscriptOption) && !line.isSet(KeepItalicsOption))
        result = attributedStringByConvertingItalicsToUnderlines(result);
    if (dashMode(line) != XQLeaveEmDashes || line.isSet(EllipsesOption))
        result = attributedStringByConvertingEmDashesToHyphens(result, dashMode(line), line.isSet(EllipsesOption));
    return result;
}

} // namespace qly::tool

#include <qlyappkit/interchange/rtf/RTFBookmarks.h>

#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/services/UserDefaults.h>

namespace qly {

namespace {
constexpr qsizetype MaxBookmarkNameLength = 30;
}

QString RTFBookmarkNameForString(const QString& string)
{
    // Decomposing drops accents as combining marks, which are then removed with other specials.
    const QString decomposed = string.normalized(QString::NormalizationForm_KD);
    QString name;
    name.reserve(decomposed.size());
    for (const QChar c : decomposed) {
        if (c.isSpace() || c == QChar(0x2028) || c == QChar(0x2029) || c == QChar(0x85))
            name.append(QLatin1Char('_'));
        else if (c.unicode() < 0x80 && (c.isLetterOrNumber() || c == QLatin1Char('_')))
            name.append(c);
        else if (c.unicode() >= 0x80 && c.isLetterOrNumber())
            name.append(c);
    }
    while (name.contains(QLatin1String("__")))
        name.replace(QLatin1String("__"), QLatin1String("_"));
    if (UserDefaults::standard().boolForKey(RemoveUnderscoresInRTFBookmarksDefault))
        name.remove(QLatin1Char('_'));
    if (name.size() > MaxBookmarkNameLength)
        name.truncate(MaxBookmarkNameLength);
    return name;
}

} // namespace qly

#include <qlyappkit/formats/html/HTMLFriendlyString.h>

#include <QHash>
#include <iterator>

#include <qlyappkit/formats/html/HTMLExportConstants.h>

namespace qly {

namespace {

struct Entity {
    char16_t character;
    const char* reference;
};

// The table in its order. Its Latin-1 part departs from the HTML 4 names on purpose (see the header).
constexpr Entity Entities[] = {
    {u'&', "&amp;"},      {u'"', "&quot;"},     {u'\'', "&apos;"},    {u'<', "&lt;"},       {u'>', "&gt;"},
    {0x00A1, "&iexcl;"},  {0x00A2, "&cent;"},   {0x00A3, "&pound;"},  {0x00A5, "&yen;"},    {0x00A7, "&sect;"},
    {0x00A9, "&copy;"},   {0x00AB, "&laquo;"},  {0x00AC, "&not;"},    {0x00AD, "&shy;"},    {0x00AE, "&reg;"},
    {0x00B0, "&deg;"},    {0x00B1, "&plusmn;"}, {0x00B2, "&sup2;"},   {0x00B3, "&sup3;"},   {0x00B4, "&acute;"},
    {0x00B5, "&micro;"},  {0x00B6, "&para;"},   {0x00B7, "&middot;"}, {0x00B9, "&sup1;"},   {0x00BA, "&ordm;"},
    {0x00BB, "&raquo;"},  {0x00BC, "&frac14;"}, {0x00BD, "&frac12;"}, {0x00BE, "&frac34;"}, {0x00BF, "&iquest;"},
    {0x00C0, "&Agrave;"}, {0x00C1, "&Aacute;"}, {0x00C2, "&Acirc;"},  {0x00C3, "&Atilde;"}, {0x00C4, "&Auml;"},
    {0x00C5, "&Aring;"},  {0x00C6, "&AElig;"},  {0x00C7, "&Ccedil;"}, {0x00C8, "&Egrave;"}, {0x00C9, "&Eacute;"},
    {0x00CA, "&Ecirc;"},  {0x00CB, "&Euml;"},   {0x00CC, "&lgrave;"}, {0x00CD, "&lacute;"}, {0x00CE, "&lcirc;"},
    {0x00CF, "&luml;"},   {0x00D0, "&ETH;"},    {0x00D1, "&Ntilde;"}, {0x00D2, "&Ograve;"}, {0x00D3, "&Oacute;"},
    {0x00D4, "&Ocirc;"},  {0x00D5, "&Otilde;"}, {0x00D6, "&Ouml;"},   {0x00D7, "&times;"},  {0x00D8, "&Oslash;"},
    {0x00D9, "&Ugrave;"}, {0x00DA, "&Uacute;"}, {0x00DB, "&Ucirc;"},  {0x00DC, "&Uuml;"},   {0x00DD, "&Yacute;"},
    {0x00DE, "&THORN;"},  {0x00DF, "&szlig;"},  {0x00E0, "&agrave;"}, {0x00E1, "&aacute;"}, {0x00E2, "&acirc;"},
    {0x00E3, "&atilde;"}, {0x00E4, "&auml;"},   {0x00E5, "&aring;"},  {0x00E6, "&aelig;"},  {0x00E7, "&ccedil;"},
    {0x00E8, "&egrave;"}, {0x00E9, "&eacute;"}, {0x00EA, "&ecirc;"},  {0x00EB, "&euml;"},   {0x00EC, "&igrave;"},
    {0x00ED, "&iacute;"}, {0x00EF, "&iuml;"},   {0x00F0, "&eth;"},    {0x00F1, "&ntilde;"}, {0x00F2, "&ograve;"},
    {0x00F3, "&oacute;"}, {0x00F4, "&ocirc;"},  {0x00F5, "&otilde;"}, {0x00F6, "&ouml;"},   {0x00F7, "&divide;"},
    {0x00F8, "&oslash;"}, {0x00F9, "&ugrave;"}, {0x00FA, "&uacute;"}, {0x00FB, "&ucirc;"},  {0x00FC, "&uuml;"},
    {0x00FD, "&yacute;"}, {0x00FE, "&yuml;"},   {0x0152, "&OElig;"},  {0x0153, "&oelig;"},  {0x0160, "&Scaron;"},
    {0x0161, "&scaron;"}, {0x0178, "&Yuml;"},   {0x0192, "&fnof;"},   {0x2002, "&ensp;"},   {0x2003, "&emsp;"},
    {0x2009, "&thinsp;"}, {0x200C, "&zwnj;"},   {0x200D, "&zwj;"},    {0x200E, "&lrm;"},    {0x200F, "&rlm;"},
    {0x2013, "&ndash;"},  {0x2014, "&mdash;"},  {0x2018, "&lsquo;"},  {0x2019, "&rsquo;"},  {0x201A, "&sbquo;"},
    {0x201C, "&ldquo;"},  {0x201D, "&rdquo;"},  {0x201E, "&bdquo;"},  {0x2020, "&dagger;"}, {0x2021, "&Dagger;"},
    {0x2022, "&bull;"},   {0x2026, "&hellip;"}, {0x2032, "&prime;"},  {0x2033, "&Prime;"},  {0x2039, "&lsaquo;"},
    {0x203A, "&rsaquo;"}, {0x20AC, "&euro;"},   {0x2122, "&trade;"},  {0x2190, "&larr;"},   {0x2192, "&rarr;"},
    {0x21D0, "&lArr;"},   {0x21D2, "&rArr;"},   {0x221A, "&radic;"},  {0x221E, "&infin;"},  {0x2234, "&there4;"},
    {0x21D2, "&rArr;"},
};

// The first reference of each character (a later entry for the same character finds nothing left).
const QHash<char16_t, QLatin1String>& referenceByCharacter()
{
    static const QHash<char16_t, QLatin1String> map = [] {
        QHash<char16_t, QLatin1String> m;
        for (const Entity& e : Entities) {
            if (!m.contains(e.character))
                m.insert(e.character, QLatin1String(e.reference));
        }
        return m;
    }();
    return map;
}

} // namespace

const QList<QVariantMap>& HTMLCharacterEntityReferences()
{
    static const QList<QVariantMap> table = [] {
        QList<QVariantMap> list;
        list.reserve(std::size(Entities));
        for (const Entity& e : Entities)
            list.append(QVariantMap{{XQHTMLEntityCharacterKey, QString(QChar(e.character))},
                                    {XQHTMLEntityReferenceKey, QString::fromLatin1(e.reference)}});
        return list;
    }();
    return table;
}

QString HTMLFriendlyString(const QString& text)
{
    const QHash<char16_t, QLatin1String>& references = referenceByCharacter();
    QString out;
    out.reserve(text.size() + text.size() / 8);
    qsizetype plainStart = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c < u'"' || (c > u'>' && c < 0x00A1))
            continue; // the common case: no entry
        const auto it = references.constFind(c);
        if (it == references.constEnd())
            continue;
        out.append(QStringView(text).mid(plainStart, i - plainStart));
        out.append(*it);
        plainStart = i + 1;
    }
    if (plainStart == 0)
        return text;
    out.append(QStringView(text).mid(plainStart));
    return out;
}

} // namespace qly

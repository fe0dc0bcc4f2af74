#include <qlyappkit/formats/opml/OPMLText.h>

namespace qly {

namespace {

struct Reference {
    QLatin1StringView text; // what follows the "&", ";" included
    QChar replacement;
};

// The attribute escapes in the order they are undone. Every escape has the form "&name;" with no "&" or
// ";" inside, and each replacement is a character that no escape contains, so one left-to-right pass
// gives what replacing them one after the other over the whole string gives.
constexpr Reference AttributeEscapes[] = {
    {QLatin1StringView("#10;"), QChar(u'\n')},  {QLatin1StringView("quot;"), QChar(u'"')},
    {QLatin1StringView("apos;"), QChar(u'\'')}, {QLatin1StringView("lt;"), QChar(u'<')},
    {QLatin1StringView("gt;"), QChar(u'>')},    {QLatin1StringView("amp;"), QChar(u'&')},
};

constexpr Reference ElementEntities[] = {
    {QLatin1StringView("amp"), QChar(u'&')},  {QLatin1StringView("#10"), QChar(u'\n')},
    {QLatin1StringView("quot"), QChar(u'"')}, {QLatin1StringView("apos"), QChar(u'\'')},
    {QLatin1StringView("lt"), QChar(u'<')},   {QLatin1StringView("gt"), QChar(u'>')},
};

bool endsEntityName(QChar c)
{
    return c == u';' || c == u'&' || c == u'<' || c == u'>' || c == u'"' || c == u'\'' || c.isSpace();
}

} // namespace

namespace {

bool startsWithIgnoringAsciiCase(QStringView text, QLatin1StringView prefix)
{
    return text.startsWith(prefix, Qt::CaseInsensitive);
}

bool startsWithIgnoringAsciiCase(QByteArrayView text, QLatin1StringView prefix)
{
    if (text.size() < prefix.size())
        return false;
    for (qsizetype i = 0; i < prefix.size(); ++i) {
        char c = text[i];
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
        if (c != prefix.at(i).toLatin1())
            return false;
    }
    return true;
}

// One pass over text; emit(piece) receives the decoded text in pieces, a replaced escape as its
// character (ASCII, so one code unit in either encoding).
template <typename View, typename Emit> void translateOPMLTags(View text, Emit emit)
{
    qsizetype copied = 0;
    qsizetype at = text.indexOf('&');
    while (at >= 0) {
        const View rest = text.sliced(at + 1);
        for (const Reference& escape : AttributeEscapes) {
            if (startsWithIgnoringAsciiCase(rest, escape.text)) {
                emit(text.sliced(copied, at - copied));
                emit(escape.replacement.toLatin1());
                copied = at + 1 + escape.text.size();
                break;
            }
        }
        at = text.indexOf('&', std::max(copied, at + 1));
    }
    emit(text.sliced(copied));
}

} // namespace

QString stringByTranslatingOPMLTagsFromString(const QString& string)
{
    if (!string.contains(u'&'))
        return string;
    QString out;
    out.reserve(string.size());
    translateOPMLTags(QStringView(string), [&out](auto piece) { out.append(piece); });
    return out;
}

void appendTranslatingOPMLTags(QByteArray& out, const char* utf8, qsizetype size)
{
    const QByteArrayView text(utf8, size);
    if (!text.contains('&')) {
        out.append(text);
        return;
    }
    translateOPMLTags(text, [&out](auto piece) { out.append(piece); });
}

QString OPMLElementTextFromRawText(QStringView raw)
{
    qsizetype at = raw.indexOf(u'&');
    if (at < 0)
        return raw.toString();
    QString out;
    out.reserve(raw.size());
    qsizetype copied = 0;
    while (at >= 0) {
        // The name runs to the first character that cannot be part of it; only a ";" there makes a reference.
        qsizetype end = at + 1;
        while (end < raw.size() && !endsEntityName(raw[end]))
            ++end;
        qsizetype next = at + 1;
        if (end < raw.size() && raw[end] == u';' && end > at + 1) {
            const QStringView name = raw.mid(at + 1, end - at - 1);
            out += raw.mid(copied, at - copied);
            bool known = false;
            for (const Reference& entity : ElementEntities) {
                if (name == entity.text) {
                    out += entity.replacement;
                    known = true;
                    break;
                }
            }
            if (!known)
                out += name;
            copied = end + 1;
            next = end + 1;
        }
        at = raw.indexOf(u'&', next);
    }
    out += raw.mid(copied);
    return out;
}

} // namespace qly

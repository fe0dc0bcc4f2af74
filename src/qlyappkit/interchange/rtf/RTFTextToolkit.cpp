#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>

#include <QSet>
#include <cmath>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

namespace {

const QString MarkupStartMarker = QStringLiteral("<<**STR_START**>>");
const QString MarkupEndMarker = QStringLiteral("<<**STR_END**>>");
const QString TagOpening = QStringLiteral("<<**");
const QString TagClosing = QStringLiteral(")**>>");
const QString FragmentDocumentHeader = QStringLiteral(
    "{\\rtf1\\ansi\\ansicpg1252\\cocoartf1038\\cocoasubrtf250\n{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;}\n"
    "{\\colortbl;\\red255\\green255\\blue255;}\n\\pard\\f0\\fs24 \\cf0 ");

bool isAsciiDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }
bool isAsciiLetterOrDigit(QChar c)
{
    return isAsciiDigit(c) || (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
        || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'));
}

// True when the backslash at i is a control's own (not itself escaped by an odd run before it).
bool isUnescapedBackslash(const QString& s, qsizetype i)
{
    qsizetype n = 0;
    for (qsizetype j = i - 1; j >= 0 && s.at(j) == QLatin1Char('\\'); --j)
        ++n;
    return n % 2 == 0;
}

qsizetype digitsEnd(const QString& s, qsizetype i)
{
    while (i < s.size() && isAsciiDigit(s.at(i)))
        ++i;
    return i;
}

// Calls fn(controlStart, nameEnd, digitsEnd) for each unescaped "\" + word + digits in the text,
// where word is one of the given names and digits may be empty. fn returns the position to copy from.
template <typename Fn> QString rewriteControls(const QString& s, const QString& word, bool needDigits, Fn fn)
{
    QString out;
    const QString needle = QLatin1Char('\\') + word;
    qsizetype copied = 0;
    qsizetype pos = 0;
    bool changed = false;
    while (true) {
        const qsizetype at = s.indexOf(needle, pos);
        if (at < 0)
            break;
        const qsizetype nameEnd = at + needle.size();
        pos = nameEnd;
        if (!isUnescapedBackslash(s, at))
            continue;
        const qsizetype end = digitsEnd(s, nameEnd);
        if (needDigits && end == nameEnd)
            continue;
        if (out.isEmpty())
            out.reserve(s.size() + 64);
        out.append(QStringView(s).mid(copied, at - copied));
        copied = fn(out, at, nameEnd, end);
        pos = std::max(pos, copied);
        changed = true;
    }
    if (!changed)
        return s;
    out.append(QStringView(s).mid(copied));
    return out;
}

QString renderPlainToRTF(const QString& text)
{
    return QString::fromLatin1(RTFFromRange(AttributedString(text), Range{0, text.size()}));
}

QString between(const QString& rtf, const QString& start, const QString& end)
{
    const qsizetype a = rtf.indexOf(start);
    if (a < 0)
        return QString();
    const qsizetype b = rtf.indexOf(end, a + start.size());
    if (b < 0)
        return QString();
    return rtf.mid(a + start.size(), b - a - start.size());
}

// Remembers the last font and size controls while a scan moves forward through the text.
class FontTagTracker {
public:
    explicit FontTagTracker(const QString& s) : m_s(s) { }
    QString tagAt(qsizetype index)
    {
        for (qsizetype i = m_scanned; i < index; ++i) {
            if (m_s.at(i) != QLatin1Char('\\') || i + 1 >= index || m_s.at(i + 1) != QLatin1Char('f'))
                continue;
            if (i + 2 < index && isAsciiDigit(m_s.at(i + 2))) {
                m_font = m_s.mid(i, digitsEnd(m_s, i + 2) - i);
            } else if (i + 3 < index && m_s.at(i + 2) == QLatin1Char('s') && isAsciiDigit(m_s.at(i + 3))) {
                m_size = m_s.mid(i, digitsEnd(m_s, i + 3) - i);
            }
        }
        m_scanned = std::max(m_scanned, index);
        return m_font + m_size;
    }

private:
    const QString& m_s;
    qsizetype m_scanned = 0;
    QString m_font, m_size;
};

} // namespace

QString RTFEscapedText(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u == '\\' || u == '{' || u == '}') {
            out.append(QLatin1Char('\\'));
            out.append(c);
        } else if (u >= 0x20 && u < 0x7F) {
            out.append(c);
        } else {
            out.append(QStringLiteral("\\uc0\\u%1 ").arg(int(u)));
        }
    }
    return out;
}

QList<RTFFontTableEntry> RTFFontTableInfo(const QString& rtf)
{
    QList<RTFFontTableEntry> entries;
    const Range word = rangeOfUnescapedString(rtf, QStringLiteral("\\fonttbl"));
    if (word.isNotFound())
        return entries;
    const Range group = expandedRangeToIncludeCurlyBracketsAroundRange(rtf, word);
    if (group.isNotFound())
        return entries;
    // The group's inside, without "{\fonttbl" and the closing brace.
    const qsizetype from = word.end();
    qsizetype to = group.end();
    if (to > from && rtf.at(to - 1) == QLatin1Char('}'))
        --to;
    const QStringList parts = rtf.mid(from, to - from).split(QLatin1Char(';'));
    for (const QString& part : parts) {
        const qsizetype slash = part.indexOf(QLatin1Char('\\'));
        if (slash < 0)
            continue;
        qsizetype next = part.indexOf(QLatin1Char('\\'), slash + 1);
        if (next < 0)
            next = part.size();
        const QString control = part.mid(slash + 1, next - slash - 1).trimmed();
        if (control.size() < 2 || control.at(0) != QLatin1Char('f'))
            continue;
        bool digitsOnly = true;
        for (qsizetype i = 1; i < control.size(); ++i)
            digitsOnly = digitsOnly && isAsciiDigit(control.at(i));
        if (!digitsOnly)
            continue;
        QString info = part.mid(next).trimmed();
        // A nested group of the entry ("{\*\panose …}") belongs to it; so does its closing brace.
        while (info.endsWith(QLatin1Char('}')) && info.count(QLatin1Char('}')) > info.count(QLatin1Char('{')))
            info.chop(1);
        entries.append({control, info.trimmed()});
    }
    return entries;
}

Range rangeOfFontWithNumber(const QString& rtf, int n, unsigned options, Range range)
{
    const QString target = QStringLiteral("\\f%1").arg(n);
    Range searchRange = intersectionRange(range, Range{0, rtf.size()});
    while (searchRange.length > 0) {
        const Range found = rangeOfUnescapedString(rtf, target, options, searchRange);
        if (found.isNotFound())
            break;
        if (found.end() >= rtf.size() || !isAsciiLetterOrDigit(rtf.at(found.end())))
            return found;
        if (options & BackwardsSearch)
            searchRange = Range::fromBounds(searchRange.location, found.location);
        else
            searchRange = Range::fromBounds(found.location + 1, searchRange.end());
    }
    return Range::notFound();
}

QString RTFFontTagForIndex(const QString& rtf, qsizetype index)
{
    index = std::clamp<qsizetype>(index, 0, rtf.size());
    QString font, size;
    for (qsizetype i = index - 2; i >= 0 && (font.isEmpty() || size.isEmpty()); --i) {
        if (rtf.at(i) != QLatin1Char('\\') || rtf.at(i + 1) != QLatin1Char('f'))
            continue;
        if (font.isEmpty() && i + 2 < index && isAsciiDigit(rtf.at(i + 2)))
            font = rtf.mid(i, digitsEnd(rtf, i + 2) - i);
        else if (size.isEmpty() && i + 3 < index && rtf.at(i + 2) == QLatin1Char('s') && isAsciiDigit(rtf.at(i + 3)))
            size = rtf.mid(i, digitsEnd(rtf, i + 3) - i);
    }
    return font + size;
}

Range RTFParagraphRangeForRange(const QString& rtf, Range range)
{
    range = intersectionRange(range, Range{0, rtf.size()});
    qsizetype start = range.location;
    while (start > 0 && rtf.at(start - 1) != QLatin1Char('\n'))
        --start;
    qsizetype end = range.end();
    while (end < rtf.size()) {
        const qsizetype lf = rtf.indexOf(QLatin1Char('\n'), end);
        if (lf < 0) {
            end = rtf.size();
            break;
        }
        end = lf + 1;
        if (lf > 0 && rtf.at(lf - 1) == QLatin1Char('\\') && isUnescapedBackslash(rtf, lf - 1))
            break;
    }
    return Range::fromBounds(start, end);
}

QString RTFStringByConvertingMarkup(const QString& string)
{
    if (string.startsWith(QLatin1String("{{")) && string.endsWith(QLatin1String("}}")) && string.size() >= 4)
        return string.mid(2, string.size() - 4);
    QString text = string;
    auto alternate = [&text](const QString& mark, const QString& open, const QString& close) {
        QString out;
        bool opening = true;
        qsizetype pos = 0;
        while (true) {
            const qsizetype at = text.indexOf(mark, pos);
            if (at < 0)
                break;
            out.append(QStringView(text).mid(pos, at - pos));
            out.append(opening ? open : close);
            opening = !opening;
            pos = at + mark.size();
        }
        out.append(QStringView(text).mid(pos));
        text = out;
    };
    alternate(QStringLiteral("_"), QStringLiteral("[u]"), QStringLiteral("[/u]"));
    alternate(QStringLiteral("**"), QStringLiteral("[b]"), QStringLiteral("[/b]"));
    alternate(QStringLiteral("*"), QStringLiteral("[i]"), QStringLiteral("[/i]"));
    text.append(QStringLiteral("[/b][/i][/u]"));
    QString body =
        between(renderPlainToRTF(MarkupStartMarker + text + MarkupEndMarker), MarkupStartMarker, MarkupEndMarker);
    static const std::pair<const char*, const char*> codes[] = {
        {"[u]", "\\ul "}, {"[/u]", "\\ul0 "}, {"[b]", "\\b1 "}, {"[/b]", "\\b0 "}, {"[i]", "\\i1 "}, {"[/i]", "\\i0 "}};
    for (const auto& [code, rtf] : codes)
        body.replace(QLatin1String(code), QLatin1String(rtf), Qt::CaseInsensitive);
    return body;
}

QString RTFFragmentFromString(const QString& string)
{
    return between(renderPlainToRTF(MarkupStartMarker + string + MarkupEndMarker), MarkupStartMarker, MarkupEndMarker);
}

QString stringFromRTFFragment(const QString& fragment)
{
    const QString document = FragmentDocumentHeader + fragment + QStringLiteral("}");
    const std::optional<AttributedString> text = attributedStringFromRTF(document.toLatin1());
    return text ? text->string() : QString();
}

QString RTFAlignmentTagForTextAlignment(int alignment)
{
    switch (alignment) {
    case 1:
        return QStringLiteral("\\qr");
    case 2:
        return QStringLiteral("\\qc");
    case 3:
        return QStringLiteral("\\qj");
    default:
        return QStringLiteral("\\ql");
    }
}

qsizetype replacePlaceholderTagsWithRTF(QString& rtf, const QString& startTagName, const QString& endTagName,
                                        const QString& startRTF, const QString& endRTF)
{
    const QString startOpening = TagOpening + startTagName + QLatin1Char('(');
    const QString endOpening = TagOpening + endTagName + QLatin1Char('(');
    auto unescape = [](QStringView payload) {
        QString p = payload.toString();
        p.replace(QLatin1String("\\\\"), QLatin1String("\\"));
        return p;
    };
    FontTagTracker fonts(rtf);
    QString out;
    qsizetype copied = 0, count = 0;
    while (true) {
        const qsizetype s = rtf.indexOf(startOpening, copied);
        if (s < 0)
            break;
        const qsizetype sClose = rtf.indexOf(TagClosing, s + startOpening.size());
        if (sClose < 0)
            break;
        const qsizetype e = rtf.indexOf(endOpening, sClose + TagClosing.size());
        if (e < 0)
            break;
        const qsizetype eClose = rtf.indexOf(TagClosing, e + endOpening.size());
        if (eClose < 0)
            break;
        if (out.isEmpty())
            out.reserve(rtf.size() + rtf.size() / 8);
        const QString startPayload =
            unescape(QStringView(rtf).mid(s + startOpening.size(), sClose - s - startOpening.size()));
        const QString endPayload =
            unescape(QStringView(rtf).mid(e + endOpening.size(), eClose - e - endOpening.size()));
        out.append(QStringView(rtf).mid(copied, s - copied));
        out.append(startRTF).append(fonts.tagAt(s)).append(startPayload).append(QLatin1Char(' '));
        const qsizetype bodyStart = sClose + TagClosing.size();
        out.append(QStringView(rtf).mid(bodyStart, e - bodyStart));
        out.append(endRTF).append(fonts.tagAt(e)).append(endPayload).append(QLatin1Char(' '));
        copied = eClose + TagClosing.size();
        ++count;
    }
    if (count > 0) {
        out.append(QStringView(rtf).mid(copied));
        rtf = std::move(out);
    }
    return count;
}

void changeRTFBackgroundColorsToRTFHighlightsForMSWord(QString& rtf, bool forMSWord)
{
    rtf = rewriteControls(rtf, QStringLiteral("cb"), true,
                          [&](QString& out, qsizetype, qsizetype nameEnd, qsizetype end) {
                              QStringView digits = QStringView(rtf).mid(nameEnd, end - nameEnd);
                              out.append(QLatin1String("\\highlight"));
                              if (forMSWord && digits == u"1" && end < rtf.size() && rtf.at(end) == QLatin1Char(' '))
                                  out.append(QLatin1Char('0'));
                              else
                                  out.append(digits);
                              return end;
                          });
}

void changeRTFHighlightsToRTFBackgroundColors(QString& rtf)
{
    rtf = rewriteControls(rtf, QStringLiteral("highlight"), true,
                          [&](QString& out, qsizetype, qsizetype nameEnd, qsizetype end) {
                              QStringView digits = QStringView(rtf).mid(nameEnd, end - nameEnd);
                              out.append(QLatin1String("\\cb"));
                              if (digits != u"0")
                                  out.append(digits);
                              return end;
                          });
}

void fixUpDefaultFont(QString& rtf)
{
    const Range table = rangeOfString(rtf, QStringLiteral("{\\fonttbl"), CaseInsensitiveSearch);
    if (table.isNotFound())
        return;
    const Range deff = rangeOfString(rtf, QStringLiteral("\\deff"), BackwardsSearch, Range{0, table.location});
    if (deff.isNotFound())
        return;
    const qsizetype digitsEndAt = digitsEnd(rtf, deff.end());
    if (digitsEndAt == deff.end())
        return;
    const int n = rtf.mid(deff.end(), digitsEndAt - deff.end()).toInt();
    if (n == 0)
        return;
    rtf.replace(deff.end(), digitsEndAt - deff.end(), QStringLiteral("0"));
    // One scan swaps the two numbers, as replacing 0 by a placeholder, N by 0 and the placeholder by N would.
    rtf = rewriteControls(rtf, QStringLiteral("f"), true,
                          [&](QString& out, qsizetype at, qsizetype nameEnd, qsizetype end) {
                              if (end < rtf.size() && isAsciiLetterOrDigit(rtf.at(end))) {
                                  out.append(QStringView(rtf).mid(at, end - at));
                                  return end;
                              }
                              const int number = QStringView(rtf).mid(nameEnd, end - nameEnd).toInt();
                              out.append(QLatin1String("\\f"));
                              if (number == 0)
                                  out.append(QString::number(n));
                              else if (number == n)
                                  out.append(QLatin1Char('0'));
                              else
                                  out.append(QStringView(rtf).mid(nameEnd, end - nameEnd));
                              return end;
                          });
}

void fixUpRTFLists(QString& rtf, double appKitVersion)
{
    if (std::floor(appKitVersion) > 949)
        return;
    const QString word = QStringLiteral("\\leveltext");
    qsizetype pos = 0;
    while (true) {
        const qsizetype at = rtf.indexOf(word, pos);
        if (at < 0)
            return;
        pos = at + word.size();
        const qsizetype close = rtf.indexOf(QLatin1Char('}'), pos);
        if (close < 0)
            return;
        const qsizetype dot = rtf.indexOf(QLatin1Char('.'), pos);
        if (dot < 0 || dot > close)
            continue;
        const qsizetype quote = rtf.lastIndexOf(QLatin1Char('\''), dot);
        if (quote < pos || dot - quote != 3)
            continue;
        if (rtf.mid(quote + 1, 2) == QLatin1String("05"))
            rtf.replace(quote + 1, 2, QStringLiteral("00"));
    }
}

void fixUpRightMargins(QString& rtf)
{
    rtf = rewriteControls(
        rtf, QStringLiteral("ri0"), false, [&](QString& out, qsizetype at, qsizetype nameEnd, qsizetype) {
            const QChar next = nameEnd < rtf.size() ? rtf.at(nameEnd) : QChar();
            if (next == QLatin1Char(' ') && nameEnd + 1 < rtf.size() && rtf.at(nameEnd + 1) == QLatin1Char('\\'))
                return nameEnd + 1;
            if (next == QLatin1Char(' ') || next == QLatin1Char('\\') || next == QLatin1Char('}'))
                return nameEnd;
            out.append(QStringView(rtf).mid(at, nameEnd - at));
            return nameEnd;
        });
}

QString stylesheetCharacterStylesByInsertingCharacterStylesForColoredHyperlinks(QString& rtf, const QStringList& links)
{
    if (links.isEmpty())
        return QString();
    QSet<QString> targets;
    for (const QString& link : links) {
        QString quoted = link;
        quoted.replace(QLatin1Char('"'), QLatin1String("%22"));
        targets.insert(RTFEscapedText(quoted));
    }
    const QString opening = QStringLiteral("fldinst{HYPERLINK \"");
    const QString closing = QStringLiteral("\"}}{\\fldrslt");
    QString out;
    qsizetype copied = 0, pos = 0;
    while (true) {
        const qsizetype at = rtf.indexOf(opening, pos);
        if (at < 0)
            break;
        const qsizetype targetStart = at + opening.size();
        const qsizetype close = rtf.indexOf(closing, targetStart);
        if (close < 0)
            break;
        pos = close + closing.size();
        if (!targets.contains(rtf.mid(targetStart, close - targetStart)))
            continue;
        out.append(QStringView(rtf).mid(copied, pos - copied));
        out.append(QLatin1String(" \\cs2"));
        copied = pos;
        const qsizetype brace = rtf.indexOf(QLatin1Char('}'), pos);
        const qsizetype ulc = rtf.indexOf(QLatin1String("\\ulc"), pos);
        if (ulc >= 0 && brace >= 0 && ulc < brace) {
            const qsizetype blank = rtf.indexOf(QLatin1Char(' '), ulc);
            if (blank >= 0 && blank < brace) {
                out.append(QStringView(rtf).mid(copied, ulc - copied));
                copied = pos = blank + 1;
            }
        }
    }
    out.append(QStringView(rtf).mid(copied));
    rtf = std::move(out);
    return QStringLiteral("{\\*\\cs1 Default;}{\\*\\cs2 Hyperlink;}");
}

void updateInternalRTFHyperlinks(QString& rtf)
{
    const QString opening = QStringLiteral("{HYPERLINK \"rtfbkmklink://");
    const qsizetype quoteOffset = opening.indexOf(QLatin1Char('"'));
    QString out;
    qsizetype copied = 0, pos = 0;
    while (true) {
        const Range found = rangeOfUnescapedString(rtf, opening, 0, Range::fromBounds(pos, rtf.size()));
        if (found.isNotFound())
            break;
        const qsizetype nameStart = found.end();
        const qsizetype closingQuote = rtf.indexOf(QLatin1Char('"'), nameStart);
        if (closingQuote < 0)
            break;
        out.append(QStringView(rtf).mid(copied, found.location + quoteOffset - copied));
        out.append(QLatin1String("\\\\l "));
        out.append(QStringView(rtf).mid(nameStart, closingQuote - nameStart));
        copied = pos = closingQuote + 1;
    }
    if (copied == 0)
        return;
    out.append(QStringView(rtf).mid(copied));
    rtf = std::move(out);
}

qsizetype removeItapTagsFromRange(QString& rtf, Range range)
{
    range = intersectionRange(range, Range{0, rtf.size()});
    const QString word = QStringLiteral("\\itap");
    QString out;
    qsizetype copied = range.location, pos = range.location, removed = 0;
    out.append(QStringView(rtf).left(range.location));
    while (true) {
        const qsizetype at = rtf.indexOf(word, pos);
        if (at < 0 || at + word.size() > range.end())
            break;
        const qsizetype end = std::min(digitsEnd(rtf, at + word.size()), range.end());
        out.append(QStringView(rtf).mid(copied, at - copied));
        removed += end - at;
        copied = pos = end;
    }
    if (removed == 0)
        return 0;
    out.append(QStringView(rtf).mid(copied));
    rtf = std::move(out);
    return removed;
}

qsizetype RTFGroupStructureProblemOffset(const QString& rtf)
{
    qsizetype depth = 0;
    bool closed = false;
    for (qsizetype i = 0; i < rtf.size(); ++i) {
        const QChar c = rtf.at(i);
        if (depth == 0 && c != QLatin1Char('{')) {
            if (!c.isSpace())
                return i;
        } else if (depth == 0 && closed) {
            return i; // a second outermost group
        } else if (c == QLatin1Char('\\')) {
            ++i;
        } else if (c == QLatin1Char('{')) {
            ++depth;
        } else if (c == QLatin1Char('}') && --depth == 0) {
            closed = true;
        }
    }
    return depth == 0 && closed ? -1 : rtf.size();
}

} // namespace qly

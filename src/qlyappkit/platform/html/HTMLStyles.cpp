#include <qlyappkit/platform/html/HTMLStyles_p.h>

#include <QUrl>
#include <algorithm>
#include <cmath>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly::html {

namespace {

constexpr double Tiny = 0.005;
constexpr int ListIndent = 36; // points per list level, as list paragraphs indent their text
constexpr const char* CellDeclarations = "border: 1px solid #999; padding: 2px 4px; vertical-align: top";

constexpr double DefaultFontSize = 12.0;

Font fontIn(const Attributes& attributes)
{
    const QVariant value = attributes.value(FontAttributeName);
    if (value.metaType() == QMetaType::fromType<Font>() && value.value<Font>().isValid())
        return value.value<Font>();
    return Font::userFont();
}

int channel(double component) { return int(std::lround(std::clamp(component, 0.0, 1.0) * 255.0)); }

QString decimal(double value)
{
    QString text = QString::number(value, 'f', 2);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

void add(QString& declarations, const QString& property, const QString& value)
{
    if (!declarations.isEmpty())
        declarations += QLatin1String("; ");
    declarations += property;
    declarations += QLatin1String(": ");
    declarations += value;
}

std::optional<Color> colorIn(const Attributes& attributes, const QString& name)
{
    const QVariant v = attributes.value(name);
    if (v.metaType() == QMetaType::fromType<Color>())
        return v.value<Color>();
    return std::nullopt;
}

struct NamedNumbering {
    const char* name;
    const char* css;
};
// Numberings CSS cannot show (octal, hexadecimal) are written as decimal numbers.
constexpr NamedNumbering Numberings[] = {
    {"decimal", "decimal"},
    {"lower-roman", "lower-roman"},
    {"upper-roman", "upper-roman"},
    {"lower-alpha", "lower-alpha"},
    {"upper-alpha", "upper-alpha"},
    {"lower-latin", "lower-alpha"},
    {"upper-latin", "upper-alpha"},
    {"octal", "decimal"},
    {"lower-hexadecimal", "decimal"},
    {"upper-hexadecimal", "decimal"},
    {"decimal-leading-zero", "decimal-leading-zero"},
};

struct NamedBullet {
    const char* name;
    const char* css; // a CSS keyword, or null for the character as a marker string
    char16_t character;
};
constexpr NamedBullet Bullets[] = {
    {"disc", "disc", 0x2022},     {"circle", "circle", 0x25E6}, {"square", "square", 0x25AA},
    {"diamond", nullptr, 0x25C6}, {"hyphen", nullptr, 0x2043},  {"check", nullptr, 0x2713},
    {"box", nullptr, 0x2610},
};

QString listDeclarations(const QString& styleType)
{
    return QStringLiteral("list-style-type: %1; margin: 0; padding-left: %2px").arg(styleType).arg(ListIndent);
}

bool isHexDigit(char16_t c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'); }

bool isNoncharacter(char32_t c) { return (c >= 0xFDD0 && c <= 0xFDEF) || (c & 0xFFFE) == 0xFFFE; }

// Characters the text appends as they are: everything but markup, breaks and what HTML forbids.
bool isPlain(char16_t c)
{
    if (c >= 0x20 && c < 0x7F)
        return c != u'&' && c != u'<' && c != u'>';
    if (c < 0x20)
        return c == u'\t';
    if (c <= 0x9F)
        return false; // DEL and the C1 controls (U+0085 is a line break)
    if (c >= 0xD800 && c <= 0xDFFF)
        return false; // surrogates are checked in pairs
    return c != 0x2028 && c != 0xFFFC && !isNoncharacter(c);
}

} // namespace

QString cssLength(double points)
{
    if (!std::isfinite(points) || std::abs(points) < Tiny)
        return QStringLiteral("0");
    return decimal(points) + QLatin1String("px");
}

QString cssColor(const Color& color)
{
    const int r = channel(color.redComponent()), g = channel(color.greenComponent()),
              b = channel(color.blueComponent());
    if (color.alphaComponent() >= 1.0)
        return QStringLiteral("#%1%2%3")
            .arg(r, 2, 16, QLatin1Char('0'))
            .arg(g, 2, 16, QLatin1Char('0'))
            .arg(b, 2, 16, QLatin1Char('0'));
    return QStringLiteral("rgba(%1, %2, %3, %4)")
        .arg(r)
        .arg(g)
        .arg(b)
        .arg(decimal(std::clamp(color.alphaComponent(), 0.0, 1.0)));
}

QString cssString(const QString& text)
{
    QString out = QStringLiteral("'");
    for (const QChar ch : text) {
        const char16_t c = ch.unicode();
        // Hexadecimal escapes for everything that could end the string, the rule, the style
        // element or an attribute around it.
        if (c < 0x20 || c == 0x7F || c == u'\'' || c == u'"' || c == u'\\' || c == u'<' || c == u'>' || c == u'&')
            out += QStringLiteral("\\%1 ").arg(int(c), 0, 16);
        else
            out += ch;
    }
    out += QLatin1Char('\'');
    return out;
}

QString paragraphDeclarations(const ParagraphStyle& style, const QString& font, bool inList, bool pageBreakBefore,
                              bool pageBreakAfter)
{
    QString d = font;
    const double left = inList ? 0.0 : std::max(0.0, style.headIndent());
    const double right = style.tailIndent() < 0 ? -style.tailIndent() : 0.0;
    const double before = std::max(0.0, style.paragraphSpacingBefore());
    const double after = std::max(0.0, style.paragraphSpacing());
    if (left < Tiny && right < Tiny && before < Tiny && after < Tiny)
        add(d, QStringLiteral("margin"), QStringLiteral("0"));
    else
        add(d, QStringLiteral("margin"),
            QStringLiteral("%1 %2 %3 %4").arg(cssLength(before), cssLength(right), cssLength(after), cssLength(left)));
    const double indent = style.firstLineHeadIndent() - style.headIndent();
    if (!inList && std::abs(indent) >= Tiny)
        add(d, QStringLiteral("text-indent"), cssLength(indent));
    switch (style.alignment()) {
    case LeftTextAlignment:
        add(d, QStringLiteral("text-align"), QStringLiteral("left"));
        break;
    case RightTextAlignment:
        add(d, QStringLiteral("text-align"), QStringLiteral("right"));
        break;
    case CenterTextAlignment:
        add(d, QStringLiteral("text-align"), QStringLiteral("center"));
        break;
    case JustifiedTextAlignment:
        add(d, QStringLiteral("text-align"), QStringLiteral("justify"));
        break;
    default:
        break; // natural: the writing direction decides
    }
    // Line heights: a multiple of the font's, else a fixed minimum, else the font's plus extra leading.
    if (style.lineHeightMultiple() > 0)
        add(d, QStringLiteral("line-height"), decimal(style.lineHeightMultiple()));
    else if (style.minimumLineHeight() > 0)
        add(d, QStringLiteral("line-height"), cssLength(style.minimumLineHeight()));
    else if (style.maximumLineHeight() > 0)
        add(d, QStringLiteral("line-height"), cssLength(style.maximumLineHeight()));
    else if (style.lineSpacing() >= Tiny)
        add(d, QStringLiteral("line-height"), QStringLiteral("calc(1.15em + %1)").arg(cssLength(style.lineSpacing())));
    if (pageBreakBefore)
        add(d, QStringLiteral("break-before"), QStringLiteral("page"));
    if (pageBreakAfter)
        add(d, QStringLiteral("break-after"), QStringLiteral("page"));
    return d;
}

QString fontDeclarations(const Attributes& a)
{
    QString d;
    const Font font = fontIn(a);
    add(d, QStringLiteral("font-family"), cssString(font.familyName()));
    add(d, QStringLiteral("font-size"), cssLength(font.pointSize() > 0 ? font.pointSize() : DefaultFontSize));
    return d;
}

QString characterDeclarations(const Attributes& a)
{
    QString d = fontDeclarations(a);
    const Font font = fontIn(a);
    if (font.isBold())
        add(d, QStringLiteral("font-weight"), QStringLiteral("bold"));
    if (font.isItalic())
        add(d, QStringLiteral("font-style"), QStringLiteral("italic"));
    if (const std::optional<Color> c = colorIn(a, ForegroundColorAttributeName))
        add(d, QStringLiteral("color"), cssColor(*c));
    if (const std::optional<Color> c = colorIn(a, BackgroundColorAttributeName))
        add(d, QStringLiteral("background-color"), cssColor(*c));

    const int underline = a.value(UnderlineStyleAttributeName).toInt();
    const int strike = a.value(StrikethroughStyleAttributeName).toInt();
    if (underline || strike) {
        QStringList lines;
        if (underline)
            lines.append(QStringLiteral("underline"));
        if (strike)
            lines.append(QStringLiteral("line-through"));
        add(d, QStringLiteral("text-decoration"), lines.join(QLatin1Char(' ')));
        if (underline == UnderlineStyleDouble || (!underline && strike == UnderlineStyleDouble))
            add(d, QStringLiteral("text-decoration-style"), QStringLiteral("double"));
        if (underline == UnderlineStyleThick || (!underline && strike == UnderlineStyleThick))
            add(d, QStringLiteral("text-decoration-thickness"), QStringLiteral("2px"));
        const std::optional<Color> c =
            colorIn(a, underline ? UnderlineColorAttributeName : StrikethroughColorAttributeName);
        if (c)
            add(d, QStringLiteral("text-decoration-color"), cssColor(*c));
    }
    const int script = a.value(SuperscriptAttributeName).toInt();
    const double baseline = a.value(BaselineOffsetAttributeName).toDouble();
    if (script > 0)
        add(d, QStringLiteral("vertical-align"), QStringLiteral("super"));
    else if (script < 0)
        add(d, QStringLiteral("vertical-align"), QStringLiteral("sub"));
    else if (std::isfinite(baseline) && std::abs(baseline) >= Tiny)
        add(d, QStringLiteral("vertical-align"), cssLength(baseline));
    const double kern = a.value(KernAttributeName).toDouble();
    if (std::isfinite(kern) && std::abs(kern) >= Tiny)
        add(d, QStringLiteral("letter-spacing"), cssLength(kern));
    // Runs of spaces and tabs show as typed.
    add(d, QStringLiteral("white-space"), QStringLiteral("pre-wrap"));
    return d;
}

QString cellDeclarations(const TextBlock& block)
{
    QString d = QLatin1String(CellDeclarations);
    if (block.backgroundColor.alphaComponent() > 0)
        add(d, QStringLiteral("background-color"), cssColor(block.backgroundColor));
    if (block.contentWidth > 0)
        add(d, QStringLiteral("width"), cssLength(block.contentWidth));
    return d;
}

QString tableDeclarations() { return QStringLiteral("border-collapse: collapse"); }

QString emptyItemDeclarations() { return QStringLiteral("list-style-type: none"); }

ListElement listElementFor(const TextList& list)
{
    const QString& format = list.markerFormat;
    const qsizetype open = format.indexOf(QLatin1Char('{'));
    const qsizetype close = open >= 0 ? format.indexOf(QLatin1Char('}'), open) : -1;
    if (open >= 0 && close > open) {
        const QString name = format.mid(open + 1, close - open - 1);
        for (const NamedBullet& b : Bullets) {
            if (name == QLatin1String(b.name))
                return {QStringLiteral("ul"),
                        listDeclarations(b.css ? QString::fromLatin1(b.css) : cssString(QChar(b.character) + u' ')), 1};
        }
        for (const NamedNumbering& n : Numberings) {
            if (name == QLatin1String(n.name))
                return {QStringLiteral("ol"), listDeclarations(QString::fromLatin1(n.css)), list.startingItemNumber};
        }
        return {QStringLiteral("ol"), listDeclarations(QStringLiteral("decimal")), list.startingItemNumber};
    }
    // A literal marker ("-", an arrow) is shown as it is.
    const QString marker = format.trimmed();
    return {QStringLiteral("ul"),
            listDeclarations(marker.isEmpty() ? QStringLiteral("disc") : cssString(marker + u' ')), 1};
}

QString StyleClasses::classFor(QChar prefix, const QString& declarations)
{
    const QString key = prefix + declarations;
    const auto it = m_byKey.constFind(key);
    if (it != m_byKey.constEnd())
        return *it;
    const QString name = prefix + QString::number(++m_counts[prefix]);
    m_byKey.insert(key, name);
    m_rules.emplace_back(name, declarations);
    return name;
}

QString StyleClasses::styleSheet() const
{
    QString sheet;
    for (const auto& [name, declarations] : m_rules)
        sheet += QStringLiteral(".%1 {%2}\n").arg(name, declarations);
    return sheet;
}

void appendEscapedText(QString& out, QStringView text, const QString& lineBreak)
{
    const qsizetype n = text.size();
    qsizetype plainStart = 0;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = text[i].unicode();
        if (isPlain(c))
            continue;
        if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(text[i + 1].unicode())) {
            const char32_t code = QChar::surrogateToUcs4(c, text[i + 1].unicode());
            if (!isNoncharacter(code)) {
                ++i; // the pair passes through
                continue;
            }
        }
        out.append(text.mid(plainStart, i - plainStart));
        switch (c) {
        case u'&':
            out += QLatin1String("&amp;");
            break;
        case u'<':
            out += QLatin1String("&lt;");
            break;
        case u'>':
            out += QLatin1String("&gt;");
            break;
        case 0x2028:
        case 0x0085:
            out += lineBreak;
            break;
        default:
            if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(text[i + 1].unicode()))
                ++i; // a noncharacter above the first plane: left out whole
            else if (QChar::isSurrogate(c))
                out += QChar(QChar::ReplacementCharacter);
            break; // controls, noncharacters, U+FFFC: left out
        }
        plainStart = i + 1;
    }
    out.append(text.mid(plainStart));
}

void appendEscapedAttribute(QString& out, QStringView text)
{
    for (const QChar ch : text) {
        switch (ch.unicode()) {
        case u'&':
            out += QLatin1String("&amp;");
            break;
        case u'"':
            out += QLatin1String("&quot;");
            break;
        case u'<':
            out += QLatin1String("&lt;");
            break;
        case u'>':
            out += QLatin1String("&gt;");
            break;
        default:
            out += ch;
        }
    }
}

std::optional<QString> linkHref(const QVariant& link)
{
    QString target;
    if (link.metaType() == QMetaType::fromType<QUrl>())
        target = link.toUrl().toString(QUrl::FullyEncoded);
    else if (link.metaType() == QMetaType::fromType<QString>())
        target = link.toString();
    else
        return std::nullopt;
    // Browsers drop tabs and line breaks anywhere in a URL and blanks around it before they read the
    // scheme; so does this check, and the target is written that way.
    target.remove(QLatin1Char('\t'));
    target.remove(QLatin1Char('\n'));
    target.remove(QLatin1Char('\r'));
    qsizetype start = 0, end = target.size();
    while (start < end && target.at(start).unicode() <= 0x20)
        ++start;
    while (end > start && target.at(end - 1).unicode() <= 0x20)
        --end;
    target = target.mid(start, end - start);
    if (target.isEmpty())
        return std::nullopt;
    const qsizetype colon = target.indexOf(QLatin1Char(':'));
    if (colon > 0) {
        const QString scheme = target.left(colon).toLower();
        if (scheme == QLatin1String("javascript") || scheme == QLatin1String("vbscript")
            || scheme == QLatin1String("data"))
            return std::nullopt;
    }
    // What a URL may not hold as it is (blanks, controls, quotes, brackets, a stray "%") is
    // percent-encoded; the target stays the same.
    auto isHex = [&](qsizetype i) { return i < target.size() && isHexDigit(target.at(i).unicode()); };
    QString encoded;
    encoded.reserve(target.size());
    for (qsizetype i = 0; i < target.size(); ++i) {
        const char16_t c = target.at(i).unicode();
        const bool strayPercent = c == u'%' && !(isHex(i + 1) && isHex(i + 2));
        if (c <= 0x20 || (c >= 0x7F && c <= 0x9F) || QStringView(u"\"<>\\^`{|}").contains(QChar(c)) || strayPercent) {
            for (const char byte : QString(QChar(c)).toUtf8())
                encoded += QLatin1Char('%')
                    + QString::number(static_cast<unsigned char>(byte), 16).rightJustified(2, u'0').toUpper();
        } else {
            encoded += QChar(c);
        }
    }
    return encoded;
}

} // namespace qly::html

// Archiving of the platform's own value types: Color, Font, ParagraphStyle, TextAttachment and
// AttributedString. The archiver registers these on first use.
#include <qlyappkit/platform/services/KeyedArchiver_p.h>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>

#include <QCborArray>
#include <QSizeF>

namespace qly::archiving::detail {

namespace {

// Field names, one place each.
namespace key {
const QString red = QStringLiteral("red");
const QString green = QStringLiteral("green");
const QString blue = QStringLiteral("blue");
const QString alpha = QStringLiteral("alpha");
const QString family = QStringLiteral("family");
const QString size = QStringLiteral("size");
const QString traits = QStringLiteral("traits");
const QString alignment = QStringLiteral("alignment");
const QString firstLineHeadIndent = QStringLiteral("firstLineHeadIndent");
const QString headIndent = QStringLiteral("headIndent");
const QString tailIndent = QStringLiteral("tailIndent");
const QString lineSpacing = QStringLiteral("lineSpacing");
const QString paragraphSpacing = QStringLiteral("paragraphSpacing");
const QString paragraphSpacingBefore = QStringLiteral("paragraphSpacingBefore");
const QString minimumLineHeight = QStringLiteral("minimumLineHeight");
const QString maximumLineHeight = QStringLiteral("maximumLineHeight");
const QString lineHeightMultiple = QStringLiteral("lineHeightMultiple");
const QString defaultTabInterval = QStringLiteral("defaultTabInterval");
const QString headerLevel = QStringLiteral("headerLevel");
const QString tabStops = QStringLiteral("tabStops");
const QString location = QStringLiteral("location");
const QString textLists = QStringLiteral("textLists");
const QString markerFormat = QStringLiteral("markerFormat");
const QString options = QStringLiteral("options");
const QString startingItemNumber = QStringLiteral("startingItemNumber");
const QString textBlocks = QStringLiteral("textBlocks");
const QString table = QStringLiteral("table");
const QString number = QStringLiteral("number");
const QString columns = QStringLiteral("columns");
const QString startingRow = QStringLiteral("startingRow");
const QString rowSpan = QStringLiteral("rowSpan");
const QString startingColumn = QStringLiteral("startingColumn");
const QString columnSpan = QStringLiteral("columnSpan");
const QString contentWidth = QStringLiteral("contentWidth");
const QString backgroundColor = QStringLiteral("backgroundColor");
const QString fileName = QStringLiteral("fileName");
const QString contents = QStringLiteral("contents");
const QString linkedPath = QStringLiteral("linkedPath");
const QString bounds = QStringLiteral("bounds");
const QString width = QStringLiteral("width");
const QString height = QStringLiteral("height");
const QString string = QStringLiteral("string");
const QString runs = QStringLiteral("runs");
const QString length = QStringLiteral("length");
const QString attributes = QStringLiteral("attributes");
} // namespace key

// Reads fields of a map, remembering whether any present field had the wrong type. Missing fields
// keep the value the caller started from.
class FieldReader {
public:
    explicit FieldReader(const QCborMap& map) : m_map(map) { }
    bool ok() const { return m_ok; }

    void read(const QString& name, double& out)
    {
        const QCborValue v = m_map.value(name);
        if (v.isDouble() || v.isInteger())
            out = v.toDouble();
        else if (!v.isUndefined())
            m_ok = false;
    }
    template <typename Int> void readInt(const QString& name, Int& out)
    {
        const QCborValue v = m_map.value(name);
        if (v.isInteger())
            out = Int(v.toInteger());
        else if (!v.isUndefined())
            m_ok = false;
    }
    void read(const QString& name, QString& out)
    {
        const QCborValue v = m_map.value(name);
        if (v.isString())
            out = v.toString();
        else if (!v.isUndefined())
            m_ok = false;
    }
    /// The array under name (empty when missing; a wrong type is a fault).
    QCborArray array(const QString& name)
    {
        const QCborValue v = m_map.value(name);
        if (!v.isArray() && !v.isUndefined())
            m_ok = false;
        return v.toArray();
    }
    void fail() { m_ok = false; }

private:
    QCborMap m_map;
    bool m_ok = true;
};

// ---- Color

QCborMap encodeColorFields(const Color& c)
{
    QCborMap map;
    map.insert(key::red, c.redComponent());
    map.insert(key::green, c.greenComponent());
    map.insert(key::blue, c.blueComponent());
    map.insert(key::alpha, c.alphaComponent());
    return map;
}

std::optional<Color> decodeColorFields(const QCborMap& map)
{
    double r = 0, g = 0, b = 0, a = 1;
    FieldReader in(map);
    in.read(key::red, r);
    in.read(key::green, g);
    in.read(key::blue, b);
    in.read(key::alpha, a);
    if (!in.ok())
        return std::nullopt;
    return Color(r, g, b, a);
}

// ---- Font

QCborMap encodeFont(const QVariant& value)
{
    const Font font = value.value<Font>();
    QCborMap map;
    map.insert(key::family, font.familyName());
    map.insert(key::size, font.pointSize());
    map.insert(key::traits, qint64(font.traits()));
    return map;
}

QVariant decodeFont(const QCborMap& map)
{
    QString family;
    double size = 0;
    unsigned traits = 0;
    FieldReader in(map);
    in.read(key::family, family);
    in.read(key::size, size);
    in.readInt(key::traits, traits);
    if (!in.ok())
        return {};
    return QVariant::fromValue(Font::fromFamily(family, size, traits));
}

// ---- ParagraphStyle

QCborMap encodeBlock(const TextBlock& block)
{
    QCborMap map;
    if (block.table) {
        QCborMap table;
        table.insert(key::number, tableNumber(block.table.get()));
        table.insert(key::columns, block.table->numberOfColumns);
        map.insert(key::table, table);
    }
    map.insert(key::startingRow, block.startingRow);
    map.insert(key::rowSpan, block.rowSpan);
    map.insert(key::startingColumn, block.startingColumn);
    map.insert(key::columnSpan, block.columnSpan);
    map.insert(key::contentWidth, block.contentWidth);
    map.insert(key::backgroundColor, encodeColorFields(block.backgroundColor));
    return map;
}

std::optional<TextBlock> decodeBlock(const QCborValue& value)
{
    if (!value.isMap())
        return std::nullopt;
    const QCborMap map = value.toMap();
    TextBlock block;
    FieldReader in(map);
    in.readInt(key::startingRow, block.startingRow);
    in.readInt(key::rowSpan, block.rowSpan);
    in.readInt(key::startingColumn, block.startingColumn);
    in.readInt(key::columnSpan, block.columnSpan);
    in.read(key::contentWidth, block.contentWidth);
    const QCborValue table = map.value(key::table);
    if (table.isMap()) {
        qint64 number = 0;
        int columns = 0;
        FieldReader tableIn(table.toMap());
        tableIn.readInt(key::number, number);
        tableIn.readInt(key::columns, columns);
        if (!tableIn.ok())
            return std::nullopt;
        block.table = tableForNumber(number, columns);
    } else if (!table.isUndefined()) {
        return std::nullopt;
    }
    const QCborValue background = map.value(key::backgroundColor);
    if (background.isMap()) {
        const std::optional<Color> color = decodeColorFields(background.toMap());
        if (!color)
            return std::nullopt;
        block.backgroundColor = *color;
    } else if (!background.isUndefined()) {
        return std::nullopt;
    }
    if (!in.ok())
        return std::nullopt;
    return block;
}

QCborMap encodeParagraphStyle(const QVariant& value)
{
    const ParagraphStyle style = value.value<ParagraphStyle>();
    QCborMap map;
    map.insert(key::alignment, int(style.alignment()));
    map.insert(key::firstLineHeadIndent, style.firstLineHeadIndent());
    map.insert(key::headIndent, style.headIndent());
    map.insert(key::tailIndent, style.tailIndent());
    map.insert(key::lineSpacing, style.lineSpacing());
    map.insert(key::paragraphSpacing, style.paragraphSpacing());
    map.insert(key::paragraphSpacingBefore, style.paragraphSpacingBefore());
    map.insert(key::minimumLineHeight, style.minimumLineHeight());
    map.insert(key::maximumLineHeight, style.maximumLineHeight());
    map.insert(key::lineHeightMultiple, style.lineHeightMultiple());
    map.insert(key::defaultTabInterval, style.defaultTabInterval());
    map.insert(key::headerLevel, style.headerLevel());

    QCborArray tabs;
    for (const TextTab& tab : style.tabStops()) {
        QCborMap t;
        t.insert(key::alignment, int(tab.alignment));
        t.insert(key::location, tab.location);
        tabs.append(t);
    }
    map.insert(key::tabStops, tabs);

    QCborArray lists;
    for (const TextList& list : style.textLists()) {
        QCborMap l;
        l.insert(key::markerFormat, list.markerFormat);
        l.insert(key::options, qint64(list.options));
        l.insert(key::startingItemNumber, list.startingItemNumber);
        lists.append(l);
    }
    map.insert(key::textLists, lists);

    QCborArray blocks;
    for (const TextBlock& block : style.textBlocks())
        blocks.append(encodeBlock(block));
    map.insert(key::textBlocks, blocks);
    return map;
}

bool validAlignment(int a) { return a >= LeftTextAlignment && a <= NaturalTextAlignment; }

QVariant decodeParagraphStyle(const QCborMap& map)
{
    ParagraphStyle style;
    FieldReader in(map);
    int alignment = style.alignment();
    double v[11] = {};
    int headerLevel = 0;
    in.readInt(key::alignment, alignment);
    in.read(key::firstLineHeadIndent, v[0]);
    in.read(key::headIndent, v[1]);
    in.read(key::tailIndent, v[2]);
    in.read(key::lineSpacing, v[3]);
    in.read(key::paragraphSpacing, v[4]);
    in.read(key::paragraphSpacingBefore, v[5]);
    in.read(key::minimumLineHeight, v[6]);
    in.read(key::maximumLineHeight, v[7]);
    in.read(key::lineHeightMultiple, v[8]);
    in.read(key::defaultTabInterval, v[9]);
    in.readInt(key::headerLevel, headerLevel);
    if (!validAlignment(alignment))
        in.fail();
    style.setAlignment(TextAlignment(alignment));
    style.setFirstLineHeadIndent(v[0]);
    style.setHeadIndent(v[1]);
    style.setTailIndent(v[2]);
    style.setLineSpacing(v[3]);
    style.setParagraphSpacing(v[4]);
    style.setParagraphSpacingBefore(v[5]);
    style.setMinimumLineHeight(v[6]);
    style.setMaximumLineHeight(v[7]);
    style.setLineHeightMultiple(v[8]);
    style.setDefaultTabInterval(v[9]);
    style.setHeaderLevel(headerLevel);

    // Missing lists keep the defaults (twelve tab stops, no lists, no blocks).
    if (map.contains(key::tabStops)) {
        QVector<TextTab> tabs;
        for (const QCborValue& t : in.array(key::tabStops)) {
            TextTab tab;
            int tabAlignment = LeftTextAlignment;
            FieldReader tabIn(t.toMap());
            tabIn.readInt(key::alignment, tabAlignment);
            tabIn.read(key::location, tab.location);
            if (!t.isMap() || !tabIn.ok() || !validAlignment(tabAlignment))
                return {};
            tab.alignment = TextAlignment(tabAlignment);
            tabs.append(tab);
        }
        style.setTabStops(tabs);
    }
    QVector<TextList> lists;
    for (const QCborValue& l : in.array(key::textLists)) {
        TextList list;
        FieldReader listIn(l.toMap());
        listIn.read(key::markerFormat, list.markerFormat);
        listIn.readInt(key::options, list.options);
        listIn.readInt(key::startingItemNumber, list.startingItemNumber);
        if (!l.isMap() || !listIn.ok())
            return {};
        lists.append(list);
    }
    style.setTextLists(lists);
    QVector<TextBlock> blocks;
    for (const QCborValue& b : in.array(key::textBlocks)) {
        const std::optional<TextBlock> block = decodeBlock(b);
        if (!block)
            return {};
        blocks.append(*block);
    }
    style.setTextBlocks(blocks);
    if (!in.ok())
        return {};
    return QVariant::fromValue(style);
}

// ---- TextAttachment

QCborMap encodeAttachment(const QVariant& value)
{
    const TextAttachment attachment = value.value<TextAttachment>();
    QCborMap map;
    map.insert(key::fileName, attachment.fileName());
    if (attachment.isLinkedFile())
        map.insert(key::linkedPath, attachment.linkedFilePath());
    else
        map.insert(key::contents, attachment.contents());
    if (attachment.hasExplicitBounds()) {
        const QSizeF bounds = attachment.bounds();
        QCborMap b;
        b.insert(key::width, bounds.width());
        b.insert(key::height, bounds.height());
        map.insert(key::bounds, b);
    }
    return map;
}

QVariant decodeAttachment(const QCborMap& map)
{
    QString fileName, linkedPath;
    FieldReader in(map);
    in.read(key::fileName, fileName);
    in.read(key::linkedPath, linkedPath);
    const QCborValue contents = map.value(key::contents);
    if (!contents.isByteArray() && !contents.isUndefined())
        return {};
    TextAttachment attachment = linkedPath.isEmpty() ? TextAttachment(fileName, contents.toByteArray())
                                                     : TextAttachment::linkedToFile(linkedPath);
    const QCborValue bounds = map.value(key::bounds);
    if (bounds.isMap()) {
        double w = 0, h = 0;
        FieldReader b(bounds.toMap());
        b.read(key::width, w);
        b.read(key::height, h);
        if (!b.ok())
            return {};
        attachment.setBounds(QSizeF(w, h));
    } else if (!bounds.isUndefined()) {
        return {};
    }
    if (!in.ok())
        return {};
    return QVariant::fromValue(attachment);
}

// ---- AttributedString

QCborMap encodeAttributedString(const QVariant& value)
{
    const AttributedString text = value.value<AttributedString>();
    QCborArray runs;
    text.enumerateAttributes(Range{0, text.length()}, [&runs](const Attributes& attributes, Range range) {
        QCborMap run;
        run.insert(key::length, range.length);
        run.insert(key::attributes, encode(attributes));
        runs.append(run);
        return true;
    });
    QCborMap map;
    map.insert(key::string, text.string());
    map.insert(key::runs, runs);
    return map;
}

QVariant decodeAttributedString(const QCborMap& map)
{
    QString string;
    FieldReader in(map);
    in.read(key::string, string);
    const QCborArray runs = in.array(key::runs);
    if (!in.ok())
        return {};
    AttributedString text;
    qsizetype position = 0;
    for (const QCborValue& r : runs) {
        const QCborMap run = r.toMap();
        const QCborValue length = run.value(key::length);
        if (!r.isMap() || !length.isInteger() || length.toInteger() <= 0
            || length.toInteger() > string.size() - position)
            return {};
        const QVariant decoded = decode(run.value(key::attributes));
        if (decoded.typeId() != QMetaType::QVariantMap)
            return {};
        // Values that cannot be read back (an unknown class) are dropped rather than kept as invalid
        // attribute values.
        Attributes attributes = decoded.toMap();
        for (auto it = attributes.begin(); it != attributes.end();) {
            if (it.value().isValid())
                ++it;
            else
                it = attributes.erase(it);
        }
        text.append(string.mid(position, length.toInteger()), attributes);
        position += length.toInteger();
    }
    if (position != string.size())
        return {};
    return QVariant::fromValue(text);
}

} // namespace

void registerPlatformTypes(const AddType& add)
{
    add(
        qMetaTypeId<Color>(), QStringLiteral("Color"),
        [](const QVariant& v) { return encodeColorFields(v.value<Color>()); },
        [](const QCborMap& map) -> QVariant {
            const std::optional<Color> color = decodeColorFields(map);
            return color ? QVariant::fromValue(*color) : QVariant();
        },
        {});
    add(qMetaTypeId<Font>(), QStringLiteral("Font"), encodeFont, decodeFont, {});
    add(qMetaTypeId<ParagraphStyle>(), QStringLiteral("ParagraphStyle"), encodeParagraphStyle, decodeParagraphStyle,
        {});
    add(qMetaTypeId<TextAttachment>(), QStringLiteral("TextAttachment"), encodeAttachment, decodeAttachment,
        [](const QVariant& v) { return v.value<TextAttachment>().identity(); });
    add(qMetaTypeId<AttributedString>(), QStringLiteral("AttributedString"), encodeAttributedString,
        decodeAttributedString, {});
}

} // namespace qly::archiving::detail

#include <qlyappkit/platform/services/KeyedArchiver.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>

#include <QBuffer>
#include <QCborArray>
#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTemporaryDir>
#include <QTimeZone>
#include <QUrl>

using namespace qly;
namespace ar = qly::archiving;

namespace {

QVariant roundTrip(const QVariant& value) { return ar::unarchive(ar::archivedData(value)); }

QByteArray pngBytes(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

ParagraphStyle richStyle()
{
    ParagraphStyle style;
    style.setAlignment(JustifiedTextAlignment);
    style.setFirstLineHeadIndent(36);
    style.setHeadIndent(18.25);
    style.setTailIndent(-12);
    style.setLineSpacing(2);
    style.setParagraphSpacing(6);
    style.setParagraphSpacingBefore(3);
    style.setMinimumLineHeight(10);
    style.setMaximumLineHeight(30);
    style.setLineHeightMultiple(1.5);
    style.setDefaultTabInterval(36);
    style.setHeaderLevel(2);
    style.setTabStops({TextTab{RightTextAlignment, 100.5}, TextTab{CenterTextAlignment, 200}});
    style.setTextLists({TextList{QStringLiteral("{decimal}."), 0, 3}, TextList{QStringLiteral("{lower-roman}"), 1, 1}});
    return style;
}

} // namespace

TEST(KeyedArchiver, BasicValuesRoundTrip)
{
    const QDateTime when(QDate(2026, 11, 22), QTime(14, 5, 9, 250), QTimeZone(3600));
    const QVariantList values = {
        QVariant(),
        true,
        false,
        42,
        -7,
        QVariant::fromValue(qlonglong(1) << 40),
        QVariant::fromValue(4000000000u),
        2.0,
        -0.1,
        QStringLiteral("text with \u00E9 and \U0001F600"),
        QString(),
        QByteArray("\x00\xff bytes", 8),
        QUrl(QStringLiteral("https://example.com/a?b=c#d")),
        when,
        QStringList{QStringLiteral("a"), QString(), QStringLiteral("c")},
        QSizeF(612, 792),
        QPointF(-1.5, 2.25),
        QRectF(1, 2, 3.5, 4.5),
        QVariantList{1, QStringLiteral("two"), QVariantList{3.0}},
        QVariantMap{{QStringLiteral("nested"), QVariantMap{{QStringLiteral("x"), 1}}},
                    {QStringLiteral("empty"), QVariantMap()}},
    };
    for (const QVariant& value : values) {
        SCOPED_TRACE(value.typeName() ? value.typeName() : "invalid");
        const QVariant back = roundTrip(value);
        EXPECT_EQ(back.typeId(),
                  value.typeId() == QMetaType::UInt || value.typeId() == QMetaType::LongLong ? QMetaType::LongLong
                                                                                             : value.typeId());
        EXPECT_EQ(back, value);
        EXPECT_EQ(ar::deepCopy(value), value);
    }
    EXPECT_EQ(roundTrip(when).toDateTime().toMSecsSinceEpoch(), when.toMSecsSinceEpoch());

    // A plain map with a "$class" key of its own stays a plain map.
    const QVariantMap lookalike{{QStringLiteral("$class"), QStringLiteral("Color")}, {QStringLiteral("red"), 1}};
    EXPECT_EQ(roundTrip(lookalike), QVariant(lookalike));

    // Unsupported values encode as undefined and come back as nothing; their neighbours survive.
    EXPECT_TRUE(ar::encode(QVariant::fromValue(QColor(Qt::red))).isUndefined());
    const QVariant mixed = roundTrip(QVariantList{1, QVariant::fromValue(QColor(Qt::red)), 3});
    EXPECT_EQ(mixed, QVariant(QVariantList{1, QVariant(), 3}));
}

TEST(KeyedArchiver, FrameworkValuesRoundTrip)
{
    const Color color(0.1, 0.2, 0.3, 0.4);
    EXPECT_EQ(roundTrip(QVariant::fromValue(color)).value<Color>(), color);
    EXPECT_EQ(ar::encode(QVariant::fromValue(color)).toMap().value(QStringLiteral("$class")).toString(),
              QStringLiteral("Color"));

    for (const Font& font : {Font(QStringLiteral("Times-BoldItalic"), 13.5), Font::userFont(),
                             Font::fromFamily(QStringLiteral("Odd-Bold"), 9, 0)}) {
        const QVariant back = roundTrip(QVariant::fromValue(font));
        ASSERT_EQ(back.typeId(), qMetaTypeId<Font>());
        EXPECT_EQ(back.value<Font>(), font) << font.fontName().toStdString();
    }

    EXPECT_EQ(roundTrip(QVariant::fromValue(ParagraphStyle())).value<ParagraphStyle>(), ParagraphStyle());
    const ParagraphStyle style = richStyle();
    EXPECT_EQ(roundTrip(QVariant::fromValue(style)).value<ParagraphStyle>(), style);
    ParagraphStyle noTabs;
    noTabs.setTabStops({});
    EXPECT_TRUE(roundTrip(QVariant::fromValue(noTabs)).value<ParagraphStyle>().tabStops().isEmpty());
}

TEST(KeyedArchiver, TextBlocksOfOneTableShareItAfterDecoding)
{
    auto table = std::make_shared<TextTable>(TextTable{2});
    auto other = std::make_shared<TextTable>(TextTable{3});
    auto styleFor = [](std::shared_ptr<TextTable> t, int column, QVector<TextBlock> outer = {}) {
        TextBlock block;
        block.table = std::move(t);
        block.startingRow = 1;
        block.startingColumn = column;
        block.columnSpan = 1;
        block.rowSpan = 2;
        block.contentWidth = 120.5;
        block.backgroundColor = Color(0.9, 0.8, 0.7, 1);
        ParagraphStyle style;
        outer.append(block);
        style.setTextBlocks(outer);
        return style;
    };
    // Two cells of one table, a cell of a table nested in the first, and a block outside any table.
    const ParagraphStyle left = styleFor(table, 0);
    const ParagraphStyle right = styleFor(table, 1);
    const ParagraphStyle nested = styleFor(other, 0, left.textBlocks());
    ParagraphStyle plainBlock;
    plainBlock.setTextBlocks({TextBlock{}});

    AttributedString text;
    text.append(QStringLiteral("L\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(left)}});
    text.append(QStringLiteral("R\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(right)}});
    text.append(QStringLiteral("N\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(nested)}});
    text.append(QStringLiteral("P\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(plainBlock)}});

    const AttributedString copy = roundTrip(QVariant::fromValue(text)).value<AttributedString>();
    ASSERT_EQ(copy.string(), text.string());
    auto blocksAt = [&copy](qsizetype i) {
        return copy.attribute(ParagraphStyleAttributeName, i).value<ParagraphStyle>().textBlocks();
    };
    const auto l = blocksAt(0), r = blocksAt(2), n = blocksAt(4), p = blocksAt(6);
    ASSERT_EQ(l.size(), 1);
    ASSERT_EQ(r.size(), 1);
    ASSERT_EQ(n.size(), 2);
    ASSERT_EQ(p.size(), 1);
    ASSERT_TRUE(l[0].table);
    EXPECT_NE(l[0].table, table); // a new table…
    EXPECT_EQ(l[0].table, r[0].table); // …shared by the cells of the one it copies
    EXPECT_EQ(l[0].table, n[0].table);
    EXPECT_NE(n[1].table, l[0].table);
    EXPECT_EQ(l[0].table->numberOfColumns, 2);
    EXPECT_EQ(n[1].table->numberOfColumns, 3);
    EXPECT_FALSE(p[0].table);
    EXPECT_EQ(r[0].startingColumn, 1);
    EXPECT_EQ(r[0].rowSpan, 2);
    EXPECT_EQ(r[0].contentWidth, 120.5);
    EXPECT_EQ(r[0].backgroundColor, Color(0.9, 0.8, 0.7, 1));
    EXPECT_EQ(p[0].backgroundColor, TextBlock{}.backgroundColor);
}

TEST(KeyedArchiver, Attachments)
{
    TextAttachment held(QStringLiteral("red.png"), pngBytes(4, 3));
    EXPECT_EQ(held.bounds(), QSizeF(4, 3));
    const TextAttachment back = roundTrip(QVariant::fromValue(held)).value<TextAttachment>();
    ASSERT_FALSE(back.isNull());
    EXPECT_NE(back, held); // a new object
    EXPECT_EQ(back.fileName(), held.fileName());
    EXPECT_EQ(back.contents(), held.contents());
    EXPECT_FALSE(back.hasExplicitBounds());
    EXPECT_EQ(back.bounds(), QSizeF(4, 3));

    held.setBounds(QSizeF(40, 30.5));
    const TextAttachment sized = roundTrip(QVariant::fromValue(held)).value<TextAttachment>();
    EXPECT_TRUE(sized.hasExplicitBounds());
    EXPECT_EQ(sized.bounds(), QSizeF(40, 30.5));

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("linked.png"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(pngBytes(2, 5));
    file.close();
    const TextAttachment linked =
        roundTrip(QVariant::fromValue(TextAttachment::linkedToFile(path))).value<TextAttachment>();
    EXPECT_TRUE(linked.isLinkedFile());
    EXPECT_EQ(linked.linkedFilePath(), path);
    EXPECT_EQ(linked.fileName(), QStringLiteral("linked.png"));
    EXPECT_EQ(linked.bounds(), QSizeF(2, 5));
    // The archive refers to the file rather than holding it.
    EXPECT_FALSE(ar::encode(QVariant::fromValue(linked)).toMap().contains(QStringLiteral("contents")));

    // One attachment referred to twice comes back as one object.
    const QVariantList pair{QVariant::fromValue(held), QVariant::fromValue(held), QVariant::fromValue(linked)};
    const QVariantList copies = roundTrip(pair).toList();
    ASSERT_EQ(copies.size(), 3);
    EXPECT_EQ(copies[0].value<TextAttachment>(), copies[1].value<TextAttachment>());
    EXPECT_NE(copies[0].value<TextAttachment>(), copies[2].value<TextAttachment>());
    EXPECT_EQ(copies[1].value<TextAttachment>().contents(), held.contents());
}

TEST(KeyedArchiver, AttributedStrings)
{
    const TextAttachment picture(QStringLiteral("p.png"), pngBytes(1, 1));
    AttributedString text;
    text.append(QStringLiteral("Plain "), {});
    text.append(QStringLiteral("bold \U0001F600 "),
                {{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Helvetica-Bold"), 12))},
                 {ForegroundColorAttributeName, QVariant::fromValue(Color(1, 0, 0))}});
    text.append(QString(QChar(AttachmentCharacter)), {{AttachmentAttributeName, QVariant::fromValue(picture)}});
    text.append(QStringLiteral(" linked"),
                {{LinkAttributeName, QUrl(QStringLiteral("https://example.com"))}, {UnderlineStyleAttributeName, 1}});
    text.append(QStringLiteral("\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(richStyle())}});

    const QVariant back = roundTrip(QVariant::fromValue(text));
    ASSERT_EQ(back.typeId(), qMetaTypeId<AttributedString>());
    const AttributedString copy = back.value<AttributedString>();
    EXPECT_TRUE(copy.checkInvariants());
    EXPECT_EQ(copy.string(), text.string());
    EXPECT_EQ(copy.runCount(), text.runCount());
    // Equal everywhere except that the attachment is a new object with the same contents.
    const qsizetype at = text.string().indexOf(QChar(AttachmentCharacter));
    const TextAttachment copied = copy.attribute(AttachmentAttributeName, at).value<TextAttachment>();
    EXPECT_NE(copied, picture);
    EXPECT_EQ(copied.contents(), picture.contents());
    AttributedString withOriginalPicture = copy;
    withOriginalPicture.addAttribute(AttachmentAttributeName, QVariant::fromValue(picture), Range{at, 1});
    EXPECT_EQ(withOriginalPicture, text);

    EXPECT_EQ(roundTrip(QVariant::fromValue(AttributedString())).value<AttributedString>().length(), 0);
}

TEST(KeyedArchiver, MalformedInputGivesNothing)
{
    // Truncated, trailing bytes, garbage, empty.
    const QByteArray good = ar::archivedData(QVariantMap{{QStringLiteral("a"), QVariantList{1, 2}}});
    ASSERT_TRUE(ar::unarchive(good).isValid());
    EXPECT_FALSE(ar::unarchive(good.left(good.size() - 1)).isValid());
    EXPECT_FALSE(ar::unarchive(good + '\x01').isValid());
    EXPECT_FALSE(ar::unarchive(QByteArray()).isValid());
    EXPECT_FALSE(ar::unarchive(QByteArray("\xff\xff\xff", 3)).isValid());
    EXPECT_FALSE(ar::unarchive(QByteArray("\xbf\x61", 2)).isValid()); // indefinite map, never closed

    // Every prefix of a rich archive is rejected without crashing.
    AttributedString text(QStringLiteral("abc"), {{FontAttributeName, QVariant::fromValue(Font::userFont())}});
    const QByteArray rich = ar::archivedData(QVariant::fromValue(text));
    for (qsizetype n = 0; n < rich.size(); ++n)
        EXPECT_FALSE(ar::unarchive(rich.left(n)).isValid()) << n;

    auto classMap = [](const char* name, std::initializer_list<std::pair<QString, QCborValue>> fields) {
        QCborMap map;
        map.insert(QStringLiteral("$class"), QString::fromLatin1(name));
        for (const auto& [k, v] : fields)
            map.insert(k, v);
        return QCborValue(map);
    };
    // Well-formed CBOR that is not an archive of the claimed class.
    EXPECT_FALSE(ar::decode(classMap("NoSuchClass", {})).isValid());
    EXPECT_FALSE(ar::decode(classMap("Color", {{QStringLiteral("red"), QStringLiteral("high")}})).isValid());
    EXPECT_FALSE(ar::decode(classMap("Size", {{QStringLiteral("width"), 1}})).isValid());
    EXPECT_FALSE(ar::decode(classMap("ParagraphStyle", {{QStringLiteral("alignment"), 17}})).isValid());
    EXPECT_FALSE(ar::decode(classMap("ParagraphStyle", {{QStringLiteral("tabStops"), 5}})).isValid());
    EXPECT_FALSE(ar::decode(classMap("AttributedString",
                                     {{QStringLiteral("string"), QStringLiteral("ab")},
                                      {QStringLiteral("runs"),
                                       QCborArray{QCborMap{{QStringLiteral("length"), 5},
                                                           {QStringLiteral("attributes"), QCborMap{}}}}}}))
                     .isValid());
    EXPECT_FALSE(
        ar::decode(classMap("AttributedString",
                            {{QStringLiteral("string"), QStringLiteral("ab")}, {QStringLiteral("runs"), QCborArray{}}}))
            .isValid());
    EXPECT_FALSE(ar::decode(classMap("TextAttachment", {{QStringLiteral("$ref"), 7}})).isValid());
    QCborMap nonStringKey;
    nonStringKey.insert(1, 2);
    EXPECT_FALSE(ar::decode(nonStringKey).isValid());

    // An attribute value of an unknown class is dropped; the text survives.
    QCborMap run;
    run.insert(QStringLiteral("length"), 2);
    run.insert(QStringLiteral("attributes"),
               QCborMap{{QStringLiteral("Known"), 1}, {QStringLiteral("Unknown"), classMap("NoSuchClass", {})}});
    const QVariant partial = ar::decode(
        classMap("AttributedString",
                 {{QStringLiteral("string"), QStringLiteral("ab")}, {QStringLiteral("runs"), QCborArray{run}}}));
    ASSERT_TRUE(partial.isValid());
    EXPECT_EQ(partial.value<AttributedString>().attributes(0), (Attributes{{QStringLiteral("Known"), 1}}));
}

namespace {
struct Shared {
    QString label;
};
} // namespace
Q_DECLARE_METATYPE(std::shared_ptr<Shared>)

TEST(KeyedArchiver, RegisteredReferenceTypesKeepIdentity)
{
    using Ptr = std::shared_ptr<Shared>;
    ar::registerType(
        qMetaTypeId<Ptr>(), QStringLiteral("TestShared"),
        [](const QVariant& v) {
            QCborMap map;
            map.insert(QStringLiteral("label"), v.value<Ptr>()->label);
            return map;
        },
        [](const QCborMap& map) -> QVariant {
            if (!map.value(QStringLiteral("label")).isString())
                return {};
            return QVariant::fromValue(std::make_shared<Shared>(Shared{map.value(QStringLiteral("label")).toString()}));
        },
        [](const QVariant& v) -> const void* { return v.value<Ptr>().get(); });

    const Ptr a = std::make_shared<Shared>(Shared{QStringLiteral("a")});
    const Ptr b = std::make_shared<Shared>(Shared{QStringLiteral("b")});
    // The same object under two keys of a map and in two runs of a text.
    AttributedString text;
    text.append(QStringLiteral("x"), {{QStringLiteral("C"), QVariant::fromValue(a)}, {QStringLiteral("B"), 1}});
    text.append(QStringLiteral("y"), {{QStringLiteral("C"), QVariant::fromValue(a)}});
    text.append(QStringLiteral("z"), {{QStringLiteral("C"), QVariant::fromValue(b)}});
    const QVariantMap map{{QStringLiteral("text"), QVariant::fromValue(text)},
                          {QStringLiteral("first"), QVariant::fromValue(a)}};

    const QVariantMap copy = ar::deepCopy(map).toMap();
    const Ptr first = copy.value(QStringLiteral("first")).value<Ptr>();
    const AttributedString copiedText = copy.value(QStringLiteral("text")).value<AttributedString>();
    ASSERT_TRUE(first);
    EXPECT_NE(first, a);
    EXPECT_EQ(first->label, QStringLiteral("a"));
    EXPECT_EQ(copiedText.attribute(QStringLiteral("C"), 0).value<Ptr>(), first);
    EXPECT_EQ(copiedText.attribute(QStringLiteral("C"), 1).value<Ptr>(), first);
    EXPECT_EQ(copiedText.attribute(QStringLiteral("C"), 2).value<Ptr>()->label, QStringLiteral("b"));

    // A reference that comes before its object in the tree is still resolved.
    const QCborMap def = ar::encode(QVariant::fromValue(a)).toMap();
    ASSERT_TRUE(def.value(QStringLiteral("$id")).isInteger());
    QCborMap ref;
    ref.insert(QStringLiteral("$class"), QStringLiteral("TestShared"));
    ref.insert(QStringLiteral("$ref"), def.value(QStringLiteral("$id")));
    const QVariantList both = ar::decode(QCborArray{ref, def}).toList();
    ASSERT_EQ(both.size(), 2);
    ASSERT_TRUE(both[0].value<Ptr>());
    EXPECT_EQ(both[0].value<Ptr>(), both[1].value<Ptr>());
    EXPECT_EQ(both[0].value<Ptr>()->label, QStringLiteral("a"));
}

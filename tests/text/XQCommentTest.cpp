#include <qlyappkit/text/comments/XQComment.h>

#include <QCborMap>
#include <QLocale>
#include <QRegularExpression>

#include <qlyappkit/platform/services/KeyedArchiver.h>
#include <qlyappkit/platform/services/NamedException.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/services/UserDefaults.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

using namespace qly;

namespace {

// Counts every notification the comment posts, by name.
class Recorder {
public:
    explicit Recorder(const XQComment* comment)
        : m_observer(QString(), comment, [this](const Notification& n) { names << n.name; })
    {
    }
    QStringList names;

private:
    ScopedObserver m_observer;
};

AttributedString styledText()
{
    AttributedString text(
        QStringLiteral("Bold "),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 12, BoldFontMask))}});
    text.append(QStringLiteral("caf\u00e9 \u65e5\u672c"),
                {{ForegroundColorAttributeName, QVariant::fromValue(Color(0.25, 0.5, 0.75))}});
    return text;
}

void expectSameFieldsButID(const XQComment& a, const XQComment& b)
{
    EXPECT_NE(a.uniqueID(), b.uniqueID());
    EXPECT_EQ(a.text(), b.text());
    EXPECT_EQ(a.isFootnote(), b.isFootnote());
    EXPECT_EQ(a.color(), b.color());
    EXPECT_EQ(a.footnoteNumber(), b.footnoteNumber());
    EXPECT_EQ(a.isCollapsed(), b.isCollapsed());
}

XQCommentPtr fullyPopulatedComment()
{
    XQCommentPtr comment = XQComment::create(styledText(), true);
    comment->setFootnoteNumber(7);
    comment->setCollapsed(true);
    comment->setColor(Color(0.1, 0.2, 0.3, 0.4));
    return comment;
}

} // namespace

TEST(XQComment, DefaultsOfNewComments)
{
    XQComment::setUserFullNameProvider({});
    EXPECT_EQ(XQComment::defaultCommentString(QDateTime()), QStringLiteral(", "));

    // With no name the text is ", " followed by the creation time in the short styles.
    const QString before = QLocale().toString(QDateTime::currentDateTime(), QLocale::ShortFormat);
    XQComment comment;
    const QString after = QLocale().toString(QDateTime::currentDateTime(), QLocale::ShortFormat);
    EXPECT_TRUE(comment.string() == QStringLiteral(", ") + before || comment.string() == QStringLiteral(", ") + after)
        << qPrintable(comment.string());
    EXPECT_FALSE(comment.isFootnote());
    EXPECT_FALSE(comment.isCollapsed());
    EXPECT_EQ(comment.footnoteNumber(), -1);
    EXPECT_EQ(comment.color(), XQComment::defaultCommentColor());

    XQComment::setUserFullNameProvider([] { return QStringLiteral("Ada Writer"); });
    const QDateTime when(QDate(2026, 11, 22), QTime(14, 5, 9));
    EXPECT_EQ(XQComment::defaultCommentString(when),
              QStringLiteral("Ada Writer, ") + QLocale().toString(when, QLocale::ShortFormat));
    EXPECT_TRUE(XQComment().string().startsWith(QStringLiteral("Ada Writer, ")));
    XQComment::setUserFullNameProvider({});

    const XQComment footnote(std::nullopt, true);
    EXPECT_EQ(footnote.string(), QString());
    EXPECT_TRUE(footnote.isFootnote());
    EXPECT_EQ(footnote.color(), XQComment::defaultFootnoteColor());
    EXPECT_EQ(footnote.footnoteNumber(), -1);

    const XQComment given(styledText());
    EXPECT_EQ(given.text(), styledText());
    EXPECT_NE(given.uniqueID(), footnote.uniqueID());

    EXPECT_EQ(XQComment::defaultYellowCommentColor(), Color(0.992, 0.929, 0.525, 1.0));
    EXPECT_EQ(XQComment::defaultFootnoteColor(), Color(0.85, 0.85, 0.85, 1.0));

    const QRegularExpression uuid(QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$"));
    const QString id = XQComment::uniqueIDString();
    EXPECT_TRUE(uuid.match(id).hasMatch()) << qPrintable(id);
    EXPECT_NE(id, XQComment::uniqueIDString());
}

TEST(XQComment, DefaultCommentColorInUserDefaults)
{
    UserDefaults& defaults = UserDefaults::standard();
    const QString key = XQComment::defaultCommentColorKey();
    EXPECT_EQ(key, UserDefaults::processName() + QStringLiteral(".XQDefaultCommentColor"));

    defaults.removeValue(key);
    EXPECT_EQ(XQComment::defaultCommentColor(), XQComment::defaultYellowCommentColor());

    const Color blue(0.2, 0.4, 0.9);
    XQComment::setDefaultCommentColor(blue);
    EXPECT_EQ(XQComment::defaultCommentColor(), blue);
    EXPECT_EQ(XQComment().color(), blue);
    EXPECT_EQ(XQComment(std::nullopt, true).color(), XQComment::defaultFootnoteColor());

    // Unreadable stored values fall back to yellow.
    defaults.setValue(key, QByteArray("\x01\x02 not an archive"));
    EXPECT_EQ(XQComment::defaultCommentColor(), XQComment::defaultYellowCommentColor());
    defaults.setValue(key, QStringLiteral("0.1 0.2 0.3"));
    EXPECT_EQ(XQComment::defaultCommentColor(), XQComment::defaultYellowCommentColor());
    defaults.setValue(key, archiving::archivedData(QVariant::fromValue(Font::userFont())));
    EXPECT_EQ(XQComment::defaultCommentColor(), XQComment::defaultYellowCommentColor());

    // Setting no colour stores the yellow one.
    XQComment::setDefaultCommentColor(blue);
    XQComment::setDefaultCommentColor(std::nullopt);
    EXPECT_TRUE(defaults.contains(key));
    EXPECT_EQ(XQComment::defaultCommentColor(), XQComment::defaultYellowCommentColor());
    defaults.removeValue(key);
}

TEST(XQComment, Notifications)
{
    XQCommentPtr comment = XQComment::create(AttributedString(QStringLiteral("note")));
    XQCommentPtr other = XQComment::create();
    Recorder recorder(comment.get());
    Recorder otherRecorder(other.get());

    // The very text object the comment holds: nothing changes, nothing is posted.
    comment->setText(comment->text());
    EXPECT_TRUE(recorder.names.isEmpty());

    // An equal but different object is stored and announced.
    const AttributedString equal(QStringLiteral("note"));
    ASSERT_EQ(equal, comment->text());
    comment->setText(equal);
    EXPECT_EQ(recorder.names, QStringList{XQCommentTextDidChangeNotification});

    recorder.names.clear();
    comment->setColor(comment->color());
    comment->setFootnote(comment->isFootnote());
    comment->setCollapsed(true);
    comment->setCollapsed(true);
    EXPECT_EQ(recorder.names,
              (QStringList{XQCommentColorDidChangeNotification, XQCommentIsFootnoteDidChangeNotification,
                           XQCommentDidExpandOrCollapseNotification, XQCommentDidExpandOrCollapseNotification}));

    recorder.names.clear();
    comment->setFootnoteNumber(3);
    comment->setUniqueID(QStringLiteral("ID-1"));
    EXPECT_TRUE(recorder.names.isEmpty());
    EXPECT_EQ(comment->footnoteNumber(), 3);
    EXPECT_EQ(comment->uniqueID(), QStringLiteral("ID-1"));

    // Conversion goes through setText and hands the converter the text and the attributes.
    const QVariantMap conversion{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 14))}};
    QVariantMap seenAttributes;
    comment->convertTextToHaveAttributes(conversion, [&](const AttributedString& text, const QVariantMap& attributes) {
        seenAttributes = attributes;
        AttributedString converted(text);
        converted.addAttributes(attributes, Range{0, converted.length()});
        return converted;
    });
    EXPECT_EQ(seenAttributes, conversion);
    EXPECT_EQ(comment->text().attribute(FontAttributeName, 0), conversion.value(FontAttributeName));
    EXPECT_EQ(comment->string(), QStringLiteral("note"));
    EXPECT_EQ(recorder.names, QStringList{XQCommentTextDidChangeNotification});
    comment->convertTextToHaveAttributes({});
    EXPECT_EQ(recorder.names.size(), 2);
    EXPECT_EQ(comment->text().attribute(FontAttributeName, 0), conversion.value(FontAttributeName));

    EXPECT_TRUE(otherRecorder.names.isEmpty());
}

TEST(XQComment, TooltipAndDescription)
{
    XQComment comment(AttributedString(QStringLiteral("Check this date")));
    EXPECT_EQ(comment.tooltipString(), QStringLiteral("Comment: Check this date"));
    comment.setFootnote(true);
    EXPECT_EQ(comment.tooltipString(), QStringLiteral("Footnote: Check this date"));
    // A "%1" in the text is not a placeholder.
    comment.setText(AttributedString(QStringLiteral("100%1 sure")));
    EXPECT_EQ(comment.tooltipString(), QStringLiteral("Footnote: 100%1 sure"));

    const QStringList lines = comment.description().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 6);
    EXPECT_EQ(lines[0], QStringLiteral("XQComment:"));
    EXPECT_TRUE(lines[1].contains(comment.uniqueID()));
    EXPECT_TRUE(lines[2].contains(QStringLiteral("100%1 sure")));
    EXPECT_TRUE(lines[3].contains(QStringLiteral("YES")));
}

TEST(XQComment, KeyValueAccess)
{
    EXPECT_EQ(XQComment::mutableKeys(),
              (QStringList{QStringLiteral("text"), QStringLiteral("uniqueID"), QStringLiteral("isFootnote"),
                           QStringLiteral("color"), QStringLiteral("footnoteNumber"), QStringLiteral("isCollapsed")}));

    XQComment comment(styledText());
    comment.setValueForKey(QStringLiteral("isFootnote"), true);
    comment.setValueForKey(QStringLiteral("footnoteNumber"), 12);
    comment.setValueForKey(QStringLiteral("isCollapsed"), 1);
    comment.setValueForKey(QStringLiteral("uniqueID"), QStringLiteral("ABC"));
    comment.setValueForKey(QStringLiteral("color"), QVariant::fromValue(Color(1, 0, 0)));
    comment.setValueForKey(QStringLiteral("text"), QStringLiteral("plain"));
    EXPECT_TRUE(comment.isFootnote());
    EXPECT_EQ(comment.footnoteNumber(), 12);
    EXPECT_TRUE(comment.isCollapsed());
    EXPECT_EQ(comment.uniqueID(), QStringLiteral("ABC"));
    EXPECT_EQ(comment.color(), Color(1, 0, 0));
    EXPECT_EQ(comment.text(), AttributedString(QStringLiteral("plain")));

    EXPECT_EQ(comment.valueForKey(QStringLiteral("footnoteNumber")).toLongLong(), 12);
    EXPECT_EQ(comment.valueForKey(QStringLiteral("uniqueID")).toString(), QStringLiteral("ABC"));
    EXPECT_EQ(comment.valueForKey(QStringLiteral("color")).value<Color>(), Color(1, 0, 0));
    EXPECT_EQ(comment.valueForKey(QStringLiteral("text")).value<AttributedString>(), comment.text());

    // Values of the wrong type leave the field alone.
    comment.setValueForKey(QStringLiteral("footnoteNumber"), QStringLiteral("13"));
    comment.setValueForKey(QStringLiteral("color"), QStringLiteral("red"));
    comment.setValueForKey(QStringLiteral("text"), 42);
    EXPECT_EQ(comment.footnoteNumber(), 12);
    EXPECT_EQ(comment.color(), Color(1, 0, 0));
    EXPECT_EQ(comment.string(), QStringLiteral("plain"));

    // Nil: scalars take their defaults, object fields become empty.
    comment.setNilValueForKey(QStringLiteral("isFootnote"));
    comment.setValueForKey(QStringLiteral("footnoteNumber"), QVariant());
    comment.setNilValueForKey(QStringLiteral("isCollapsed"));
    comment.setValueForKey(QStringLiteral("color"), QVariant());
    EXPECT_FALSE(comment.isFootnote());
    EXPECT_EQ(comment.footnoteNumber(), -1);
    EXPECT_FALSE(comment.isCollapsed());
    EXPECT_FALSE(comment.color().has_value());
    EXPECT_FALSE(comment.valueForKey(QStringLiteral("color")).isValid());

    try {
        comment.setNilValueForKey(QStringLiteral("text"));
        ADD_FAILURE() << "setNilValueForKey(text) did not throw";
    } catch (const NamedException& e) {
        EXPECT_EQ(e.name(), QStringLiteral("NSInvalidArgumentException"));
    }
    try {
        comment.valueForKey(QStringLiteral("author"));
        ADD_FAILURE() << "valueForKey(author) did not throw";
    } catch (const NamedException& e) {
        EXPECT_EQ(e.name(), QStringLiteral("NSUnknownKeyException"));
    }
    EXPECT_THROW(comment.setValueForKey(QStringLiteral("author"), 1), NamedException);
}

TEST(XQComment, CopyingAndArchivingGiveFreshIDs)
{
    const XQCommentPtr original = fullyPopulatedComment();

    const XQCommentPtr copy = original->copy();
    ASSERT_TRUE(copy);
    EXPECT_NE(copy, original);
    expectSameFieldsButID(*original, *copy);
    copy->setText(AttributedString(QStringLiteral("changed")));
    EXPECT_EQ(original->text(), styledText());

    const XQCommentPtr decoded = XQComment::decode(original->encode());
    ASSERT_TRUE(decoded);
    expectSameFieldsButID(*original, *decoded);

    // Through the archiver as a value.
    const QVariant unarchived = archiving::unarchive(archiving::archivedData(variantFromComment(original)));
    const XQCommentPtr fromArchive = commentFromVariant(unarchived);
    ASSERT_TRUE(fromArchive);
    expectSameFieldsButID(*original, *fromArchive);
    EXPECT_NE(fromArchive->uniqueID(), decoded->uniqueID());

    // A comment without colour keeps none.
    original->setColor(std::nullopt);
    EXPECT_FALSE(XQComment::decode(original->encode())->color().has_value());
    EXPECT_FALSE(original->copy()->color().has_value());

    // Damaged archives never give a comment.
    EXPECT_FALSE(commentFromVariant(archiving::unarchive(QByteArray("\xa1\x61x"))));
    const XQCommentPtr fromBadFields = XQComment::decode(
        QCborMap{{QStringLiteral("text"), 5}, {QStringLiteral("footnoteNumber"), QStringLiteral("x")}});
    ASSERT_TRUE(fromBadFields);
    EXPECT_EQ(fromBadFields->footnoteNumber(), -1);
}

TEST(XQComment, OneCommentOnSeveralRunsStaysOneThroughAnArchive)
{
    const XQCommentPtr shared = XQComment::create(AttributedString(QStringLiteral("shared")));
    const XQCommentPtr single = XQComment::create(AttributedString(QStringLiteral("single")));
    AttributedString text(QStringLiteral("aaa bbb ccc ddd"));
    text.addAttribute(XQCommentAttributeName, variantFromComment(shared), Range{0, 3});
    text.addAttribute(XQCommentAttributeName, variantFromComment(single), Range{4, 3});
    text.addAttribute(XQCommentAttributeName, variantFromComment(shared), Range{8, 3});

    const AttributedString copy = archiving::deepCopy(QVariant::fromValue(text)).value<AttributedString>();
    ASSERT_EQ(copy.string(), text.string());
    const XQCommentPtr first = commentFromVariant(copy.attribute(XQCommentAttributeName, 0));
    const XQCommentPtr second = commentFromVariant(copy.attribute(XQCommentAttributeName, 4));
    const XQCommentPtr third = commentFromVariant(copy.attribute(XQCommentAttributeName, 8));
    ASSERT_TRUE(first && second && third);
    EXPECT_EQ(first, third);
    EXPECT_NE(first, second);
    EXPECT_NE(first, shared);
    EXPECT_EQ(first->string(), QStringLiteral("shared"));
    EXPECT_EQ(second->string(), QStringLiteral("single"));

    EXPECT_FALSE(commentFromVariant(QVariant(QStringLiteral("not a comment"))));
    EXPECT_FALSE(variantFromComment(nullptr).isValid());
}

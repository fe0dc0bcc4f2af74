#include <qlyappkit/text/comments/CommentedText.h>

#include <QUrl>

#include <qlyappkit/platform/strings/StringSearch.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/comments/XQCommentedTextStorageMethods.h>

using namespace qly;

namespace {

// A text that keeps a comments list, as the framework's text storages do.
class CommentedStorage : public MutableAttributedString, public XQCommentedTextStorageMethods {
public:
    explicit CommentedStorage(const QString& text) : MutableAttributedString(text) { }

    const std::vector<XQCommentPtr>& comments() const override { return m_comments; }
    XQCommentPtr addComment(const AttributedString& text, Range range) override { return add(text, range, false); }
    XQCommentPtr addFootnoteComment(const AttributedString& text, Range range) override
    {
        return add(text, range, true);
    }
    void setCommentText(const AttributedString&, Range) override { }
    void removeCommentsAtRange(Range) override { }
    Range rangeOfComment(const XQCommentPtr&) const override { return Range::notFound(); }

private:
    XQCommentPtr add(const AttributedString& text, Range range, bool footnote)
    {
        XQCommentPtr comment = XQComment::create(text, footnote);
        addAttribute(XQCommentAttributeName, variantFromComment(comment), range);
        m_comments.push_back(comment);
        return comment;
    }
    std::vector<XQCommentPtr> m_comments;
};

AttributedString plainText(const QString& text) { return AttributedString(text); }

const QString kSample = QStringLiteral("The cat sat on the mat"); // cat 4, sat 8, mat 19

} // namespace

TEST(CommentedText, SearchIncludesCommentTexts)
{
    CommentedStorage storage(kSample);
    const Range all{0, storage.length()};
    storage.addComment(plainText(QStringLiteral("a feline note about the mat")), Range{8, 3});
    storage.addComment(plainText(QStringLiteral("where is the cat")), Range{19, 3});

    // Only a comment matches: its anchor.
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("feline"), 0, all, false, true), (Range{8, 3}));
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("FELINE"), CaseInsensitiveSearch, all, false, true), (Range{8, 3}));
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("FELINE"), 0, all, false, true), Range::notFound());
    // Both match: whichever starts first. "mat" is at 19 in the text, but the first comment holds it too.
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("mat"), 0, all, false, true), (Range{8, 3}));
    // "cat" is at 4 in the text; the comment that holds it is anchored at 19.
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("cat"), 0, all, false, true), (Range{4, 3}));
    // Only the first matching comment is looked at, in text order.
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("the"), 0, Range{1, 21}, false, true), (Range{8, 3}));

    // Without comments, with an empty range, or outside the range, comments are not searched.
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("feline"), 0, all, false, false), Range::notFound());
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("feline"), 0, Range{8, 0}, false, true), Range::notFound());
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("feline"), 0, Range{12, 10}, false, true), Range::notFound());

    // A text that keeps no comments list never searches comments.
    MutableAttributedString plain(storage.attributedString());
    EXPECT_EQ(rangeOfString(plain, QStringLiteral("feline"), 0, all, false, true), Range::notFound());
    EXPECT_EQ(rangeOfString(storage.attributedString(), QStringLiteral("feline"), 0, all, false, true),
              Range::notFound());
    EXPECT_EQ(rangeOfString(storage.attributedString(), QStringLiteral("mat"), 0, all, true, true), (Range{19, 3}));
}

TEST(CommentedText, SearchTieGoesToTheAnchor)
{
    CommentedStorage storage(kSample);
    storage.addComment(plainText(QStringLiteral("cat")), Range{4, 7}); // "cat sat"
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("cat"), 0, Range{0, storage.length()}, false, true), (Range{4, 7}));
    EXPECT_EQ(rangeOfString(storage, QStringLiteral("cat"), 0, Range{0, storage.length()}, false, false),
              (Range{4, 3}));
}

TEST(CommentedText, AllCommentsAsString)
{
    CommentedStorage storage(QStringLiteral("one two three four"));
    const XQCommentPtr first = storage.addComment(plainText(QStringLiteral("First")), Range{0, 3});
    storage.addComment(plainText(QString()), Range{4, 3});
    storage.addComment(plainText(QStringLiteral("Last")), Range{8, 5});
    // The same comment a second time, further on.
    storage.addAttribute(XQCommentAttributeName, variantFromComment(first), Range{14, 4});

    // A storage gives its list, empty texts included.
    EXPECT_EQ(allCommentsAsString(storage), QStringLiteral("First\n\nLast"));
    // Otherwise the runs in text order, empty texts left out.
    EXPECT_EQ(allCommentsAsString(storage.attributedString()), QStringLiteral("First\nLast\nFirst"));
    MutableAttributedString plain(storage.attributedString());
    EXPECT_EQ(allCommentsAsString(plain), QStringLiteral("First\nLast\nFirst"));
    EXPECT_EQ(allCommentsAsString(AttributedString(QStringLiteral("none"))), QString());
}

TEST(CommentedText, SavingIDsAsLinksAndLoadingThemBack)
{
    // "one two three four five six"
    AttributedString text(QStringLiteral("one two three four five six"));
    const XQCommentPtr first = XQComment::create(plainText(QStringLiteral("first")));
    const XQCommentPtr second = XQComment::create(plainText(QStringLiteral("second")), true);
    const XQCommentPtr anonymous = XQComment::create(plainText(QStringLiteral("no id")));
    anonymous->setUniqueID(QString());
    const QVariantMap docLink{{XQQuilleryLinkKey, QStringLiteral("Chapter-3")}};
    const QUrl web(QStringLiteral("https://example.com/"));
    text.addAttribute(XQCommentAttributeName, variantFromComment(first), Range{0, 3});
    text.addAttribute(XQCommentAttributeName, variantFromComment(second), Range{8, 5});
    text.addAttribute(XQCommentAttributeName, variantFromComment(anonymous), Range{24, 3});
    text.addAttribute(LinkAttributeName, docLink, Range{14, 4});
    text.addAttribute(LinkAttributeName, web, Range{19, 4});

    const AttributedString saved = attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(text, true);
    EXPECT_EQ(saved.attribute(LinkAttributeName, 0).toString(), QStringLiteral("quillcmt://") + first->uniqueID());
    EXPECT_EQ(saved.attribute(LinkAttributeName, 9).toString(), QStringLiteral("quillcmt://") + second->uniqueID());
    EXPECT_EQ(saved.attribute(LinkAttributeName, 15).toString(), QStringLiteral("quilllnk://Chapter-3"));
    EXPECT_EQ(saved.attribute(LinkAttributeName, 20).toUrl(), web);
    EXPECT_FALSE(saved.attribute(LinkAttributeName, 25).isValid()); // no ID, no link
    EXPECT_EQ(commentFromVariant(saved.attribute(XQCommentAttributeName, 0)), first); // the comment stays
    EXPECT_FALSE(text.attribute(LinkAttributeName, 0).isValid()); // the receiver is left alone

    const AttributedString withoutComments =
        attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(text, false);
    EXPECT_FALSE(withoutComments.attribute(LinkAttributeName, 0).isValid());
    EXPECT_EQ(withoutComments.attribute(LinkAttributeName, 15).toString(), QStringLiteral("quilllnk://Chapter-3"));

    // Loading: the same comment objects come back on the same ranges, document links become dictionaries.
    AttributedString stripped(saved);
    stripped.removeAttribute(XQCommentAttributeName, Range{0, stripped.length()});
    MutableAttributedString loaded(stripped);
    loadCommentsFromDictionary(loaded, XQCommentsByID{{first->uniqueID(), first}, {second->uniqueID(), second}});
    convertQuilleryLinkURLsToDictionaries(loaded);

    Range range;
    EXPECT_EQ(commentFromVariant(loaded.attribute(XQCommentAttributeName, 1, &range)), first);
    EXPECT_EQ(range, (Range{0, 3}));
    EXPECT_EQ(commentFromVariant(loaded.attribute(XQCommentAttributeName, 9, &range)), second);
    EXPECT_EQ(range, (Range{8, 5}));
    EXPECT_FALSE(loaded.attribute(LinkAttributeName, 1).isValid());
    EXPECT_EQ(loaded.attribute(LinkAttributeName, 15, &range), QVariant(docLink));
    EXPECT_EQ(range, (Range{14, 4}));
    EXPECT_EQ(loaded.attribute(LinkAttributeName, 20).toUrl(), web);
    EXPECT_EQ(loaded.string(), text.string());

    // A document link held as a URL is read too. (Flattened links are written as strings: QUrl would
    // lower-case the identifier, or read a number as an IPv4 address.)
    MutableAttributedString urlLink(QStringLiteral("xy"));
    urlLink.addAttribute(LinkAttributeName, QUrl(QStringLiteral("quilllnk://chapter-9")), Range{0, 1});
    urlLink.addAttribute(LinkAttributeName, QStringLiteral("quilllnk://Chapter-9"), Range{1, 1});
    convertQuilleryLinkURLsToDictionaries(urlLink);
    EXPECT_EQ(urlLink.attribute(LinkAttributeName, 0),
              QVariant(QVariantMap{{XQQuilleryLinkKey, QStringLiteral("chapter-9")}}));
    EXPECT_EQ(urlLink.attribute(LinkAttributeName, 1),
              QVariant(QVariantMap{{XQQuilleryLinkKey, QStringLiteral("Chapter-9")}}));
}

TEST(CommentedText, LinksHeldAsQUrlLoseNothingTheyStillHold)
{
    // A comment whose ID is upper case, linked through a QUrl (which lower-cases the host part).
    const XQCommentPtr comment = XQComment::create(plainText(QStringLiteral("note")));
    comment->setUniqueID(QStringLiteral("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
    MutableAttributedString text(QStringLiteral("abc def"));
    text.addAttribute(LinkAttributeName, QUrl(QStringLiteral("quillcmt://") + comment->uniqueID()), Range{0, 3});
    text.addAttribute(LinkAttributeName, QStringLiteral("QUILLCMT://") + comment->uniqueID(), Range{4, 3});
    loadCommentsFromDictionary(text, XQCommentsByID{{comment->uniqueID(), comment}});
    Range range;
    EXPECT_EQ(commentFromVariant(text.attribute(XQCommentAttributeName, 0, &range)), comment);
    EXPECT_EQ(range, (Range{0, 3}));
    EXPECT_EQ(commentFromVariant(text.attribute(XQCommentAttributeName, 4)), comment);
    EXPECT_FALSE(text.attribute(LinkAttributeName, 0).isValid());
    EXPECT_FALSE(text.attribute(XQCommentAttributeName, 3).isValid());
    // An exact match wins over one that differs in case.
    const XQCommentPtr lower = XQComment::create(plainText(QStringLiteral("other")));
    lower->setUniqueID(QStringLiteral("abc"));
    const XQCommentPtr upper = XQComment::create(plainText(QStringLiteral("other")));
    upper->setUniqueID(QStringLiteral("ABC"));
    MutableAttributedString both(QStringLiteral("xy"));
    both.addAttribute(LinkAttributeName, QStringLiteral("quillcmt://ABC"), Range{0, 1});
    both.addAttribute(LinkAttributeName, QStringLiteral("quillcmt://abc"), Range{1, 1});
    loadCommentsFromDictionary(both, XQCommentsByID{{QStringLiteral("abc"), lower}, {QStringLiteral("ABC"), upper}});
    EXPECT_EQ(commentFromVariant(both.attribute(XQCommentAttributeName, 0)), upper);
    EXPECT_EQ(commentFromVariant(both.attribute(XQCommentAttributeName, 1)), lower);

    // A document link given as a QUrl with an upper-case identifier keeps what QUrl still holds: the
    // host part comes lower-cased (QUrl lost its case), a path keeps its case, a non-ASCII host comes
    // back as its Unicode name; a link held as text keeps everything, whatever the case of its scheme.
    auto converted = [](const QVariant& link) {
        MutableAttributedString one(QStringLiteral("x"));
        one.addAttribute(LinkAttributeName, link, Range{0, 1});
        convertQuilleryLinkURLsToDictionaries(one);
        return documentIdentifierFromDictionary(one.attribute(LinkAttributeName, 0)).value_or(QStringLiteral("-"));
    };
    EXPECT_EQ(converted(QUrl(QStringLiteral("quilllnk://Chapter-One"))), QStringLiteral("chapter-one"));
    EXPECT_EQ(converted(QUrl(QStringLiteral("quilllnk://Drafts/Chapter-One"))), QStringLiteral("drafts/Chapter-One"));
    EXPECT_EQ(converted(QUrl(QStringLiteral("quilllnk://\u00DCber"))), QStringLiteral("\u00FCber"));
    EXPECT_EQ(converted(QStringLiteral("quilllnk://Chapter-One")), QStringLiteral("Chapter-One"));
    EXPECT_EQ(converted(QStringLiteral("QuillLnk://Chapter-One")), QStringLiteral("Chapter-One"));
    // What QUrl has lost entirely: an identifier that is no host name leaves an empty, invalid QUrl.
    EXPECT_EQ(converted(QUrl(QStringLiteral("quilllnk://Chapter One"))), QStringLiteral("-"));
    EXPECT_EQ(commentIDFromLink(QUrl(QStringLiteral("quillcmt://ABC-1"))),
              std::optional<QString>(QStringLiteral("abc-1")));
    EXPECT_EQ(documentIdentifierFromLink(QUrl(QStringLiteral("https://example.com/"))), std::nullopt);
}

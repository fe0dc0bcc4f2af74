#include <qlyappkit/text/comments/CommentedText.h>

#include <QStringList>
#include <optional>
#include <utility>

#include <qlyappkit/platform/strings/StringSearch.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/comments/XQCommentedTextStorageMethods.h>

namespace qly {

namespace {

// The find subsystem's punctuation-insensitive search would go here; a plain search stands in.
Range searchCharacters(const QString& haystack, const QString& needle, unsigned options, Range range,
                       bool loosePunctuation)
{
    Q_UNUSED(loosePunctuation);
    return qly::rangeOfString(haystack, needle, options, range);
}

Range searchComments(const AttributedString& text, const QString& string, unsigned options, Range range,
                     bool loosePunctuation, Range mainResult)
{
    Range result = mainResult;
    text.enumerateAttribute(XQCommentAttributeName, range, [&](const QVariant& value, Range anchor) {
        const XQCommentPtr comment = commentFromVariant(value);
        if (!comment)
            return true;
        const QString commentText = comment->string();
        if (searchCharacters(commentText, string, options, Range{0, commentText.size()}, loosePunctuation).isNotFound())
            return true;
        if (mainResult.isNotFound())
            result = anchor;
        else if (anchor.isEmpty())
            result = mainResult;
        else
            result = anchor.location <= mainResult.location ? anchor : mainResult;
        return false;
    });
    return result;
}

QString commentTextsOfRuns(const AttributedString& text)
{
    QString result;
    bool first = true;
    text.enumerateAttribute(XQCommentAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range) {
        const XQCommentPtr comment = commentFromVariant(value);
        if (!comment)
            return true;
        const QString commentText = comment->string();
        if (commentText.isEmpty())
            return true;
        if (!first)
            result += QLatin1Char('\n');
        result += commentText;
        first = false;
        return true;
    });
    return result;
}

} // namespace

Range rangeOfString(const MutableAttributedString& text, const QString& string, unsigned options, Range range,
                    bool loosePunctuation, bool includeComments)
{
    const Range mainResult = searchCharacters(text.string(), string, options, range, loosePunctuation);
    if (!includeComments || range.isEmpty() || !dynamic_cast<const XQCommentedTextStorageMethods*>(&text))
        return mainResult;
    return searchComments(text.attributedString(), string, options, range, loosePunctuation, mainResult);
}

Range rangeOfString(const AttributedString& text, const QString& string, unsigned options, Range range,
                    bool loosePunctuation, bool includeComments)
{
    Q_UNUSED(includeComments); // a plain text keeps no comments list
    return searchCharacters(text.string(), string, options, range, loosePunctuation);
}

QString allCommentsAsString(const MutableAttributedString& text)
{
    if (const auto* storage = dynamic_cast<const XQCommentedTextStorageMethods*>(&text)) {
        QStringList texts;
        for (const XQCommentPtr& comment : storage->comments())
            texts.append(comment ? comment->string() : QString());
        return texts.join(QLatin1Char('\n'));
    }
    return commentTextsOfRuns(text.attributedString());
}

QString allCommentsAsString(const AttributedString& text) { return commentTextsOfRuns(text); }

AttributedString attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(const AttributedString& text,
                                                                                   bool includeComments)
{
    AttributedString result(text);
    const Range whole{0, text.length()};
    if (includeComments) {
        text.enumerateAttribute(XQCommentAttributeName, whole, [&](const QVariant& value, Range run) {
            const XQCommentPtr comment = commentFromVariant(value);
            if (comment && !comment->uniqueID().isEmpty())
                result.addAttribute(LinkAttributeName, commentLinkString(comment->uniqueID()), run);
            return true;
        });
    }
    const AttributedString linked(result);
    linked.enumerateAttribute(LinkAttributeName, whole, [&](const QVariant& value, Range run) {
        if (const std::optional<QString> identifier = documentIdentifierFromDictionary(value))
            result.addAttribute(LinkAttributeName, documentLinkString(*identifier), run);
        return true;
    });
    return result;
}

void convertQuilleryLinkURLsToDictionaries(MutableAttributedString& text)
{
    EditingBatch batch(text);
    const AttributedString snapshot = text.attributedString();
    snapshot.enumerateAttribute(LinkAttributeName, Range{0, snapshot.length()}, [&](const QVariant& value, Range run) {
        if (const std::optional<QString> identifier = documentIdentifierFromLink(value))
            text.addAttribute(LinkAttributeName, documentLinkDictionary(*identifier), run);
        return true;
    });
}

void loadCommentsFromDictionary(MutableAttributedString& text, const XQCommentsByID& comments)
{
    // IDs are matched exactly first, then without regard to case (a link held as a QUrl comes
    // lower-cased); among IDs that differ only in case, the one first in sorted order wins.
    std::optional<QHash<QString, XQCommentPtr>> folded;
    auto commentWithID = [&](const QString& uniqueID) -> XQCommentPtr {
        if (const XQCommentPtr exact = comments.value(uniqueID))
            return exact;
        if (!folded) {
            folded.emplace();
            QStringList ids = comments.keys();
            ids.sort();
            for (const QString& id : std::as_const(ids)) {
                const QString key = id.toCaseFolded();
                if (!folded->contains(key))
                    folded->insert(key, comments.value(id));
            }
        }
        return folded->value(uniqueID.toCaseFolded());
    };
    EditingBatch batch(text);
    const AttributedString snapshot = text.attributedString();
    snapshot.enumerateAttribute(LinkAttributeName, Range{0, snapshot.length()}, [&](const QVariant& link, Range run) {
        const std::optional<QString> uniqueID = commentIDFromLink(link);
        if (!uniqueID)
            return true;
        text.removeAttribute(LinkAttributeName, run);
        if (const XQCommentPtr comment = commentWithID(*uniqueID))
            text.addAttribute(XQCommentAttributeName, variantFromComment(comment), run);
        return true;
    });
}

} // namespace qly

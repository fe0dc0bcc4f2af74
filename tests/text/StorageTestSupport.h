#pragma once
// Shared checks for the text-storage tests: trivially correct models of what the storages keep
// incrementally (a full word count, a fresh scan of the comment runs, paragraph-wide attributes).
#include <QRandomGenerator>
#include <QStringList>
#include <gtest/gtest.h>
#include <vector>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/WordCounting.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

namespace qly::testing {

/// Tiny leaves for the strings made while it lives, so that chunk edges are crossed in small texts.
struct LeafCapacityGuard {
    explicit LeafCapacityGuard(int units) { AttributedString::setLeafCapacityForTesting(units); }
    ~LeafCapacityGuard() { AttributedString::setLeafCapacityForTesting(0); }
};

inline qsizetype fullWordCount(const AttributedString& text) { return wordCount(text.string()); }

/// The comments on the text's comment runs, each once, in order of first appearance.
inline std::vector<XQCommentPtr> scanComments(const AttributedString& text)
{
    std::vector<XQCommentPtr> out;
    const QString s = text.string();
    for (qsizetype i = 0; i < text.length(); ++i) {
        const XQCommentPtr c = commentFromVariant(text.attribute(XQCommentAttributeName, i));
        if (c && std::find(out.begin(), out.end(), c) == out.end())
            out.push_back(c);
    }
    return out;
}

/// Every comment character carries its comment as link and the comment's tool tip; no other character
/// carries a comment link.
inline ::testing::AssertionResult commentLinksConsistent(const AttributedString& text)
{
    for (qsizetype i = 0; i < text.length(); ++i) {
        const Attributes a = text.attributes(i);
        const XQCommentPtr c = commentFromVariant(a.value(XQCommentAttributeName));
        const XQCommentPtr link = commentFromVariant(a.value(LinkAttributeName));
        if (c && (link != c || a.value(ToolTipAttributeName).toString() != c->tooltipString()))
            return ::testing::AssertionFailure() << "comment without its link or tool tip at " << i;
        if (!c && link)
            return ::testing::AssertionFailure() << "stale comment link at " << i;
    }
    return ::testing::AssertionSuccess();
}

/// In every paragraph, the attribute is either on every character with the first one's value or on none.
inline ::testing::AssertionResult paragraphUniform(const AttributedString& text, const QString& name)
{
    const QString s = text.string();
    qsizetype start = 0;
    for (qsizetype i = 0; i <= s.size(); ++i) {
        const bool end = i == s.size() || s[i] == u'\n' || s[i] == u'\r' || s[i] == QChar(0x2029);
        if (!end)
            continue;
        const qsizetype stop = std::min<qsizetype>(i + 1, s.size());
        if (start < stop) {
            const QVariant first = text.attribute(name, start);
            for (qsizetype j = start; j < stop; ++j) {
                if (text.attribute(name, j) != first)
                    return ::testing::AssertionFailure()
                        << name.toStdString() << " differs in paragraph at " << start << " (index " << j << ")";
            }
        }
        start = i + 1;
    }
    return ::testing::AssertionSuccess();
}

/// Collects the warnings logged while it lives.
class WarningCapture {
public:
    WarningCapture()
    {
        s_current = this;
        m_previous = qInstallMessageHandler(&WarningCapture::handle);
    }
    ~WarningCapture()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }
    QStringList messages;

private:
    static void handle(QtMsgType type, const QMessageLogContext&, const QString& message)
    {
        if (s_current && type == QtWarningMsg)
            s_current->messages << message;
    }
    static inline WarningCapture* s_current = nullptr;
    QtMessageHandler m_previous = nullptr;
};

/// Statistics notifications from one sender, summed.
struct StatisticsRecorder {
    explicit StatisticsRecorder(const void* sender,
                                const QString& name = QStringLiteral("XQTextStorageStatisticsDidChangeNotification"))
        : observer(name, sender, [this](const Notification& n) {
              ++posts;
              words += n.userInfo.value(QStringLiteral("ChangedWordsCount")).toLongLong();
              characters += n.userInfo.value(QStringLiteral("ChangedCharactersCount")).toLongLong();
              lastInfo = n.userInfo;
          })
    {
    }
    int posts = 0;
    qsizetype words = 0, characters = 0;
    QVariantMap lastInfo;
    ScopedObserver observer;
};

/// Short random text from an alphabet that exercises word boundaries: letters, digits, spaces,
/// hyphens, full stops, apostrophes, commas and line breaks.
inline QString randomSnippet(QRandomGenerator& rng, int maxLength)
{
    static const QString alphabet = QStringLiteral("aaaaeeiioouubcdfghlmnrstwyXZ0123456789      ---..'',\n\u00e9");
    QString s;
    const int n = 1 + int(rng.bounded(maxLength));
    for (int i = 0; i < n; ++i)
        s += alphabet.at(int(rng.bounded(int(alphabet.size()))));
    return s;
}

/// Prose-like text of about the given number of words, with line breaks every few sentences.
inline QString proseText(QRandomGenerator& rng, int words)
{
    static const char* vocabulary[] = {"the",     "draft", "of",  "a",        "long",       "novel",
                                       "chapter", "scene", "and", "writer's", "well-known", "3.5",
                                       "years",   "over",  "-",   "it",       "ends"};
    QString s;
    for (int i = 0; i < words; ++i) {
        s += QLatin1String(vocabulary[rng.bounded(int(std::size(vocabulary)))]);
        s += rng.bounded(12) == 0 ? QStringLiteral(".\n") : QStringLiteral(" ");
    }
    return s;
}

} // namespace qly::testing

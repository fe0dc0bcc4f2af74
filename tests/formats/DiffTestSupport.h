#pragma once
// Shared by the comparison tests: a private temporary folder for the comparison's files, the text a
// merged comparison gives with one kind of change deleted, and random texts that look like prose.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QRandomGenerator>
#include <QStringList>
#include <QTemporaryDir>

#include <qlyappkit/formats/comparison/DiffConstants.h>
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly::difftest {

/// Points the user's temporary folder (TMPDIR) at a folder of its own while it lives.
class ScopedTemporaryFolder {
public:
    ScopedTemporaryFolder() : m_saved(qgetenv("TMPDIR")), m_hadValue(qEnvironmentVariableIsSet("TMPDIR"))
    {
        qputenv("TMPDIR", m_dir.path().toUtf8());
    }
    /// Points TMPDIR at path instead (which need not exist).
    explicit ScopedTemporaryFolder(const QString& path) : ScopedTemporaryFolder() { qputenv("TMPDIR", path.toUtf8()); }
    ~ScopedTemporaryFolder()
    {
        if (m_hadValue)
            qputenv("TMPDIR", m_saved);
        else
            qunsetenv("TMPDIR");
    }
    QString path() const { return m_dir.path(); }
    /// The names in the folder.
    QStringList entries() const
    {
        return QDir(m_dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

private:
    QTemporaryDir m_dir;
    QByteArray m_saved;
    bool m_hadValue;
};

/// The merged text's characters less the stretches whose XQChangedTextAttributeName is `value`.
inline QString withoutChanges(const AttributedString& merged, const QString& value)
{
    QString out;
    merged.enumerateAttribute(XQChangedTextAttributeName, Range{0, merged.length()}, [&](const QVariant& v, Range r) {
        if (v.toString() != value)
            out += merged.substring(r);
        return true;
    });
    return out;
}

/// The stretches whose XQChangedTextAttributeName is `value`, in order.
inline QStringList changes(const AttributedString& merged, const QString& value)
{
    QStringList out;
    merged.enumerateAttribute(XQChangedTextAttributeName, Range{0, merged.length()}, [&](const QVariant& v, Range r) {
        if (v.toString() == value)
            out += merged.substring(r);
        return true;
    });
    return out;
}

/// Random prose-like texts: words (with apostrophes, numbers, accents, CJK, emoji, combining marks),
/// punctuation, runs of blanks and every kind of paragraph break.
class RandomProse {
public:
    explicit RandomProse(quint32 seed) : m_random(seed) { }

    QStringList tokens(int count)
    {
        static const QStringList Words{QStringLiteral("the"),
                                       QStringLiteral("harbour"),
                                       QStringLiteral("Don't"),
                                       QStringLiteral("3.14"),
                                       QStringLiteral("na\u00efve"),
                                       QStringLiteral("\u6771\u4eac"),
                                       QStringLiteral("\U0001F600"),
                                       QStringLiteral("e\u0301t\u00e9"),
                                       QStringLiteral("ship"),
                                       QStringLiteral("Anna"),
                                       QStringLiteral("night"),
                                       QStringLiteral("x_y"),
                                       QStringLiteral("\u00bfQu\u00e9"),
                                       QStringLiteral("a"),
                                       QStringLiteral("rope")};
        static const QStringList Marks{QStringLiteral(","),      QStringLiteral("."),          QStringLiteral("!"),
                                       QStringLiteral("\u2014"), QStringLiteral("\u00ab"),     QStringLiteral("\u00bb"),
                                       QStringLiteral(";"),      QStringLiteral("\U00010100"), QStringLiteral("'")};
        static const QStringList Blanks{QStringLiteral(" "), QStringLiteral(" "), QStringLiteral("  "),
                                        QStringLiteral("\t")};
        static const QStringList Breaks{QStringLiteral("\n"),     QStringLiteral("\n"), QStringLiteral("\r\n"),
                                        QStringLiteral("\u2029"), QStringLiteral("\r"), QStringLiteral("\n\n")};
        QStringList out;
        for (int i = 0; i < count; ++i) {
            const int kind = int(m_random.bounded(20));
            if (kind < 10)
                out += Words.at(int(m_random.bounded(int(Words.size()))));
            else if (kind < 13)
                out += Marks.at(int(m_random.bounded(int(Marks.size()))));
            else if (kind < 18)
                out += Blanks.at(int(m_random.bounded(int(Blanks.size()))));
            else
                out += Breaks.at(int(m_random.bounded(int(Breaks.size()))));
        }
        return out;
    }

    /// A pair (older, newer): usually the newer is the older with a few tokens inserted, deleted,
    /// replaced or moved; sometimes they are unrelated, and sometimes one is empty.
    std::pair<QString, QString> pair()
    {
        QStringList older = tokens(int(m_random.bounded(60)));
        const int shape = int(m_random.bounded(20));
        if (shape == 0)
            return {QString(), older.join(QString())};
        if (shape == 1)
            return {older.join(QString()), QString()};
        if (shape == 2)
            return {older.join(QString()), tokens(int(m_random.bounded(60))).join(QString())};
        QStringList newer = older;
        const int edits = 1 + int(m_random.bounded(5));
        for (int e = 0; e < edits; ++e) {
            const int at = newer.isEmpty() ? 0 : int(m_random.bounded(int(newer.size())));
            switch (m_random.bounded(4)) {
            case 0:
                newer.insert(at, tokens(1 + int(m_random.bounded(4))).join(QString()));
                break;
            case 1:
                if (!newer.isEmpty())
                    newer.removeAt(at);
                break;
            case 2:
                if (!newer.isEmpty())
                    newer[at] = tokens(1).constFirst();
                break;
            default:
                if (newer.size() > 1)
                    newer.move(at, int(m_random.bounded(int(newer.size()))));
            }
        }
        return {older.join(QString()), newer.join(QString())};
    }

private:
    QRandomGenerator m_random;
};

} // namespace qly::difftest

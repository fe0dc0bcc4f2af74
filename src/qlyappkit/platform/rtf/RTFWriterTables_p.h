#pragma once
// The writer's header tables: fonts, colours and lists, each numbered in order of first use.
#include <QHash>
#include <QStringList>
#include <QVector>
#include <vector>

#include <qlyappkit/platform/rtf/RTFOutput_p.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly::rtf {

/// Fonts by family ("Helvetica", with its family class such as \fswiss); the traits travel as \b and \i.
class FontTable {
public:
    int indexOf(const Font& font);
    void write(Output& out) const;

private:
    QStringList m_names;
    QHash<QString, int> m_index;
};

/// Colours to 1/255; entry 0 is the automatic colour and entry 1 white.
class ColorTable {
public:
    ColorTable();
    int indexOf(const Color& color);
    void write(Output& out) const;

private:
    std::vector<quint32> m_colors;
    QHash<quint32, int> m_index;
};

/// Lists: paragraphs whose nested lists agree with the list in use continue it; any other list,
/// or a list after a paragraph outside lists, starts a new one.
class ListTable {
public:
    /// The \ls number (from 1) of the paragraph's list; 0 for a paragraph outside lists.
    int listFor(const QVector<TextList>& lists);
    bool isEmpty() const { return m_lists.empty(); }
    void write(Output& out) const;
    /// The level's template: the text before and after its number, with placeholders for the
    /// numbers of enclosing levels when it includes theirs.
    static QString levelTemplate(const std::vector<TextList>& levels, int level);

private:
    std::vector<std::vector<TextList>> m_lists;
    int m_current = -1;
};

} // namespace qly::rtf

#pragma once
// What the HTML writer says in CSS and how it escapes text: the declarations of paragraph styles,
// character runs, lists and table cells, the class table that shares equal declarations, and the
// escaping of text, attribute values and link targets.
#include <QHash>
#include <QString>
#include <QStringView>
#include <optional>
#include <vector>

#include <qlyappkit/platform/text/Attributes.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly::html {

/// A length in CSS pixels (one per point): "0", "12px", "1.5px" (at most two decimals).
QString cssLength(double points);
/// "#rrggbb", or "rgba(r, g, b, a)" for a colour that is not opaque.
QString cssColor(const Color& color);
/// A quoted CSS string that can neither end its quotes nor its style element or attribute.
QString cssString(const QString& text);

/// Declarations of a paragraph style. In a list item the list supplies the left indent. font gives
/// the paragraph's own font (fontDeclarations), which sizes list markers and empty lines.
QString paragraphDeclarations(const ParagraphStyle& style, const QString& font, bool inList, bool pageBreakBefore,
                              bool pageBreakAfter);
/// The font family and size of a run (the default user font when it has none).
QString fontDeclarations(const Attributes& attributes);
/// Declarations of a run's character attributes (the default user font when it has none).
QString characterDeclarations(const Attributes& attributes);
/// Declarations of a table cell.
QString cellDeclarations(const TextBlock& block);
/// Declarations of a table.
QString tableDeclarations();
/// Declarations of an item that only holds a list nested in it (a level skipped by the text).
QString emptyItemDeclarations();

/// The element of a text list: "ol" for numbered markers, "ul" for bullets and literal markers.
struct ListElement {
    QString tag;
    QString declarations;
    int start = 1; ///< the first number of an "ol"
};
ListElement listElementFor(const TextList& list);

/// Equal declarations share a class, named by a prefix and a number in order of first use ("p1",
/// "s2"); the style sheet holds one rule per class, in that order.
class StyleClasses {
public:
    QString classFor(QChar prefix, const QString& declarations);
    QString styleSheet() const;

private:
    QHash<QString, QString> m_byKey;
    std::vector<std::pair<QString, QString>> m_rules; // class name, declarations
    QHash<QChar, int> m_counts;
};

/// Appends text with "&", "<" and ">" escaped; U+2028 and U+0085 become lineBreak; control
/// characters HTML forbids, noncharacters, the attachment character and page breaks are left out;
/// a lone surrogate becomes U+FFFD.
void appendEscapedText(QString& out, QStringView text, const QString& lineBreak);
/// Appends text for a double-quoted attribute value: "&", "\"", "<" and ">" escaped.
void appendEscapedAttribute(QString& out, QStringView text);
/// The target of a link value (QUrl or text) to write as href, or nothing for other values, empty
/// targets and targets that would run a script (javascript:, vbscript:, data:).
std::optional<QString> linkHref(const QVariant& link);

} // namespace qly::html

#pragma once
// XQComment: the object a linked (margin) comment or linked footnote attribute points to.
//
// Comments live in text attributes as std::shared_ptr<XQComment>; "the same comment" is the same
// pointer. They are not QObjects: their notifications are posted on the default NotificationCenter
// with the comment's address as the object.
#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <memory>
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Color.h>

class QCborMap;

namespace qly {

/// Posted (object: the comment) when setText() stores a different text.
inline const QString XQCommentTextDidChangeNotification = QStringLiteral("XQCommentTextDidChangeNotification");
/// Posted (object: the comment) on every setColor().
inline const QString XQCommentColorDidChangeNotification = QStringLiteral("XQCommentColorDidChangeNotification");
/// Posted (object: the comment) on every setFootnote().
inline const QString XQCommentIsFootnoteDidChangeNotification =
    QStringLiteral("XQCommentIsFootnoteDidChangeNotification");
/// Posted (object: the comment) on every setCollapsed().
inline const QString XQCommentDidExpandOrCollapseNotification =
    QStringLiteral("XQCommentDidExpandOrCollapseNotification");

/// The drag type of a comment being dragged.
inline const QString XQCommentPboardType = QStringLiteral("com.qlyappkit.comment.dragType");

/// Reformats a text to a set of conversion attributes (fonts, paragraph settings).
using XQAttributedStringAttributesConverter =
    std::function<AttributedString(const AttributedString& text, const QVariantMap& conversionAttributes)>;

class XQComment {
public:
    /// A comment holding the default comment string, a fresh unique ID and the default comment colour.
    XQComment();
    /// A comment with the given text, or with the default comment (footnote) string when there is none.
    explicit XQComment(const std::optional<AttributedString>& text, bool isFootnote = false);
    // A plain copy would duplicate the unique ID; copy() makes a distinct comment.
    XQComment(const XQComment&) = delete;
    XQComment& operator=(const XQComment&) = delete;

    static std::shared_ptr<XQComment> create(const std::optional<AttributedString>& text = std::nullopt,
                                             bool isFootnote = false);

    // ---- fields
    const AttributedString& text() const { return m_text; }
    /// Stores the text and posts XQCommentTextDidChangeNotification, except when handed the very text
    /// object this comment holds (the reference text() returns).
    void setText(const AttributedString& text);
    /// The plain characters of the text.
    QString string() const;
    const QString& uniqueID() const { return m_uniqueID; }
    void setUniqueID(const QString& uniqueID) { m_uniqueID = uniqueID; }
    bool isFootnote() const { return m_isFootnote; }
    void setFootnote(bool isFootnote);
    /// Empty when no colour is set.
    const std::optional<Color>& color() const { return m_color; }
    void setColor(const std::optional<Color>& color);
    /// -1 while no number is assigned.
    qint64 footnoteNumber() const { return m_footnoteNumber; }
    void setFootnoteNumber(qint64 number) { m_footnoteNumber = number; }
    bool isCollapsed() const { return m_isCollapsed; }
    void setCollapsed(bool collapsed);

    /// "Comment: <text>" or "Footnote: <text>" (the word localised).
    QString tooltipString() const;
    /// Replaces the text by the converter's output for the given attributes (posting the text
    /// notification). The default converter returns the text unchanged.
    void convertTextToHaveAttributes(const QVariantMap& conversionAttributes,
                                     const XQAttributedStringAttributesConverter& converter = {});
    /// Unique ID, text, footnote flag, colour and hash, one per line.
    QString description() const;

    // ---- key-value access (keys are mutableKeys())
    static const QStringList& mutableKeys();
    /// The field's value: AttributedString, QString, bool, Color (invalid when none), qlonglong, bool.
    /// Throws NamedException("NSUnknownKeyException") for any other key.
    QVariant valueForKey(const QString& key) const;
    /// Sets a field through its setter (so notifications follow). An invalid value clears an object
    /// field and goes to setNilValueForKey() for a scalar one. Values of the wrong type are ignored
    /// with a warning; unknown keys throw NamedException("NSUnknownKeyException").
    void setValueForKey(const QString& key, const QVariant& value);
    /// "isFootnote" and "isCollapsed" become false, "footnoteNumber" -1; any other key throws
    /// NamedException("NSInvalidArgumentException").
    void setNilValueForKey(const QString& key);

    // ---- copying and archiving
    /// A distinct comment (fresh unique ID) with equal fields.
    std::shared_ptr<XQComment> copy() const;
    /// Every mutable key under its own name, each value keyed-archived.
    QCborMap encode() const;
    /// A comment from encode()'s map. It gets a fresh unique ID: links are re-pointed by the text's owner.
    static std::shared_ptr<XQComment> decode(const QCborMap& map);
    /// Teaches the keyed archiver the comment type (class name "XQComment"). Called on first use of
    /// this class; call it yourself before unarchiving comments in a process that made none yet.
    static void registerArchivingType();

    // ---- class defaults
    /// A fresh unique ID: upper-case hexadecimal in 8-4-4-4-12 groups.
    static QString uniqueIDString();
    /// "<full name>, <date and time>" for now; see the overload.
    static QString defaultCommentString();
    /// "<full name>, <date and time>" with `when` in the locale's short date and time styles. A missing
    /// name or an invalid date gives an empty part, so the result may be ", ".
    static QString defaultCommentString(const QDateTime& when);
    static QString defaultFootnoteString() { return QString(); }
    /// Where the user's full name comes from (the host application's business); empty when unset.
    static void setUserFullNameProvider(std::function<QString()> provider);
    static Color defaultYellowCommentColor() { return Color(0.992, 0.929, 0.525, 1.0); }
    static Color defaultFootnoteColor() { return Color::white(0.85, 1.0); }
    /// The colour stored in the user defaults, or the yellow comment colour when absent or unreadable.
    static Color defaultCommentColor();
    /// Stores the colour (the yellow one when none is given) in the user defaults.
    static void setDefaultCommentColor(const std::optional<Color>& color);
    /// The user-defaults key of the default comment colour: "<process name>.XQDefaultCommentColor".
    static QString defaultCommentColorKey();

private:
    void post(const QString& name);

    AttributedString m_text;
    QString m_uniqueID;
    bool m_isFootnote = false;
    std::optional<Color> m_color;
    qint64 m_footnoteNumber = -1;
    bool m_isCollapsed = false;
};

using XQCommentPtr = std::shared_ptr<XQComment>;

/// The comment a QVariant holds (null when it holds none).
XQCommentPtr commentFromVariant(const QVariant& value);
/// A QVariant holding the comment pointer, as comment attributes store it.
QVariant variantFromComment(const XQCommentPtr& comment);

} // namespace qly

Q_DECLARE_METATYPE(std::shared_ptr<qly::XQComment>)

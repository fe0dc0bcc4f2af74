#pragma once
// The element types of a plain-text screenplay and the keys of the records the reader makes.
#include <QList>
#include <QMap>
#include <QString>
#include <QVariantMap>

#include <qlyappkit/platform/text/Attributes.h>

namespace qly {

inline const QString XQPlainTextScreenplaySceneHeading = QStringLiteral("SceneHeading");
inline const QString XQPlainTextScreenplayAction = QStringLiteral("Action");
inline const QString XQPlainTextScreenplayCharacter = QStringLiteral("Character");
inline const QString XQPlainTextScreenplayParenthetical = QStringLiteral("Parenthetical");
inline const QString XQPlainTextScreenplayDialogue = QStringLiteral("Dialogue");
inline const QString XQPlainTextScreenplayTransition = QStringLiteral("Transition");
inline const QString XQPlainTextScreenplayShot = QStringLiteral("Shot");

/// The seven types, in the order above.
inline const QStringList XQPlainTextScreenplayElementTypes{
    XQPlainTextScreenplaySceneHeading,  XQPlainTextScreenplayAction,   XQPlainTextScreenplayCharacter,
    XQPlainTextScreenplayParenthetical, XQPlainTextScreenplayDialogue, XQPlainTextScreenplayTransition,
    XQPlainTextScreenplayShot,
};

/// Record keys: a line-info record has String and Level (int), a typed line record String and Type.
inline const QString XQScreenplayStringKey = QStringLiteral("String");
inline const QString XQScreenplayLevelKey = QStringLiteral("Level");
inline const QString XQScreenplayTypeKey = QStringLiteral("Type");

/// A record per element, in text order.
using ScreenplayRecords = QList<QVariantMap>;
/// Element type to the attributes (font, paragraph style) its text gets.
using ScriptElementAttributes = QMap<QString, Attributes>;

} // namespace qly

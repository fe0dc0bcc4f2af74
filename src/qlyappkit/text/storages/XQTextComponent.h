#pragma once
// XQTextComponent: one document shown in an aggregate text storage — its title, its own text storage
// and whether a page break comes before it. The dictionary form uses the exported keys.
#include <QMetaType>
#include <QString>
#include <QVariantMap>
#include <memory>
#include <optional>

#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/Color.h>

namespace qly {

/// Dictionary key: the title string (missing means empty).
inline const QString XQTextComponentTitleKey = QStringLiteral("XQTextComponentTitleKey");
/// Dictionary key: the component's text storage (std::shared_ptr<TextStorage>).
inline const QString XQTextComponentTextKey = QStringLiteral("XQTextComponentTextKey");
/// Dictionary key: a boolean; the separator in front of this component is a page break.
inline const QString XQTextComponentPageBreakBeforeKey = QStringLiteral("XQTextComponentPageBreakBeforeKey");

struct XQTextComponent {
    XQTextComponent(QString title = {}, std::shared_ptr<TextStorage> text = {}, bool pageBreakBefore = false,
                    std::optional<Color> titleColor = {})
        : title(std::move(title)), text(std::move(text)), pageBreakBefore(pageBreakBefore),
          titleColor(std::move(titleColor))
    {
    }

    QString title;
    std::shared_ptr<TextStorage> text;
    bool pageBreakBefore = false;
    /// The colour the title is shown in, when one was set for this component.
    std::optional<Color> titleColor;

    /// The three keyed values (the title colour is view state and stays out).
    QVariantMap dictionary() const;
    static XQTextComponent fromDictionary(const QVariantMap& dictionary);

    friend bool operator==(const XQTextComponent&, const XQTextComponent&) = default;
};

} // namespace qly

Q_DECLARE_METATYPE(std::shared_ptr<qly::TextStorage>)

#include <qlyappkit/text/storages/XQTextComponent.h>

namespace qly {

QVariantMap XQTextComponent::dictionary() const
{
    return QVariantMap{{XQTextComponentTitleKey, title},
                       {XQTextComponentTextKey, QVariant::fromValue(text)},
                       {XQTextComponentPageBreakBeforeKey, pageBreakBefore}};
}

XQTextComponent XQTextComponent::fromDictionary(const QVariantMap& dictionary)
{
    XQTextComponent component;
    component.title = dictionary.value(XQTextComponentTitleKey).toString();
    component.text = dictionary.value(XQTextComponentTextKey).value<std::shared_ptr<TextStorage>>();
    component.pageBreakBefore = dictionary.value(XQTextComponentPageBreakBeforeKey).toBool();
    return component;
}

} // namespace qly

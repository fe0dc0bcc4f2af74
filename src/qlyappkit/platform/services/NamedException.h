#pragma once
// An exception that carries a name and a reason, for structural faults in input that must be well formed.
#include <QString>
#include <stdexcept>

namespace qly {

class NamedException : public std::runtime_error {
public:
    NamedException(const QString& name, const QString& reason)
        : std::runtime_error((name + QStringLiteral(": ") + reason).toStdString()), m_name(name), m_reason(reason)
    {
    }
    const QString& name() const { return m_name; }
    const QString& reason() const { return m_reason; }

private:
    QString m_name;
    QString m_reason;
};

} // namespace qly

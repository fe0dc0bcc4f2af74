#pragma once
// Readable gtest failure messages for Qt and framework values. Included in every test program
// through the precompiled header.
#include <QString>
#include <QVariant>
#include <ostream>

#include <qlyappkit/platform/text/Range.h>

inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QVariant& v, std::ostream* os)
{
    *os << "QVariant(" << v.typeName() << ", " << v.toString().toStdString() << ")";
}

namespace qly {
inline void PrintTo(const Range& r, std::ostream* os) { *os << "{" << r.location << ", " << r.length << "}"; }
} // namespace qly

#pragma once
// Numbers and truth values read from the start of a text, the way the platform's string accessors do:
// leading blanks (white space and newlines) are skipped, then an optional sign, then as many ASCII digits as
// follow; anything after them is ignored, and a text without digits gives 0. These never fail: every text
// has a value.
#include <QStringView>
#include <QtGlobal>

namespace qly {

/// The leading integer as 32 bits; out-of-range values clamp to INT_MIN/INT_MAX.
int stringIntValue(QStringView text);
/// The leading integer at native (64-bit) width; out-of-range values clamp to the qint64 limits.
qint64 stringIntegerValue(QStringView text);
/// The leading integer read as unsigned 64-bit: a negative value gives 0, too large a value clamps to the
/// maximum.
quint64 stringUnsignedIntegerValue(QStringView text);

/// The leading decimal number: digits with an optional fraction and an optional exponent ("e", sign, digits),
/// read independently of the locale. Overflow gives ±infinity, underflow ±0; "inf" and "nan" are not numbers.
double stringDoubleValue(QStringView text);
/// As stringDoubleValue, rounded once, directly to float.
float stringFloatValue(QStringView text);

/// True when, after blanks, an optional sign and any zeros, the text goes on with "Y", "y", "T", "t" or a
/// digit 1–9 ("yes", "true", "+007"); false otherwise ("no", "0", "", "-0x").
bool stringBoolValue(QStringView text);

} // namespace qly

#pragma once
// Internals shared by the archiver core and the coders of the platform's own types.
#include <qlyappkit/platform/services/KeyedArchiver.h>

#include <memory>

namespace qly {

struct TextTable;

namespace archiving::detail {

using AddType = std::function<void(int metaTypeId, const QString& className, Encoder, Decoder, Identity)>;

/// Registers Color, Font, ParagraphStyle, TextAttachment and AttributedString through `add`.
void registerPlatformTypes(const AddType& add);

/// Within the archive being written: a number for the table (the same table gets the same number).
qint64 tableNumber(const TextTable* table);
/// Within the archive being read: the table with that number, made on first use with `columns`.
std::shared_ptr<TextTable> tableForNumber(qint64 number, int columns);

} // namespace archiving::detail

} // namespace qly

#pragma once
// Keyed archiving to CBOR: QVariant values (basic types and the framework's registered types) to a
// self-describing CBOR tree and back. Deep copies archive and unarchive.
#include <QByteArray>
#include <QCborMap>
#include <QCborValue>
#include <QString>
#include <QVariant>
#include <functional>

namespace qly {

namespace archiving {

/// Encodes a value; a framework type becomes a map with its class name under "$class" (a plain map
/// that has a "$class" key of its own is wrapped, so it cannot be mistaken for one).
/// An invalid QVariant encodes as null, values of unsupported types as CBOR undefined.
QCborValue encode(const QVariant& value);
/// Decodes what encode() wrote; unknown classes and malformed trees give an invalid QVariant. Inside
/// a list or map only the offending value is invalid (attribute dictionaries drop it).
QVariant decode(const QCborValue& value);

QByteArray archivedData(const QVariant& value);
QVariant unarchive(const QByteArray& data);
/// A deep copy made by archiving and unarchiving (an invalid QVariant when the value cannot be archived).
QVariant deepCopy(const QVariant& value);

/// Writes a registered type's fields (the archiver adds the class name). Nested values go through encode().
using Encoder = std::function<QCborMap(const QVariant&)>;
/// Rebuilds a value from its fields; an invalid QVariant when they are malformed. Nested values go
/// through decode().
using Decoder = std::function<QVariant(const QCborMap&)>;
/// For types whose values refer to shared objects: the object a value refers to (null for none).
/// Within one archive, values that refer to one object are written once and come back referring to
/// one new object, so identity survives a deep copy.
using Identity = std::function<const void*(const QVariant&)>;

/// Teaches the archiver a type held in QVariants: its metatype id and a stable class name. A second
/// registration of the same type or class name replaces the first.
void registerType(int metaTypeId, const QString& className, Encoder encoder, Decoder decoder, Identity identity = {});

} // namespace archiving

} // namespace qly

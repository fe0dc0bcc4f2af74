#pragma once
// Reading and writing whole files in tests.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>

namespace qly::testfiles {

/// The file's bytes; empty when it cannot be read.
inline QByteArray readFileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Replaces the file's contents; a test failure when it cannot be written.
inline void writeFileBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size()) << path.toStdString();
}

} // namespace qly::testfiles

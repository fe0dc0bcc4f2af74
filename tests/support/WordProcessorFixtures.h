#pragma once
// The word-processor RTF fixtures (tests/fixtures/word-processor-rtf): RTF the office suite wrote from
// hand-written sources, each with NAME.expected.json saying what a perfect reader finds in it.
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "support/TestFiles.h"

namespace qly::testsupport {

inline const QString WordProcessorFixtureFolder = QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/word-processor-rtf");

/// The fixtures' names (NAME of NAME.rtf), sorted.
inline QStringList fixtureNames()
{
    QStringList names;
    for (const QString& file :
         QDir(WordProcessorFixtureFolder).entryList({QStringLiteral("*.rtf")}, QDir::Files, QDir::Name))
        names.append(QFileInfo(file).completeBaseName());
    return names;
}

inline QJsonObject expectations(const QString& name)
{
    const QByteArray json = qly::testfiles::readFileBytes(WordProcessorFixtureFolder + QLatin1Char('/') + name
                                                          + QStringLiteral(".expected.json"));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << name.toStdString() << ": " << error.errorString().toStdString();
    return document.object();
}

inline QStringList strings(const QJsonValue& value)
{
    QStringList list;
    for (const QJsonValue& item : value.toArray())
        list.append(item.toString());
    return list;
}

} // namespace qly::testsupport

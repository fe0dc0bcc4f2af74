// The word-processor RTF fixtures, their expectations and the office-suite census keep each other
// honest: each NAME.fodt source holds what NAME.expected.json says, and the office suite reads the
// same back from the NAME.rtf it wrote. Readers of word-processor RTF are tested against the same
// expectations.
#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "support/OfficeCensus.h"
#include "support/TestFiles.h"
#include "support/WordProcessorFixtures.h"

using namespace qly::testsupport;

namespace {

/// Checks a census against a fixture's expectations, naming the fixture and the item that differs.
void expectMatches(const DocumentCensus& census, const QJsonObject& expected, const QString& what)
{
    SCOPED_TRACE(what.toStdString());
    ASSERT_TRUE(census.error.isEmpty()) << census.error.toStdString();
    EXPECT_EQ(census.footnotes, strings(expected[QStringLiteral("footnotes")]));
    EXPECT_EQ(census.endnotes, strings(expected[QStringLiteral("endnotes")]));
    EXPECT_EQ(census.bodyText, expected[QStringLiteral("body")].toString());

    const QJsonArray comments = expected[QStringLiteral("comments")].toArray();
    EXPECT_EQ(census.comments.size(), comments.size());
    for (qsizetype i = 0; i < qMin(census.comments.size(), comments.size()); ++i) {
        SCOPED_TRACE("comment " + std::to_string(i));
        const QJsonObject comment = comments[i].toObject();
        EXPECT_EQ(census.comments[i].text, comment[QStringLiteral("text")].toString());
        EXPECT_EQ(census.comments[i].author, comment[QStringLiteral("author")].toString());
        EXPECT_EQ(census.comments[i].date, comment[QStringLiteral("date")].toString());
        EXPECT_EQ(census.comments[i].rangeText, comment[QStringLiteral("range")].toString());
    }

    // The suite keeps sizes in its own units (twips, hundredths of a millimetre) and loses a twip or
    // two on the way, hence the tolerance the expectations give.
    const double tolerance = expected[QStringLiteral("pointTolerance")].toDouble();
    const QJsonArray pictures = expected[QStringLiteral("pictures")].toArray();
    EXPECT_EQ(census.pictures.size(), pictures.size());
    for (qsizetype i = 0; i < qMin(census.pictures.size(), pictures.size()); ++i) {
        SCOPED_TRACE("picture " + std::to_string(i));
        const QJsonObject picture = pictures[i].toObject();
        EXPECT_NEAR(census.pictures[i].width, picture[QStringLiteral("width")].toDouble(), tolerance);
        EXPECT_NEAR(census.pictures[i].height, picture[QStringLiteral("height")].toDouble(), tolerance);
        EXPECT_EQ(census.pictures[i].format, picture[QStringLiteral("format")].toString());
    }
}

TEST(WordProcessorFixtures, EveryFixtureHasItsSourceAndExpectations)
{
    const QStringList names = fixtureNames();
    EXPECT_EQ(names,
              (QStringList{QStringLiteral("comments"), QStringLiteral("mixed"), QStringLiteral("notes"),
                           QStringLiteral("pictures")}));
    for (const QString& name : names) {
        EXPECT_TRUE(QFileInfo::exists(WordProcessorFixtureFolder + QLatin1Char('/') + name + QStringLiteral(".fodt")))
            << name.toStdString();
        EXPECT_FALSE(expectations(name).isEmpty()) << name.toStdString();
    }
}

// The expectations are what the hand-written source holds; reading the sources needs no office suite.
TEST(WordProcessorFixtures, SourcesHoldTheExpectations)
{
    for (const QString& name : fixtureNames())
        expectMatches(censusOfFlatODF(WordProcessorFixtureFolder + QLatin1Char('/') + name + QStringLiteral(".fodt")),
                      expectations(name), name + QStringLiteral(".fodt"));
}

// What the office suite reads back from the RTF it wrote: one call of the suite for all fixtures.
TEST(WordProcessorFixtures, OfficeSuiteReadsTheExpectationsBackFromEachRTF)
{
    const QStringList names = fixtureNames();
    QStringList files;
    for (const QString& name : names)
        files.append(WordProcessorFixtureFolder + QLatin1Char('/') + name + QStringLiteral(".rtf"));
    QString error;
    const QList<DocumentCensus> censuses = officeCensus(files, &error);
    ASSERT_TRUE(error.isEmpty()) << error.toStdString();
    ASSERT_EQ(censuses.size(), names.size());
    for (qsizetype i = 0; i < names.size(); ++i) {
        EXPECT_EQ(censuses[i].source, files[i]);
        expectMatches(censuses[i], expectations(names[i]), names[i] + QStringLiteral(".rtf"));
    }
}

// The census reads other formats the same way: the sources saved as DOCX by the suite hold the same.
TEST(OfficeCensus, ReadsDocxAsTheSuiteSavesIt)
{
    const QStringList names = fixtureNames();
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QStringList sources;
    for (const QString& name : names)
        sources.append(WordProcessorFixtureFolder + QLatin1Char('/') + name + QStringLiteral(".fodt"));
    ASSERT_TRUE(convertWithOfficeSuite(folder.path(), sources, QStringLiteral("docx")))
        << "soffice is missing or failed: run scripts/bootstrap";
    QStringList files;
    for (const QString& name : names)
        files.append(folder.filePath(name + QStringLiteral(".docx")));
    QString error;
    const QList<DocumentCensus> censuses = officeCensus(files, &error);
    ASSERT_TRUE(error.isEmpty()) << error.toStdString();
    ASSERT_EQ(censuses.size(), names.size());
    for (qsizetype i = 0; i < names.size(); ++i)
        expectMatches(censuses[i], expectations(names[i]), names[i] + QStringLiteral(".docx"));
}

TEST(OfficeCensus, LengthsInPoints)
{
    const struct {
        const char* length;
        std::optional<double> points;
    } cases[] = {
        {"72pt", 72.0},
        {"1in", 72.0},
        {"0.5in", 36.0},
        {"2.54cm", 72.0},
        {"25.4mm", 72.0},
        {"1pc", 12.0},
        {"96px", 72.0},
        {" 1.5IN ", 108.0},
        {"-0.25in", -18.0},
        {"", std::nullopt},
        {"12", std::nullopt},
        {"in", std::nullopt},
        {"3furlongs", std::nullopt},
    };
    for (const auto& c : cases) {
        const std::optional<double> points = odfLengthInPoints(QString::fromUtf8(c.length));
        ASSERT_EQ(points.has_value(), c.points.has_value()) << c.length;
        if (points) {
            EXPECT_NEAR(*points, *c.points, 1e-9) << c.length;
        }
    }
}

// The forms a hand-written or foreign flat ODF file may take, beyond what the fixtures hold.
TEST(OfficeCensus, ReadsTheEdgesOfFlatODF)
{
    const QByteArray xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="o" xmlns:text="t" xmlns:dc="d" xmlns:draw="dr" xmlns:svg="s" xmlns:table="ta">
 <office:body><office:text>
  <text:sequence-decls><text:sequence-decl text:name="Figure"/></text:sequence-decls>
  <text:p>  Runs   of
     spaces<text:s text:c="3"/>kept<text:tab/>tab<text:line-break/>break</text:p>
  <text:p><office:annotation office:name="open"><dc:creator>A</dc:creator><text:p>Never closed</text:p></office:annotation>x<office:annotation-end office:name="nobody"/>y</text:p>
  <table:table><table:table-row><table:table-cell><text:p>cell <text:span>one</text:span> <text:span>two</text:span></text:p></table:table-cell></table:table-row></table:table>
  <text:p>a<text:note text:note-class="endnote"><text:note-body>
     <text:p>Note with <text:s/>space</text:p>
   </text:note-body></text:note><draw:frame text:anchor-type="paragraph" svg:width="1cm" svg:height="2mm"><draw:image xlink:href="Pictures/x.jpg"/></draw:frame><draw:frame text:anchor-type="as-char"><draw:text-box><text:p>frame text</text:p></draw:text-box></draw:frame>b</text:p>
  <text:p>z<text:s text:c="2147483647"/></text:p>
 </office:text></office:body>
</office:document>)";
    const DocumentCensus census = censusOfFlatODFData(xml);
    ASSERT_TRUE(census.error.isEmpty()) << census.error.toStdString();
    EXPECT_EQ(census.bodyText,
              QStringLiteral("Runs of spaces   kept\ttab\nbreak\nxy\ncell one two\nab\nz")
                  + QString(4096, QLatin1Char(' ')) + QStringLiteral("\n"));
    EXPECT_EQ(census.endnotes, QStringList{QStringLiteral("Note with  space")});
    EXPECT_TRUE(census.footnotes.isEmpty());
    ASSERT_EQ(census.comments.size(), 1);
    EXPECT_EQ(census.comments[0].text, QStringLiteral("Never closed"));
    EXPECT_EQ(census.comments[0].author, QStringLiteral("A"));
    EXPECT_EQ(census.comments[0].rangeText, QString());
    ASSERT_EQ(census.pictures.size(), 1);
    EXPECT_NEAR(census.pictures[0].width, 72.0 / 2.54, 1e-9);
    EXPECT_NEAR(census.pictures[0].height, 72.0 / 25.4 * 2, 1e-9);
    EXPECT_EQ(census.pictures[0].format, QStringLiteral("JPEG"));

    EXPECT_FALSE(censusOfFlatODFData("<office:document><office:body/>").error.isEmpty());
    EXPECT_FALSE(censusOfFlatODFData("<other/>").error.isEmpty());
    EXPECT_FALSE(censusOfFlatODF(WordProcessorFixtureFolder + QStringLiteral("/missing.fodt")).error.isEmpty());
}

} // namespace

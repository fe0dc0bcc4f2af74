#include <qlyappkit/platform/values/Font.h>

#include <QFontDatabase>
#include <QFontInfo>

using qly::Font;

TEST(Font, FaceNamesParseAndRoundTrip)
{
    struct Case {
        const char* name;
        const char* family;
        unsigned traits;
        const char* written;
    } cases[] = {
        {"Helvetica", "Helvetica", 0, "Helvetica"},
        {"Helvetica-Bold", "Helvetica", qly::BoldFontMask, "Helvetica-Bold"},
        {"Times-Italic", "Times", qly::ItalicFontMask, "Times-Italic"},
        {"Times-BoldItalic", "Times", qly::BoldFontMask | qly::ItalicFontMask, "Times-BoldItalic"},
        {"Helvetica-Oblique", "Helvetica", qly::ItalicFontMask, "Helvetica-Italic"},
        {"Courier-BoldOblique", "Courier", qly::BoldFontMask | qly::ItalicFontMask, "Courier-BoldItalic"},
        {"Times-Roman", "Times", 0, "Times"},
        {"Liberation Sans-Bold", "Liberation Sans", qly::BoldFontMask, "Liberation Sans-Bold"},
        {"-Bold", "-Bold", 0, "-Bold"}, // a suffix alone is not a family
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Font font(QString::fromLatin1(c.name), 13);
        EXPECT_EQ(font.familyName(), QLatin1String(c.family));
        EXPECT_EQ(font.traits(), c.traits);
        EXPECT_EQ(font.fontName(), QLatin1String(c.written));
        EXPECT_EQ(font.pointSize(), 13);
        EXPECT_EQ(Font(font.fontName(), 13), font);
    }
    EXPECT_EQ(Font::fromFamily(QStringLiteral("Times"), 10, qly::BoldFontMask | qly::UnitalicFontMask).traits(),
              unsigned(qly::BoldFontMask));
    EXPECT_FALSE(Font().isValid());
    EXPECT_EQ(Font::userFont(), Font(QStringLiteral("Helvetica"), 12));
    EXPECT_EQ(Font::userFont(18).pointSize(), 18);
    EXPECT_EQ(Font::userFont().withSize(9).fontName(), QStringLiteral("Helvetica"));
}

TEST(Font, FontWithNameNeedsAnInstalledFamily)
{
    // The standard names resolve through their installed stand-ins but keep the requested name.
    const auto helvetica = Font::fontWithName(QStringLiteral("Helvetica-Bold"), 12);
    ASSERT_TRUE(helvetica);
    EXPECT_EQ(helvetica->familyName(), QStringLiteral("Helvetica"));
    EXPECT_TRUE(helvetica->isBold());
    EXPECT_TRUE(Font::fontWithName(QStringLiteral("Times New Roman"), 12));
    EXPECT_TRUE(Font::fontWithName(QStringLiteral("courier"), 12));
    EXPECT_TRUE(Font::fontWithName(QStringLiteral("Liberation Serif-Italic"), 12));

    EXPECT_FALSE(Font::fontWithName(QStringLiteral("NoSuchFamilyAnywhere"), 12));
    EXPECT_FALSE(Font::fontWithName(QStringLiteral("NoSuchFamilyAnywhere-Bold"), 12));
    EXPECT_FALSE(Font::fontWithName(QString(), 12));
}

TEST(Font, TraitConversion)
{
    const Font helvetica = Font::userFont();
    const auto bold = helvetica.convertedToHaveTrait(qly::BoldFontMask);
    ASSERT_TRUE(bold);
    EXPECT_EQ(bold->fontName(), QStringLiteral("Helvetica-Bold"));
    const auto boldItalic = bold->convertedToHaveTrait(qly::ItalicFontMask);
    ASSERT_TRUE(boldItalic);
    EXPECT_EQ(boldItalic->fontName(), QStringLiteral("Helvetica-BoldItalic"));
    EXPECT_EQ(boldItalic->convertedToHaveTrait(qly::UnboldFontMask)->fontName(), QStringLiteral("Helvetica-Italic"));
    EXPECT_EQ(boldItalic->convertedToHaveTrait(qly::UnitalicFontMask)->fontName(), QStringLiteral("Helvetica-Bold"));
    EXPECT_EQ(boldItalic->convertedToHaveTrait(qly::UnitalicFontMask)->pointSize(), 12);

    // Oblique faces count as italic.
    EXPECT_TRUE(Font(QStringLiteral("DejaVu Sans"), 12).convertedToHaveTrait(qly::ItalicFontMask)
                || !QFontDatabase::families().contains(QStringLiteral("DejaVu Sans")));

    EXPECT_FALSE(Font(QStringLiteral("NoSuchFamilyAnywhere"), 12).convertedToHaveTrait(qly::BoldFontMask));

    // A family with a single face cannot be made bold or italic.
    const QString singleFace = QStringLiteral("DejaVu Math TeX Gyre");
    if (!QFontDatabase::families().contains(singleFace))
        GTEST_SKIP() << "no single-face family installed";
    EXPECT_FALSE(Font(singleFace, 12).convertedToHaveTrait(qly::BoldFontMask));
    EXPECT_FALSE(Font(singleFace, 12).convertedToHaveTrait(qly::ItalicFontMask));
    EXPECT_TRUE(Font(singleFace, 12).convertedToHaveTrait(qly::UnboldFontMask));
}

TEST(Font, ToQFontUsesInstalledFamilyAtPixelSize)
{
    const QFont q = Font(QStringLiteral("Times-BoldItalic"), 14).toQFont();
    EXPECT_EQ(q.pixelSize(), 14);
    EXPECT_TRUE(q.bold());
    EXPECT_TRUE(q.italic());
    EXPECT_EQ(QFontInfo(q).family(), QStringLiteral("Liberation Serif"));
    EXPECT_EQ(Font(QStringLiteral("Helvetica"), 10.6).toQFont().pixelSize(), 11);

    const Font back = Font::fromQFont(q);
    EXPECT_EQ(back.familyName(), QStringLiteral("Liberation Serif"));
    EXPECT_EQ(back.pointSize(), 14);
    EXPECT_EQ(back.traits(), unsigned(qly::BoldFontMask | qly::ItalicFontMask));
}

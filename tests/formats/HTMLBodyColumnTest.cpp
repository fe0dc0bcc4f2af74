// The centred column: the whole body wrapped, and pages without a body left as they are.
#include <gtest/gtest.h>

#include <qlyappkit/formats/html/HTMLBodyColumn.h>

using namespace qly;

TEST(HTMLBodyColumn, WrapsTheBodyOrLeavesThePageAlone)
{
    const std::vector<std::pair<QByteArray, QByteArray>> cases{
        {"<html><body>\n<p>x</p>\n</body></html>",
         "<html><body>\n<div style=\"width: 400px; margin: 0 auto\">\n\n<p>x</p>\n</div>\n</body></html>"},
        {"<HTML><BODY class=\"a>b\"><p>\xC3\xA9</p></BODY>",
         "<HTML><BODY class=\"a>\n<div style=\"width: 400px; margin: 0 auto\">\nb\"><p>\xC3\xA9</p></div>\n</BODY>"},
        {"\xEF\xBB\xBF<body></body>",
         "\xEF\xBB\xBF<body>\n<div style=\"width: 400px; margin: 0 auto\">\n</div>\n</body>"},
        // No body element, no ">" after "<body", no "</body>" after it, or not UTF-8: unchanged.
        {"<html><p>no body</p></html>", "<html><p>no body</p></html>"},
        {"<html><body", "<html><body"},
        {"</body><body>", "</body><body>"},
        {"<body>\xFF\xFE</body>", "<body>\xFF\xFE</body>"},
        {"", ""},
    };
    for (const auto& [page, expected] : cases)
        EXPECT_EQ(HTMLDataWithBodyTableOfWidth(400, page), expected) << page.constData();
}

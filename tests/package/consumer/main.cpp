// A program outside the project, built against the installed package.
#include <cstdio>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/WordCounting.h>

int main()
{
    qly::AttributedString text(QStringLiteral("three small words"));
    const qsizetype words = qly::wordCount(text, qly::Range{0, text.length()});
    std::printf("words=%lld\n", static_cast<long long>(words));
    return words == 3 ? 0 : 1;
}

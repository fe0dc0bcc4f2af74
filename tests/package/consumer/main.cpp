#include <cstdio>
#include <qlyappkit/platform/AttributedString.h>

int main()
{
    qly::AttributedString text(QStringLiteral("three small words"));
    int words = 0;
    for (qsizetype i = 0; i < text.length();) {
        const qsizetype next = text.nextWordFromIndex(i, true);
        const qly::Range r = text.doubleClickAtIndex(i);
        if (text.substring(r).trimmed().size() > 0)
            ++words;
        i = next > i ? next : i + 1;
    }
    std::printf("words=%d\n", words);
    return words == 3 ? 0 : 1;
}

// The storages' block-reading paragraph finder must agree with the platform's character-by-character one.
#include <qlyappkit/text/storages/StorageSupport_p.h>

#include "StorageTestSupport.h"

using namespace qly;

TEST(StorageSupport, ParagraphRangeAgreesWithThePlatform)
{
    QRandomGenerator rng(5);
    const QString alphabet = QStringLiteral("ab \n\r\u2029");
    for (int round = 0; round < 300; ++round) {
        QString s;
        // Mostly short texts, some longer than the reading block so that blocks are crossed.
        const int length = int(rng.bounded(round % 10 == 0 ? 900 : 40));
        for (int i = 0; i < length; ++i)
            s += rng.bounded(10) < 8 ? QChar(u'a') : alphabet.at(int(rng.bounded(int(alphabet.size()))));
        const MutableAttributedString text(s);
        const AttributedString value(s);
        for (int probe = 0; probe < 20; ++probe) {
            const qsizetype at = qsizetype(rng.bounded(length + 1));
            const Range range{at, qsizetype(rng.bounded(int(length - at + 1)))};
            ASSERT_EQ(storage_detail::paragraphRange(text, range), value.paragraphRange(range))
                << "text " << s.toStdString() << " range " << range.location << "+" << range.length;
        }
    }
}

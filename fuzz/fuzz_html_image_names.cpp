// Fuzz target for the names image files get from documents: whatever name a document gives, the file
// name must be a plain name inside the images folder (no folder part, no control character, no
// leading dot), short enough for the file system, ending in ".png" or, for JPEG, ".jpg"/".jpeg".
// The first byte chooses white-space stripping and how many names come before (equation numbering).
#include <cstdint>

#include <QString>

#include <qlyappkit/formats/html/HTMLImageFiles.h>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qly::fuzz::prepareEnvironment();
    if (size == 0)
        return 0;
    const bool strip = data[0] & 1;
    const int before = (data[0] >> 1) & 3;
    const QString name = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    qly::HTMLImageNaming naming(strip);
    for (int i = 0; i <= before; ++i) {
        bool jpeg = false;
        const QString file = naming.fileNameForImage(name, &jpeg);
        const QString lower = file.toLower();
        QLY_FUZZ_CHECK(!file.isEmpty() && !file.startsWith(u'.'));
        QLY_FUZZ_CHECK(!file.contains(u'/') && !file.contains(u'\\'));
        QLY_FUZZ_CHECK(file.toUtf8().size() <= 255);
        for (const QChar c : file)
            QLY_FUZZ_CHECK(c.unicode() >= 0x20 && !(c.unicode() >= 0x7F && c.unicode() <= 0x9F));
        QLY_FUZZ_CHECK(jpeg ? lower.endsWith(QLatin1String(".jpg")) || lower.endsWith(QLatin1String(".jpeg"))
                            : file.endsWith(QLatin1String(".png")));
    }
    return 0;
}

#include <qlyappkit/platform/rtf/RTFCodePages_p.h>

#include <QStringDecoder>
#include <memory>
#include <unordered_map>

namespace qly::rtf {

namespace {

// 0x80–0x9F of Windows-1252; the rest of the page equals Latin-1.
constexpr char16_t kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

struct CharsetPage {
    int charset;
    int codePage;
};
constexpr CharsetPage kCharsets[] = {
    {2, 1252},   {77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936}, {136, 950},  {161, 1253}, {162, 1254},
    {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257}, {204, 1251}, {222, 874}, {238, 1250}, {254, 437},  {255, 850},
};

QStringList decoderNames(int codePage)
{
    switch (codePage) {
    case 932:
        return {QStringLiteral("windows-31j"), QStringLiteral("Shift_JIS")};
    case 936:
        return {QStringLiteral("GBK"), QStringLiteral("windows-936")};
    case 949:
        return {QStringLiteral("windows-949"), QStringLiteral("EUC-KR")};
    case 950:
        return {QStringLiteral("Big5"), QStringLiteral("windows-950")};
    case 1361:
        return {QStringLiteral("Johab")};
    case 10000:
        return {QStringLiteral("macintosh")};
    case 65001:
        return {QStringLiteral("UTF-8")};
    case 28591:
        return {QStringLiteral("ISO-8859-1")};
    default:
        return {QStringLiteral("windows-%1").arg(codePage), QStringLiteral("IBM%1").arg(codePage),
                QStringLiteral("cp%1").arg(codePage)};
    }
}

// One converter per code page and thread, made on first use (opening a converter is not cheap).
QStringDecoder* decoderFor(int codePage)
{
    thread_local std::unordered_map<int, std::unique_ptr<QStringDecoder>> decoders;
    auto it = decoders.find(codePage);
    if (it != decoders.end())
        return it->second.get();
    std::unique_ptr<QStringDecoder> decoder;
    for (const QString& name : decoderNames(codePage)) {
        const QByteArray latin = name.toLatin1();
        auto candidate = std::make_unique<QStringDecoder>(latin.constData(), QStringConverter::Flag::Stateless);
        if (candidate->isValid()) {
            decoder = std::move(candidate);
            break;
        }
    }
    QStringDecoder* result = decoder.get();
    decoders.emplace(codePage, std::move(decoder));
    return result;
}

} // namespace

int codePageForCharset(int charset, int documentCodePage)
{
    for (const CharsetPage& entry : kCharsets) {
        if (entry.charset == charset)
            return entry.codePage;
    }
    return documentCodePage;
}

QString decodeWindows1252(QByteArrayView bytes)
{
    QString out;
    out.resize(bytes.size());
    QChar* d = out.data();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        d[i] = (b >= 0x80 && b < 0xA0) ? QChar(kWindows1252High[b - 0x80]) : QChar(b);
    }
    return out;
}

QString decodeCodePage(QByteArrayView bytes, int codePage)
{
    if (codePage == DefaultCodePage)
        return decodeWindows1252(bytes);
    if (QStringDecoder* decoder = decoderFor(codePage)) {
        decoder->resetState();
        return decoder->decode(bytes);
    }
    return decodeWindows1252(bytes);
}

} // namespace qly::rtf

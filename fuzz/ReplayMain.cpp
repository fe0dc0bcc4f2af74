// Runs a fuzz target's entry point on stored inputs, so that the ordinary (gcc) build replays every
// corpus as a test: replay_NAME PATH... where each path is an input file or a folder of them.
// A folder that does not exist holds no inputs.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    QStringList files;
    for (int i = 1; i < argc; ++i) {
        const QString path = QString::fromLocal8Bit(argv[i]);
        const QFileInfo info(path);
        if (info.isDir()) {
            const QDir dir(path);
            for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden, QDir::Name))
                files << dir.filePath(name);
        } else if (info.exists()) {
            files << path;
        }
    }
    for (const QString& path : files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
            return 1;
        }
        const QByteArray bytes = file.readAll();
        std::fprintf(stderr, "%s\n", qPrintable(path));
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()), std::size_t(bytes.size()));
    }
    std::printf("replayed %lld inputs\n", static_cast<long long>(files.size()));
    return 0;
}

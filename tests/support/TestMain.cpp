// Test entry point: a QApplication (offscreen) so fonts, images and the event loop are available, and
// user defaults kept in a private folder so tests never touch the developer's own settings.
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <qlyappkit/platform/services/UserDefaults.h>

// Under LeakSanitizer: the PDF library keeps a little memory per document it loads, and the font
// library per font it configures. Neither is ours to free; everything else must be.
extern "C" const char* __lsan_default_suppressions() { return "leak:libQt6Pdf\nleak:libfontconfig.so\n"; }

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The GUI classes want a private runtime folder, which sessions without a desktop lack.
    QTemporaryDir runtimeDir;
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        qputenv("XDG_RUNTIME_DIR", runtimeDir.path().toUtf8());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QlyTests"));
    QTemporaryDir defaultsDir;
    qly::UserDefaults::useIsolatedStorage(defaultsDir.path());
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

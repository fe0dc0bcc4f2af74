// Test entry point: a QApplication (offscreen) so fonts, images and the event loop are available, and
// user defaults kept in a private folder so tests never touch the developer's own settings.
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <qlyappkit/platform/services/UserDefaults.h>

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

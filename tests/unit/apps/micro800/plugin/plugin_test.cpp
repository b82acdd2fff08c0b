#include "apps/micro800/plugin/plugin.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QTemporaryDir>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(Plugin, AMissingFileIsTold) {
    Plugin plugin;
    QString problem;
    EXPECT_FALSE(plugin.load("/nowhere/x.so", &problem));
    EXPECT_EQ(problem, QString("plugin /nowhere/x.so: no such file"));
    EXPECT_EQ(plugin.driver(), nullptr);
}

TEST(Plugin, ADirectoryIsNoPlugin) {
    QTemporaryDir dir;
    Plugin plugin;
    QString problem;
    EXPECT_FALSE(plugin.load(dir.path(), &problem));
    EXPECT_EQ(problem, "plugin " + dir.path() + ": not a file that can be read");
}

TEST(Plugin, AFileThatIsNoPluginIsTold) {
    QTemporaryDir dir;
    QFile file(dir.path() + "/x.so");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a library");
    file.close();
    Plugin plugin;
    QString problem;
    EXPECT_FALSE(plugin.load(file.fileName(), &problem));
    EXPECT_TRUE(problem.startsWith("plugin " + file.fileName() + ": ")) << qPrintable(problem);
    EXPECT_TRUE(problem.contains("not an ELF object")) << qPrintable(problem);
}

TEST(Plugin, ALibraryThatIsNoPluginIsTold) {
    const QString core = QLibraryInfo::location(QLibraryInfo::LibrariesPath) + "/libQt5Core.so.5";
    ASSERT_TRUE(QFile::exists(core));
    Plugin plugin;
    QString problem;
    EXPECT_FALSE(plugin.load(core, &problem));
    EXPECT_TRUE(problem.startsWith("plugin " + core + ": ")) << qPrintable(problem);
    EXPECT_TRUE(problem.contains("plugin meta data")) << qPrintable(problem);
}

TEST(Plugin, APluginOfAnotherInterfaceIsTold) {
    const QString sqlite =
        QLibraryInfo::location(QLibraryInfo::PluginsPath) + "/sqldrivers/libqsqlite.so";
    ASSERT_TRUE(QFile::exists(sqlite));
    Plugin plugin;
    QString problem;
    EXPECT_FALSE(plugin.load(sqlite, &problem));
    EXPECT_EQ(problem, "plugin " + sqlite +
                           ": implements org.qt-project.Qt.QSqlDriverFactoryInterface, not "
                           "com.tarvelon.drivers.DriverInterface/1.1");
    EXPECT_EQ(plugin.driver(), nullptr);
}

class FindPlugin : public testing::Test {
 protected:
    FindPlugin() { qunsetenv("MICRO800_PLUGIN"); }
    ~FindPlugin() override { qunsetenv("MICRO800_PLUGIN"); }

    void put(const QString& file) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
        QFile made(file);
        ASSERT_TRUE(made.open(QIODevice::WriteOnly));
    }

    QTemporaryDir dir;
    QString found;
    QString problem;
};

TEST_F(FindPlugin, TheCommandLineComesFirst) {
    qputenv("MICRO800_PLUGIN", "/from/environment.so");
    ASSERT_TRUE(findPlugin("given.so", dir.path() + "/bin", &found, &problem));
    EXPECT_EQ(found, QString("given.so"));
    ASSERT_TRUE(findPlugin("", dir.path() + "/bin", &found, &problem));
    EXPECT_EQ(found, QString("/from/environment.so"));
}

TEST_F(FindPlugin, ThenBesideTheProgramAndInTheLibraryDirectory) {
    EXPECT_FALSE(findPlugin("", dir.path() + "/bin", &found, &problem));
    EXPECT_TRUE(problem.contains(dir.path() + "/plugins/libab_micro800_ethernet.so"))
        << qPrintable(problem);
    EXPECT_TRUE(problem.endsWith("name it with --plugin FILE"));

    put(dir.path() + "/lib/micro800/libab_micro800_ethernet.so");
    ASSERT_TRUE(findPlugin("", dir.path() + "/bin", &found, &problem));
    EXPECT_EQ(found, dir.path() + "/lib/micro800/libab_micro800_ethernet.so");

    put(dir.path() + "/plugins/libab_micro800_ethernet.so");
    ASSERT_TRUE(findPlugin("", dir.path() + "/bin", &found, &problem));
    EXPECT_EQ(found, dir.path() + "/plugins/libab_micro800_ethernet.so");
}

}  // namespace

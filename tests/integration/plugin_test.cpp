// The plugin file as its loaders see it.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QPointer>
#include <cstring>

#include "integration/driver_rig.h"

namespace {

const char kInterfaceId[] = "com.tarvelon.drivers.DriverInterface/1.1";

TEST(Plugin, IsTakenByTheLoader) {
    QPluginLoader loader(pluginFile());
    EXPECT_EQ(QString(kInterfaceId), loader.metaData().value("IID").toString());
    QObject* instance = loader.instance();
    ASSERT_TRUE(instance) << loader.errorString().toStdString();
    DriverInterface* driver = qobject_cast<DriverInterface*>(instance);
    ASSERT_TRUE(driver);
    EXPECT_EQ(QString("Micro800 Ethernet"), driver->name());
    EXPECT_EQ(instance, driver->getThisObject());
    EXPECT_EQ(static_cast<void*>(driver), instance->qt_metacast(kInterfaceId));
    EXPECT_EQ(static_cast<void*>(driver), instance->qt_metacast("DriverInterface"));
    EXPECT_TRUE(loader.unload());
}

TEST(Plugin, KeepsOneInstanceAndMakesANewOneWhenItWasDeleted) {
    QPluginLoader loader(pluginFile());
    QPointer<QObject> first(loader.instance());
    ASSERT_FALSE(first.isNull());
    EXPECT_EQ(first.data(), loader.instance());
    delete first.data();
    EXPECT_TRUE(first.isNull());
    QPointer<QObject> second(loader.instance());
    ASSERT_FALSE(second.isNull());
    EXPECT_EQ(QString("Micro800 Ethernet"), qobject_cast<DriverInterface*>(second.data())->name());
    delete second.data();
}

TEST(Plugin, CreatesADriverForEveryCall) {
    const std::unique_ptr<DriverInterface> one = createDriver();
    const std::unique_ptr<DriverInterface> two = createDriver();
    ASSERT_TRUE(one && two);
    EXPECT_NE(one.get(), two.get());
    EXPECT_EQ(QString("Micro800 Ethernet"), one->name());
    EXPECT_EQ(static_cast<void*>(one.get()), one->getThisObject()->qt_metacast(kInterfaceId));
}

TEST(Plugin, CarriesTheVerificationDataOfTheOldLoader) {
    QLibrary library(pluginFile());
    typedef const char* (*Query)();
    const Query query =
        reinterpret_cast<Query>(library.resolve("qt_plugin_query_verification_data"));
    ASSERT_TRUE(query);
    EXPECT_STREQ(
        "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.7.3\ndebug=false\n"
        "buildkey=arm linux gnueabi-g++ full-config",
        query());
}

TEST(Plugin, ExportsNothingElse) {
    void* handle = dlopen(pluginFile().toLocal8Bit().constData(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(handle) << dlerror();
    for (const char* name : {"CreateDriver", "qt_plugin_instance", "qt_plugin_query_metadata",
                             "qt_plugin_query_verification_data"}) {
        EXPECT_TRUE(dlsym(handle, name)) << name;
    }
    for (const char* name :
         {"_ZN19DriverABMicro800EthC1Ev", "_Z9cip_errnov", "cip_errno", "_Z15GetDatabaseNamev"}) {
        EXPECT_FALSE(dlsym(handle, name)) << name;
    }
    dlclose(handle);
}

TEST(Plugin, DestroyingAnUnusedDriverDoesNotWait) {
    for (int i = 0; i < 100; ++i) {
        createDriver().reset();
    }
}

}  // namespace

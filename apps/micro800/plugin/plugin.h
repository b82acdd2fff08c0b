#ifndef APPS_MICRO800_PLUGIN_PLUGIN_H
#define APPS_MICRO800_PLUGIN_PLUGIN_H

#include <QLibrary>
#include <QPluginLoader>
#include <QString>
#include <QStringList>
#include <memory>

#include "runtime/driver_interface.h"

/// The plugin file, loaded the way a runtime loads it. Unloading destroys the driver object,
/// which waits for its worker thread.
class Plugin {
 public:
    Plugin() = default;
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    /// Loads `file`. False when there is no such file, when it is no plugin, or when it is a
    /// plugin for another interface; `problem` names the reason.
    bool load(const QString& file, QString* problem);
    /// The same for a driver of its own: load() gives every caller the one instance of the file.
    /// False also when the file makes no further ones.
    bool loadAnother(const QString& file, QString* problem);

    /// Null before a successful load. Belongs to this object.
    DriverInterface* driver() const { return loaded; }
    /// Absolute path of the loaded file.
    QString fileName() const { return loader.fileName(); }
    /// The interface identifier in the file's metadata.
    QString interfaceId() const;

 private:
    QPluginLoader loader;
    QLibrary library;
    std::unique_ptr<DriverInterface> own;  ///< of loadAnother()
    DriverInterface* loaded = nullptr;
};

/// The plugin file to load: `given` when it is not empty, else the environment's MICRO800_PLUGIN,
/// else the first that exists of pluginPlaces(). False when none of those exists.
bool findPlugin(const QString& given, const QString& programDir, QString* file, QString* problem);

/// Where the plugin lies for a program in `programDir`: beside it in a build tree, and in the
/// library directory when both are installed.
QStringList pluginPlaces(const QString& programDir);

#endif

#include "apps/micro800/plugin/plugin.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>

#include "apps/micro800/base/problem.h"

namespace {

const char kPluginFile[] = "libab_micro800_ethernet.so";
/// What every such file exports: it returns a new driver, owned by the caller.
const char kFactory[] = "CreateDriver";

}  // namespace

Plugin::~Plugin() {
    if (own) {
        own.reset();
        library.unload();
    }
    if (loaded) {
        loader.unload();
    }
}

bool Plugin::load(const QString& file, QString* problem) {
    const QFileInfo info(file);
    if (!info.exists()) {
        return fail(problem, QStringLiteral("plugin %1: no such file").arg(file));
    }
    if (!info.isFile() || !info.isReadable()) {
        return fail(problem, QStringLiteral("plugin %1: not a file that can be read").arg(file));
    }
    loader.setFileName(info.absoluteFilePath());
    // Resolved as a whole: a symbol that is missing shows here and not in the middle of a read.
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    QObject* instance = loader.instance();
    if (!instance) {
        return fail(
            problem,
            QStringLiteral("plugin %1: cannot be loaded: %2").arg(file, loader.errorString()));
    }
    loaded = qobject_cast<DriverInterface*>(instance);
    if (!loaded) {
        const QString found = interfaceId();
        loader.unload();
        return fail(problem, QStringLiteral("plugin %1: implements %2, not %3")
                                 .arg(file, found, qobject_interface_iid<DriverInterface*>()));
    }
    return true;
}

bool Plugin::loadAnother(const QString& file, QString* problem) {
    if (!load(file, problem)) {
        return false;
    }
    using Create = DriverInterface* (*)();
    library.setFileName(loader.fileName());
    const auto create = reinterpret_cast<Create>(library.resolve(kFactory));
    if (!create) {
        return fail(problem, QStringLiteral("plugin %1: makes only one driver").arg(file));
    }
    own.reset(create());
    loaded = own.get();
    return true;
}

QString Plugin::interfaceId() const {
    return loader.metaData().value(QStringLiteral("IID")).toString();
}

QStringList pluginPlaces(const QString& programDir) {
    QStringList places;
    for (const char* directory :
         {"../plugins/", "../lib/micro800/", MICRO800_LIBDIR "/micro800/"}) {
        const QString place = QDir::cleanPath(
            programDir + QLatin1Char('/') + QLatin1String(directory) + QLatin1String(kPluginFile));
        if (!places.contains(place)) {
            places << place;
        }
    }
    return places;
}

bool findPlugin(const QString& given, const QString& programDir, QString* file, QString* problem) {
    *file = given.isEmpty() ? qEnvironmentVariable("MICRO800_PLUGIN") : given;
    if (!file->isEmpty()) {
        return true;  // load() reports the fault
    }
    const QStringList places = pluginPlaces(programDir);
    for (const QString& place : places) {
        if (QFileInfo::exists(place)) {
            *file = place;
            return true;
        }
    }
    return fail(problem, QStringLiteral("no plugin file at %1; name it with --plugin FILE")
                             .arg(places.join(QLatin1String(" or "))));
}

#ifndef COMMON_QT_COMPAT_H
#define COMMON_QT_COMPAT_H

#include <QtGlobal>
#include <QtPlugin>

/// Everything that differs between Qt 4.7 (the panel) and Qt 5.15 (Debian). No other product file
/// asks for the Qt version.

#if QT_VERSION >= 0x050000
/// Inside a plugin class: the metadata by which Qt 5's QPluginLoader takes the library.
/// moc writes qt_plugin_instance() and qt_plugin_query_metadata() for it.
#define MICRO800_PLUGIN_METADATA(iid) Q_PLUGIN_METADATA(IID iid)
#define MICRO800_QT_WRITES_PLUGIN_INSTANCE 1
/// What moc writes into it: Qt's own lets an exception out.
#undef Q_PLUGIN_INSTANCE
#define Q_PLUGIN_INSTANCE(Class) \
    { return Class::pluginInstance(); }
#else
#define MICRO800_PLUGIN_METADATA(iid)
#define MICRO800_QT_WRITES_PLUGIN_INSTANCE 0
#endif

/// qrand(), which Qt 5.15 still has and marks as outdated.
inline int compatRand() {
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    return qrand();
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

/// qsrand(), likewise: seeds the calling thread's generator.
inline void compatSeedRand(unsigned int seed) {
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    qsrand(seed);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

#endif

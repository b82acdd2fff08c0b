// The entry points that the library exports, and nothing else.

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/border.h"

/// A new driver, owned by the caller and deleted through the interface; null without memory for it.
extern "C" Q_DECL_EXPORT DriverInterface* CreateDriver() {
    return withoutThrowing(static_cast<DriverInterface*>(0),
                           []() -> DriverInterface* { return new DriverABMicro800Eth; });
}

/// What the Qt 4.7.3 loader compares with its own build before it takes the library.
extern "C" Q_DECL_EXPORT const char* qt_plugin_query_verification_data() {
    return "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
           "version=4.7.3\n"
           "debug=false\n"
           "buildkey=arm linux gnueabi-g++ full-config";
}

#if !MICRO800_QT_WRITES_PLUGIN_INSTANCE
/// The instance that the plugin loader returns; a new one when the last was deleted.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance() {
    return DriverABMicro800Eth::pluginInstance();
}
#endif

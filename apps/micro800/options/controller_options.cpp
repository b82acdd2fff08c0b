#include "apps/micro800/options/controller_options.h"

OptionSpec verboseOptionSpec() {
    return {QStringLiteral("verbose"), QString(),
            QStringLiteral("Shows every request and reply on standard error: each field with its "
                           "offset, name and bytes in hexadecimal."),
            QString()};
}

TraceSink traceFrom(const CommandLine& line, Console* console) {
    if (!line.isSet(QStringLiteral("verbose"))) {
        return TraceSink();
    }
    return [console](const QString& text) { console->error(text); };
}

#ifndef APPS_MICRO800_OPTIONS_OUTPUT_OPTIONS_H
#define APPS_MICRO800_OPTIONS_OUTPUT_OPTIONS_H

#include <QVector>

#include "apps/micro800/format/value_format.h"
#include "apps/micro800/terminal/command_line.h"

/// In which form values are printed.
struct OutputOptions {
    enum class Form { kText, kJson, kCsv };

    Form form = Form::kText;
    NumberBase base = NumberBase::kDecimal;
    bool quiet = false;

    bool isText() const { return form == Form::kText; }
};

/// --json, --csv, --hex and --quiet; the texts say what a command prints in that form.
QVector<OptionSpec> outputOptionSpecs(const QString& json, const QString& csv,
                                      const QString& quiet);

/// Takes them from the command line. False when two of them exclude each other.
bool outputOptionsFrom(const CommandLine& line, OutputOptions* options, QString* problem);

#endif

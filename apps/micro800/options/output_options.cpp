#include "apps/micro800/options/output_options.h"

#include "apps/micro800/base/problem.h"

QVector<OptionSpec> outputOptionSpecs(const QString& json, const QString& csv,
                                      const QString& quiet) {
    return {
        {QStringLiteral("json"), QString(), json, QString()},
        {QStringLiteral("csv"), QString(), csv, QString()},
        {QStringLiteral("hex"), QString(),
         QStringLiteral("Prints whole numbers as 0x and all digits of their type, -2 of an INT as "
                        "0xFFFE; in JSON as strings."),
         QString()},
        {QStringLiteral("quiet"), QString(), quiet, QString()},
    };
}

bool outputOptionsFrom(const CommandLine& line, OutputOptions* options, QString* problem) {
    const bool json = line.isSet(QStringLiteral("json"));
    const bool csv = line.isSet(QStringLiteral("csv"));
    if (json && csv) {
        return fail(problem, QStringLiteral("--json and --csv exclude each other"));
    }
    options->form = json  ? OutputOptions::Form::kJson
                    : csv ? OutputOptions::Form::kCsv
                          : OutputOptions::Form::kText;
    options->base =
        line.isSet(QStringLiteral("hex")) ? NumberBase::kHexadecimal : NumberBase::kDecimal;
    options->quiet = line.isSet(QStringLiteral("quiet"));
    return true;
}

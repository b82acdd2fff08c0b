#ifndef APPS_SIMULATOR_OPTIONS_H
#define APPS_SIMULATOR_OPTIONS_H

#include <QHostAddress>
#include <QStringList>

#include "apps/simulator/objects/controller.h"

namespace sim {

/// What the command line asks for.
struct Options {
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 port = 44818;
    QStringList tagFiles;
    QStringList tags;
    QStringList files;  ///< data files
    QStringList faults;
    QString log;
    int delayMs = 0;
    int rampMs = 0;  ///< 0: values stay constant
    QStringList rampTags;
    bool control = false;
    bool discovery = false;
    ControllerSettings controller;
};

enum class ParseResult { run, exitOk, exitUsage };

/// Reads the command line, the program's name first. For --help and --version gives exitOk and the
/// text to print; for wrong usage exitUsage and the reason.
ParseResult parseOptions(const QStringList& arguments, Options* options, QString* text);

/// Puts the tags of all files and options into the table. False with the reason in `problem`.
bool loadTags(const Options& options, TagTable& table, QString* problem);
/// Puts the data files that a controller has at first into the table, then those of all JSON files
/// and options. False with the reason in `problem`.
bool loadFiles(const Options& options, DataTable& table, QString* problem);

}  // namespace sim

#endif

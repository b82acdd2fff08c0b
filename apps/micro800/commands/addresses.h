#ifndef APPS_MICRO800_COMMANDS_ADDRESSES_H
#define APPS_MICRO800_COMMANDS_ADDRESSES_H

#include <QString>
#include <QVector>

#include "apps/micro800/address.h"
#include "apps/micro800/command_line.h"

/// The addresses that follow the options, and for each the command that reads `count` elements.
/// False when there is none or one cannot be served; `problem` says which and why.
bool addressesFrom(const CommandLine& line, int count, QVector<TagAddress>* addresses,
                   QVector<CommunicatorCommand>* commands, QString* problem);

#endif

#ifndef APPS_MICRO800_OPTIONS_ADDRESSES_H
#define APPS_MICRO800_OPTIONS_ADDRESSES_H

#include <QString>
#include <QVector>

#include "apps/micro800/format/address.h"
#include "apps/micro800/format/address_list.h"
#include "apps/micro800/terminal/command_line.h"

/// What the help pages say about @FILE and "-".
QString addressFileHelp();

/// The words with the lines of the file in place of every @FILE, and those of standard input in
/// place of "-". False when one cannot be read.
bool listedWordsFrom(const QStringList& words, QVector<ListedWord>* listed, QString* problem);

/// The addresses that follow the options, and for each the command that reads `count` elements.
/// False when there is none or one cannot be served; `problem` says which and why.
bool addressesFrom(const CommandLine& line, int count, QVector<TagAddress>* addresses,
                   QVector<CommunicatorCommand>* commands, QString* problem);

/// The addresses that follow the options, ranges of arrays among them. Without any, the arrays that
/// the project of --project declares on the link of --link. False when there is none, when one
/// cannot be served, or when the project cannot be read.
bool listedAddressesFrom(const CommandLine& line, QVector<ListedAddress>* addresses,
                         QString* problem);

/// The arrays that a project declares on a link, as far as an address can name them.
bool declaredArrays(const QString& project, int link, QVector<ListedAddress>* arrays,
                    QString* problem);

#endif

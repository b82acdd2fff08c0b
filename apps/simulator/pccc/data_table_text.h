#ifndef APPS_SIMULATOR_PCCC_DATA_TABLE_TEXT_H
#define APPS_SIMULATOR_PCCC_DATA_TABLE_TEXT_H

#include <QByteArray>
#include <QString>

#include "apps/simulator/pccc/data_table.h"

// Data files as people write them: on the command line, in a JSON file, on the control channel.

namespace sim {

/// Puts the file that `text` declares into the table: N7[elements]=v1,v2,... False with the reason
/// in `problem`.
bool addFileFromText(const QString& text, DataTable& table, QString* problem);

/// Puts the files of a JSON document {"pccc": [{"file", "elements", "value"}, ...]} into the table,
/// none when there is no such key. False with the reason in `problem`; the files before the wrong
/// one are in the table then.
bool addFilesFromJson(const QByteArray& json, DataTable& table, QString* problem);

/// Whether the text, up to a "=", is an address (N7:0) rather than the name of a tag.
bool isFileAddress(const QString& text);

/// Stores the numbers that `text` ("N7:0=1,2", "T4:0.ACC=5") lists, from the address on. False with
/// the reason in `problem`; nothing is stored then.
bool setFileFromText(const QString& text, DataTable& table, QString* problem);

/// The numbers of the element or word that `text` ("T4:0", "T4:0.ACC") names, separated by commas.
/// False with the reason in `problem`.
bool fileText(const QString& text, DataTable& table, QString* values, QString* problem);

}  // namespace sim

#endif

#ifndef APPS_SIMULATOR_TAGS_VALUES_FILE_H
#define APPS_SIMULATOR_TAGS_VALUES_FILE_H

#include <QByteArray>
#include <QString>

#include "apps/simulator/tags/tag_table.h"

// The values of a controller in a file, as `micro800 save` writes them. The README has the format.

namespace sim {

/// Whether the document says that it is such a file, of any version.
bool isValuesFile(const QByteArray& json);

/// Adds a tag for every variable that the file has values of; what no entry of an array gives is 0
/// or empty. False with the reason in `problem`; the tags before the wrong one are added then.
bool addTagsFromValues(const QByteArray& json, TagTable& table, QString* problem);

}  // namespace sim

#endif

#ifndef APPS_SIMULATOR_TAG_TEXT_H
#define APPS_SIMULATOR_TAG_TEXT_H

#include <QByteArray>
#include <QString>

#include "apps/simulator/tag_table.h"

// Tags as people write them: on the command line, in a JSON file, on the control channel.

namespace sim {

/// Adds the tag that `text` declares, NAME:TYPE[dims]=v1,v2,... False with the reason in `error`.
bool addTagFromText(const QString& text, TagTable& table, QString* error);

/// Adds the tags of a JSON document {"tags": [{"name", "type", "dims", "value"}, ...]}; none need
/// be there beside data files (data_table_text.h). False with the reason in `error`; the tags
/// before the wrong one are added then.
bool addTagsFromJson(const QByteArray& json, TagTable& table, QString* error);

/// Stores the values that `text` ("NAME=v1,v2" or "NAME[i,j]=v1,v2") lists, from the named element
/// on. False with the reason in `error`; nothing is stored then.
bool setTagFromText(const QString& text, TagTable& table, QString* error);

/// The values of the tag or element that `text` ("NAME" or "NAME[i,j]") names, separated by commas.
/// False with the reason in `error`.
bool tagText(const QString& text, const TagTable& table, QString* values, QString* error);

}  // namespace sim

#endif

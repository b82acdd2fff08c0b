#ifndef APPS_SIMULATOR_TAGS_TAG_TEXT_H
#define APPS_SIMULATOR_TAGS_TAG_TEXT_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

#include "apps/simulator/tags/tag_table.h"

// Tags as people write them: on the command line, in a JSON file, on the control channel.

namespace sim {

/// Reads dimensions as written between brackets, "10" or "2..5,0..3". False with the reason in
/// `problem`.
bool parseDimensions(const QString& text, std::vector<Dimension>* dimensions, QString* problem);

/// Adds a tag with these values, from the first element on. `dims` are those of parseDimensions(),
/// null for a scalar. False with the reason in `problem`.
bool addTag(const QString& name, const QString& typeName, const QString& dims,
            const QStringList& values, TagTable& table, QString* problem);

/// Adds the tag that `text` declares, NAME:TYPE[dims]=v1,v2,... False with the reason in `problem`.
bool addTagFromText(const QString& text, TagTable& table, QString* problem);

/// Adds the tags of a JSON document {"tags": [{"name", "type", "dims", "value"}, ...]}; none need
/// be there beside data files (data_table_text.h). False with the reason in `problem`; the tags
/// before the wrong one are added then.
bool addTagsFromJson(const QByteArray& json, TagTable& table, QString* problem);

/// Stores the values that `text` ("NAME=v1,v2" or "NAME[i,j]=v1,v2") lists, from the named element
/// on. False with the reason in `problem`; nothing is stored then.
bool setTagFromText(const QString& text, TagTable& table, QString* problem);

/// The values of the tag or element that `text` ("NAME" or "NAME[i,j]") names, separated by commas.
/// False with the reason in `problem`.
bool tagText(const QString& text, const TagTable& table, QString* values, QString* problem);

}  // namespace sim

#endif

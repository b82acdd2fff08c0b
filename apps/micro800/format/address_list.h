#ifndef APPS_MICRO800_FORMAT_ADDRESS_LIST_H
#define APPS_MICRO800_FORMAT_ADDRESS_LIST_H

#include <QByteArray>
#include <QString>
#include <QVector>

#include "apps/micro800/format/address.h"
#include "apps/micro800/format/array_declaration.h"

/// One word of an address list and where it is written.
struct ListedWord {
    QString text;
    QString place;  ///< "tags.txt:12"; empty for an argument of the command line

    /// `problem` after the place.
    QString problemHere(const QString& problem) const;
};

/// Appends the words of a list: one per line, in UTF-8. Blanks around a word, empty lines and lines
/// that begin with # are left out, and so is a comment: a # with a blank before it, and what
/// follows. `name` is that of the file, for the places.
void appendListedWords(const QByteArray& content, const QString& name, QVector<ListedWord>* words);

/// What an address list names: a tag, an element of an array, or a range of elements as an array
/// declaration writes it.
///
///   DINT0:COUNTER    INT0:GRID[2,3]    DINT0:RECIPE[0..9,0..4]
struct ListedAddress {
    QString text;                             ///< as written
    QString place;                            ///< of its word
    TagAddress first;                         ///< the tag itself, or the first element of the range
    QVector<ArrayDeclaration::Range> ranges;  ///< empty but for a range

    bool isRange() const { return !ranges.isEmpty(); }
    /// Number of elements, at least 1; at most kLargestArray.
    int count() const;
    /// The address of one element, counted from 0 with the last index fastest: "DINT0:RECIPE[1,0]".
    QString elementText(int element) const;
};

/// An element as a range of one, INT0:GRID[2..2,3..3] for INT0:GRID[2,3]; anything else as it is.
ListedAddress asRange(const ListedAddress& address);

/// Takes a tag, an element or a range apart. False when the driver could not serve it; `problem`
/// says where it is written and why.
bool parseListedAddress(const ListedWord& word, ListedAddress* address, QString* problem);

#endif

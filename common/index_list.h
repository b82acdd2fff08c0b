#ifndef COMMON_INDEX_LIST_H
#define COMMON_INDEX_LIST_H

#include <QString>

/// Whether each of the indexes, decimal numbers separated by commas, fits a 32-bit number, which is
/// as far as a path's element segment goes. False for an empty list or entry. Any thread.
bool indexesFit(const QString& indexes);

#endif

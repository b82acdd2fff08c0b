#ifndef COMMON_PROJECT_DATABASE_H
#define COMMON_PROJECT_DATABASE_H

#include <QList>
#include <QString>

/// A link of the runtime and the station number of a node on it.
struct LinkIdStationId {
    qint32 linkId;
    unsigned char stationId;
};

// Lookups in the tables LINK and NODE of the project database. `connection` names a Qt SQL
// connection of the calling thread; it is opened when it is not open yet. A missing connection
// or a failing query counts as "no row". Rows have the order in which the database returns them.

/// The link at the runtime's port `hmiPort` and the station of its default node, from the first
/// row found. Returns false, with both results untouched, when there is none.
bool GetLinkIdAndDefaultStationId(const QString& connection, int hmiPort, int& linkId,
                                  unsigned char& stationId);

/// Appends the default nodes of link `linkId`. Returns whether `out` contains an entry afterwards;
/// entries that were in it before count too.
bool GetLinkIdAndDefaultStationId(const QString& connection, int linkId,
                                  QList<LinkIdStationId>& out);

/// Appends the links at port `hmiPort` whose default node has this IP address and TCP port.
/// `ip` goes into the query's text unchanged, without escaping: it is the project's own
/// setting, never an operator's input. Returns whether `out` contains an entry afterwards.
bool GetLinkIdAndDefaultStationId(const QString& connection, int hmiPort, const QString& ip,
                                  unsigned short port, QList<LinkIdStationId>& out);

#endif

#include "common/project_database.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

namespace {

bool runQuery(const QString& connection, const QString& text, QSqlQuery& query) {
    query = QSqlQuery(QSqlDatabase::database(connection, true));
    query.setForwardOnly(true);
    return query.exec(text);
}

unsigned char stationFrom(const QVariant& column) {
    return static_cast<unsigned char>(column.toUInt() & 0xFFu);
}

LinkIdStationId makeLinkIdStationId(int linkId, unsigned char stationId) {
    LinkIdStationId entry = {linkId, stationId};
    return entry;
}

}  // namespace

bool GetLinkIdAndDefaultStationId(const QString& connection, int hmiPort, int& linkId,
                                  unsigned char& stationId) {
    const QString text =
        QString::fromLatin1(
            "SELECT LINK.LINKID, NODE.STATIONID FROM LINK, NODE WHERE LINK.HMIPORT = %1 AND "
            "NODE.LINKID = LINK.LINKID AND NODE.ISDEFAULT = 1;")
            .arg(hmiPort);
    QSqlQuery query;
    if (!runQuery(connection, text, query) || !query.next()) {
        return false;
    }
    linkId = query.value(0).toInt();
    stationId = stationFrom(query.value(1));
    return true;
}

bool GetLinkIdAndDefaultStationId(const QString& connection, int linkId,
                                  QList<LinkIdStationId>& out) {
    const QString text =
        QString::fromLatin1(
            "SELECT NODE.STATIONID FROM NODE WHERE NODE.LINKID = %1 AND NODE.ISDEFAULT = 1")
            .arg(linkId);
    QSqlQuery query;
    if (runQuery(connection, text, query)) {
        while (query.next()) {
            out.append(makeLinkIdStationId(linkId, stationFrom(query.value(0))));
        }
    }
    return !out.isEmpty();
}

bool GetLinkIdAndDefaultStationId(const QString& connection, int hmiPort, const QString& ip,
                                  unsigned short port, QList<LinkIdStationId>& out) {
    // All three at once: a percent sign in the address must not be taken for a place of the next.
    const QString text =
        QString::fromLatin1(
            "SELECT LINK.LINKID, NODE.STATIONID FROM LINK, NODE WHERE LINK.HMIPORT = %1 AND "
            "NODE.LINKID = LINK.LINKID AND NODE.IP = '%2' AND NODE.PORT = %3 AND "
            "NODE.ISDEFAULT = 1;")
            .arg(QString::number(hmiPort), ip, QString::number(port));
    QSqlQuery query;
    if (runQuery(connection, text, query)) {
        while (query.next()) {
            out.append(makeLinkIdStationId(query.value(0).toInt(), stationFrom(query.value(1))));
        }
    }
    return !out.isEmpty();
}

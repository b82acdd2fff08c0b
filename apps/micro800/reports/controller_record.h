#ifndef APPS_MICRO800_REPORTS_CONTROLLER_RECORD_H
#define APPS_MICRO800_REPORTS_CONTROLLER_RECORD_H

#include <QJsonObject>
#include <QString>

#include "apps/micro800/base/connection.h"

/// Host and port, and what the controller says of itself, as identify --json prints it. One that
/// does not identify itself leaves host and port, with the reason in `problem`.
QJsonObject controllerRecord(const Connection& connection, QString* problem);

/// `"2080-LC50-48QWB" 12.11, serial number 0x6080C0DE, at 192.168.1.20:44818`; what is missing in
/// the record is left out.
QString controllerText(const QJsonObject& record);

/// Whether both records are of one device, by vendor, product and serial number.
bool isSameController(const QJsonObject& one, const QJsonObject& other);

#endif

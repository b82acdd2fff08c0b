#ifndef APPS_MICRO800_SETPOINTS_ELEMENT_ACCESS_H
#define APPS_MICRO800_SETPOINTS_ELEMENT_ACCESS_H

#include <QByteArray>
#include <QString>
#include <QVector>

#include "apps/micro800/format/address_list.h"
#include "apps/micro800/plugin/driver_session.h"

/// How many elements of this type one command reads, or writes: as many as one packet to the
/// controller carries, and one STRING.
int elementsOfOneRead(const TagType& type);
int elementsOfOneWrite(const TagType& type);

/// Reads `count` elements of an address from element `first` on through the driver, a block at a
/// time, and appends them in the form of element_value.h. False with the driver's text.
bool readElements(DriverSession* session, const ListedAddress& address, int first, int count,
                  QVector<QByteArray>* elements, QString* problem);

/// Writes elements from element `first` on, in one command; at most elementsOfOneWrite(). False
/// with the driver's text.
bool writeElements(DriverSession* session, const ListedAddress& address, int first,
                   const QVector<QByteArray>& elements, QString* problem);

#endif

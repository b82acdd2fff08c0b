#include "common/driver_setting.h"

#include <QDataStream>
#include <QDebug>

DriverSetting::DriverSetting(int timeout, int retry, int stationid, int delay)
    : timeout(timeout), retry(retry), stationid(stationid), delay(delay), extraFlag(false) {}

DriverSetting::DriverSetting(int timeout, int retry, int stationid, int delay, const QString&,
                             unsigned short)
    : timeout(timeout), retry(retry), stationid(stationid), delay(delay), extraFlag(false) {}

DriverSetting::DriverSetting(int timeout, int retry, int stationid, int delay, const QString&,
                             unsigned short, const QString& text, bool flag)
    : timeout(timeout),
      retry(retry),
      stationid(stationid),
      delay(delay),
      extraText(text),
      extraFlag(flag) {}

void DriverSetting::copy(const DriverSetting& other) {
    timeout = other.timeout;
    retry = other.retry;
    stationid = other.stationid;
    delay = other.delay;
    extraText = other.extraText;
}

void DriverSetting::dump() const {
    qDebug() << "timeout:" << timeout << "retry:" << retry << "stationid:" << stationid
             << "delay:" << delay;
}

QDataStream& operator<<(QDataStream& out, const DriverSetting& setting) {
    return out << setting.timeout << setting.retry << setting.stationid << setting.delay;
}

QDataStream& operator>>(QDataStream& in, DriverSetting& setting) {
    return in >> setting.timeout >> setting.retry >> setting.stationid >> setting.delay;
}

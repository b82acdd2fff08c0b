#include "integration/write_ledger.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstring>

void WriteLedger::note(int tag, int value, bool confirmed) {
    Write& write = writes[std::make_pair(tag, value)];
    ++write.tried;
    write.isConfirmed = confirmed;
    ++(confirmed ? confirmedCount : unconfirmedCount);
}

qint64 WriteLedger::takeLog(const QString& path, qint64 from) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(from)) {
        return from;
    }
    qint64 whole = from;
    for (QByteArray line = file.readLine(); line.endsWith('\n'); line = file.readLine()) {
        whole = file.pos();
        if (!line.contains("\"WriteTag\"")) {
            continue;
        }
        const QJsonObject request = QJsonDocument::fromJson(line).object();
        const QByteArray data = QByteArray::fromHex(request.value("data").toString().toLatin1());
        const bool refused = request.value("status").toString() != "00";
        qint32 value = 0;
        if (!refused && data.size() == int(sizeof value)) {
            memcpy(&value, data.constData(), sizeof value);
            const int tag = request.value("tag").toString().mid(1).toInt();
            ++writes[std::make_pair(tag, int(value))].carriedOut;
        }
    }
    return whole;
}

QStringList WriteLedger::settle() {
    QStringList wrong;
    for (auto entry = writes.begin(); entry != writes.end();) {
        Write& write = entry->second;
        const bool good =
            write.tried == 1 && (write.isConfirmed ? write.carriedOut == 1 : write.carriedOut <= 1);
        if (!good) {
            wrong << QString("tag %1, value %2: tried %3 times, %4confirmed, carried out %5 times")
                         .arg(entry->first.first)
                         .arg(entry->first.second)
                         .arg(write.tried)
                         .arg(write.isConfirmed ? "" : "not ")
                         .arg(write.carriedOut);
        }
        const bool done = write.isOld || !good;
        write.isOld = true;
        entry = done ? writes.erase(entry) : std::next(entry);
    }
    return wrong;
}

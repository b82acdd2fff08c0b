#include "apps/micro800/controller/check/check_run.h"

#include <QStringList>

#include "apps/micro800/format/cip_types.h"

namespace {

// General statuses (CIP Networks Library Vol. 1, appendix B) and the extended status of Logix.
const int kPathSegmentError = 0x04;
const int kPathUnknown = 0x05;
const int kGeneralError = 0xFF;
const int kBeyondEnd = 0x2105;

/// "REAL; write REAL0:LEVEL", or that there is nothing to write.
QString typeAdvice(const TagAddress& address, int code) {
    const TagType* type = tagTypeForCode(code);
    const QString has = QStringLiteral("the controller has %1").arg(cipTypeName(code));
    if (type) {
        return QStringLiteral("%1; write %2:%3")
            .arg(has, QLatin1String(type->prefix), address.name);
    }
    return QStringLiteral("%1, for which there is no prefix: the panel cannot read it").arg(has);
}

}  // namespace

QString arrayNameOf(const QString& name) {
    return name.section(QLatin1Char('['), 0, 0).toUpper();
}

QVector<int> indexesOf(const QString& name) {
    QVector<int> indexes;
    const QString inside = name.section(QLatin1Char('['), 1).section(QLatin1Char(']'), 0, 0);
    for (const QString& index : inside.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        indexes.append(index.toInt());
    }
    return indexes;
}

QString elementName(const QString& array, const QVector<int>& indexes) {
    QStringList texts;
    for (const int index : indexes) {
        texts << QString::number(index);
    }
    return QStringLiteral("%1[%2]").arg(array, texts.join(QLatin1Char(',')));
}

bool isBeyondEnd(const TagReply& reply) {
    return reply.kind == TagReply::Kind::kRefused && reply.status == kGeneralError &&
           reply.extended == kBeyondEnd;
}

TagReply CheckRun::read(const QString& name, int count) {
    const TagReply reply = reader(name.toUpper().toLatin1(), count);
    result.requests += reply.requests;
    return reply;
}

bool CheckRun::set(Verdict verdict, const QString& detail) {
    result.verdict = verdict;
    result.detail = detail;
    if (verdict != Verdict::kTooShort) {
        result.readRequests = 0;
    }
    return false;
}

bool CheckRun::failWith(const TagReply& reply) {
    const bool refused = reply.kind == TagReply::Kind::kRefused;
    return set(refused ? Verdict::kRefused : Verdict::kNoReply, reply.error);
}

bool CheckRun::refuse(const TagAddress& address, const TagReply& reply) {
    if (isBeyondEnd(reply)) {
        return set(Verdict::kNoElement,
                   QStringLiteral("the index is outside the controller's array"));
    }
    if (reply.status != kPathSegmentError && reply.status != kPathUnknown) {
        return failWith(reply);
    }
    // A tag without the indexes may well be there.
    const bool isElement = address.name.contains(QLatin1Char('['));
    if (isElement && read(arrayNameOf(address.name), 1).kind == TagReply::Kind::kValue) {
        return set(Verdict::kNoElement,
                   QStringLiteral("the controller has %1, but no array with so many dimensions")
                       .arg(arrayNameOf(address.name)));
    }
    return set(Verdict::kMissing,
               QStringLiteral("the controller has no global variable of that name"));
}

bool CheckRun::takeFirst(const TagAddress& address, const TagReply& reply) {
    if (reply.kind == TagReply::Kind::kRefused) {
        return refuse(address, reply);
    }
    if (reply.kind == TagReply::Kind::kNone) {
        return failWith(reply);
    }
    result.controllerType = cipTypeName(reply.type);
    if (tagTypeForCode(reply.type) == address.type) {
        return true;
    }
    return set(Verdict::kWrongType, typeAdvice(address, reply.type));
}

#include "apps/simulator/faults/fault.h"

#include <QRegularExpression>
#include <QStringList>

#include "apps/simulator/tags/tag_table.h"
#include "apps/simulator/wire/cip.h"
#include "apps/simulator/wire/encapsulation.h"

namespace sim {

namespace {

/// How a parameter is written: milliseconds, bytes and counts in decimal, codes in hexadecimal.
enum class Radix { none, decimal, hex };

struct FaultName {
    const char* name;
    FaultKind kind;
    FaultScope scope;
    Radix radix;
    int64_t first;   ///< default of the first parameter, kNoParameter when it must be given
    int64_t second;  ///< of the second, kNoParameter when there is none
    const char* help;
};

const int64_t kHalf = -2;   ///< half of the reply
const int64_t kOther = -3;  ///< anything but the right code
const int64_t kOptional = -4;

const FaultName kNames[] = {
    {"silence", FaultKind::silence, FaultScope::unit, Radix::none, 0, 0, "no answer"},
    {"cut", FaultKind::cut, FaultScope::unit, Radix::decimal, kHalf, kNoParameter,
     "BYTES of the answer (half of it), then the TCP connection is closed"},
    {"reset", FaultKind::reset, FaultScope::unit, Radix::decimal, 0, kNoParameter,
     "BYTES of the answer (none), then the TCP connection is reset"},
    {"torn", FaultKind::torn, FaultScope::unit, Radix::decimal, 1, 1,
     "the answer in segments of BYTES (1) with pauses of MS (1)"},
    {"torn-header", FaultKind::tornHeader, FaultScope::unit, Radix::decimal, 10, 20,
     "the first BYTES (10), and the rest after MS (20)"},
    {"late", FaultKind::late, FaultScope::unit, Radix::decimal, kNoParameter, kNoParameter,
     "the answer is held back for MS, later requests are answered meanwhile"},
    {"repeat", FaultKind::repeat, FaultScope::unit, Radix::decimal, 2, kNoParameter,
     "the same answer TIMES (2)"},
    {"truncate", FaultKind::truncate, FaultScope::unit, Radix::decimal, kNoParameter, kNoParameter,
     "only the first BYTES of the answer"},
    {"wrong-command", FaultKind::wrongCommand, FaultScope::unit, Radix::hex, kOther, kNoParameter,
     "encapsulation command CODE (another one)"},
    {"wrong-session", FaultKind::wrongSession, FaultScope::unit, Radix::hex, kOther, kNoParameter,
     "session handle CODE (another one)"},
    {"wrong-connection", FaultKind::wrongConnection, FaultScope::unit, Radix::hex, kOther,
     kNoParameter, "connection id CODE (another one) in the address item"},
    {"wrong-sequence", FaultKind::wrongSequence, FaultScope::unit, Radix::decimal, 1, kNoParameter,
     "sequence count larger by N (1)"},
    {"wrong-service", FaultKind::wrongService, FaultScope::unit, Radix::hex, kOther, kNoParameter,
     "reply service CODE (that of read for write and the other way round)"},
    {"encap-status", FaultKind::encapStatus, FaultScope::unit, Radix::hex, kNoParameter,
     kNoParameter, "encapsulation status CODE, and nothing behind the header"},
    {"encap-length-long", FaultKind::encapLengthLong, FaultScope::unit, Radix::decimal, 20,
     kNoParameter, "the header announces N (20) bytes more than follow"},
    {"encap-length-short", FaultKind::encapLengthShort, FaultScope::unit, Radix::decimal, 4,
     kNoParameter, "the header announces N (4) bytes fewer than follow"},
    {"item-count", FaultKind::itemCount, FaultScope::unit, Radix::decimal, 0, kNoParameter,
     "common packet format with an item count of N (0)"},
    {"item-length-long", FaultKind::itemLengthLong, FaultScope::unit, Radix::decimal, 100,
     kNoParameter, "the data item announces N (100) bytes more than follow"},
    {"status", FaultKind::status, FaultScope::unit, Radix::hex, kNoParameter, kOptional,
     "the request is refused with general status CODE and extended status CODE"},
    {"additional-status-size", FaultKind::additionalStatusSize, FaultScope::unit, Radix::decimal,
     255, kNoParameter, "N (255) words of additional status are announced"},
    {"unknown-type", FaultKind::unknownType, FaultScope::read, Radix::hex, 0xA0, kNoParameter,
     "data type CODE (A0) in the answer to a read"},
    {"string-length-past-end", FaultKind::stringLengthPastEnd, FaultScope::read, Radix::decimal,
     255, kNoParameter, "the length byte of a STRING is N (255)"},
    {"short-reply", FaultKind::shortReply, FaultScope::unit, Radix::decimal, 1, kNoParameter,
     "the last N (1) bytes are left out, with all lengths to match"},
    {"refuse-register", FaultKind::refuseRegister, FaultScope::registerSession, Radix::hex, 0x0001,
     kNoParameter, "RegisterSession is refused with encapsulation status CODE (1)"},
    {"refuse-open", FaultKind::refuseOpen, FaultScope::open, Radix::hex, kOutOfConnections,
     kNoParameter, "Forward Open is refused with 01 and extended status CODE (0113)"},
    {"short-open-reply", FaultKind::shortOpenReply, FaultScope::open, Radix::decimal, 4,
     kNoParameter, "the answer to Forward Open has only N (4) bytes of data"},
    {"pccc-status", FaultKind::pcccStatus, FaultScope::pccc, Radix::hex, kNoParameter, kOptional,
     "a PCCC command is refused with STS CODE and, behind F0, EXT STS CODE"},
    {"wrong-requestor", FaultKind::wrongRequestor, FaultScope::pccc, Radix::hex, kOther,
     kNoParameter, "serial number CODE (another one) in the requestor id of a PCCC reply"},
    {"wrong-pccc-command", FaultKind::wrongPcccCommand, FaultScope::pccc, Radix::hex, kOther,
     kNoParameter, "command CODE (another one) in a PCCC reply"},
    {"wrong-transaction", FaultKind::wrongTransaction, FaultScope::pccc, Radix::decimal, 1,
     kNoParameter, "transaction number of a PCCC reply larger by N (1)"},
    {"wrong-pccc-type", FaultKind::wrongPcccType, FaultScope::pccc, Radix::hex, 0xFF, kNoParameter,
     "first byte CODE (FF) of the type/data parameter of a typed read"},
};

const struct {
    const char* name;
    FaultScope scope;
} kScopes[] = {
    {"unit", FaultScope::unit},
    {"rr", FaultScope::rr},
    {"read", FaultScope::read},
    {"write", FaultScope::write},
    {"open", FaultScope::open},
    {"close", FaultScope::close},
    {"pccc", FaultScope::pccc},
    {"any", FaultScope::any},
    {"register", FaultScope::registerSession},
};

const FaultName* findFault(const QString& name) {
    for (const FaultName& one : kNames) {
        if (name == QLatin1String(one.name)) {
            return &one;
        }
    }
    return nullptr;
}

bool parseParameter(const QString& text, Radix radix, int64_t* value) {
    bool ok = false;
    if (radix == Radix::hex) {
        *value = text.toUInt(&ok, 16);
    } else {
        *value = text.toInt(&ok, 10);
        ok = ok && *value >= 0;
    }
    return ok;
}

bool parseParameters(const FaultName& name, const QString& text, Fault* fault, QString* problem) {
    fault->parameter = name.first;
    fault->parameter2 = name.second;
    const bool two = name.second != kNoParameter;
    const QStringList parts = text.isEmpty() ? QStringList() : text.split(',');
    bool ok = parts.size() <= (name.radix == Radix::none ? 0 : two ? 2 : 1);
    if (ok && parts.size() > 0) {
        ok = parseParameter(parts.at(0), name.radix, &fault->parameter);
    }
    if (ok && parts.size() > 1) {
        ok = parseParameter(parts.at(1), name.radix, &fault->parameter2);
    }
    if (!ok || (fault->parameter == kNoParameter && name.radix != Radix::none)) {
        *problem = QString("%1: %2").arg(name.name, name.help);
        return false;
    }
    return true;
}

/// The part before the first "@": NAME[:PARAM][xM]. A parameter that begins with 0x is hexadecimal,
/// so its x is no repetition.
bool parseHead(const QString& text, Fault* fault, QString* problem) {
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        "([a-z-]+)(?::((?:0x)?[0-9A-Fa-f]+(?:,(?:0x)?[0-9A-Fa-f]+)?))?(?:x([0-9]+))?"));
    const QRegularExpressionMatch match = form.match(text);
    const FaultName* name = match.hasMatch() ? findFault(match.captured(1)) : nullptr;
    if (!name) {
        *problem = QString("there is no fault '%1'").arg(text);
        return false;
    }
    fault->kind = name->kind;
    fault->scope = name->scope;
    fault->times = match.captured(3).toULongLong();
    return parseParameters(*name, match.captured(2), fault, problem);
}

bool parseScope(const QString& text, Fault* fault) {
    for (const auto& one : kScopes) {
        if (text == QLatin1String(one.name)) {
            fault->scope = one.scope;
            return true;
        }
    }
    return false;
}

/// A part after an "@": N[xM], tag=NAME or on=SCOPE.
bool parseQualifier(const QString& text, Fault* fault, QString* problem) {
    static const QRegularExpression number(
        QRegularExpression::anchoredPattern("([0-9]+)(?:x([0-9]+))?"));
    const QRegularExpressionMatch match = number.match(text);
    bool ok = true;
    if (match.hasMatch()) {
        fault->from = match.captured(1).toULongLong();
        if (!match.captured(2).isEmpty()) {
            fault->times = match.captured(2).toULongLong();
        }
        ok = fault->from > 0;
    } else if (text.startsWith("tag=")) {
        fault->tag = upperCase(text.mid(4).toStdString());
        ok = !fault->tag.empty();
    } else {
        ok = text.startsWith("on=") && parseScope(text.mid(3), fault);
    }
    if (!ok) {
        *problem = QString(
                       "'@%1' is neither @N, @NxM, @tag=NAME nor @on=SCOPE "
                       "(unit, rr, read, write, open, close, register, pccc, any)")
                       .arg(text);
    }
    return ok;
}

/// Read Tag Fragmented has the code of Unconnected Send.
bool namesTag(const FaultTarget& target) {
    return target.service != kReadTagFragmented || (target.tag && !target.tag->empty());
}

bool inScope(FaultScope scope, const FaultTarget& target) {
    switch (scope) {
        case FaultScope::unit:
            return target.command == kSendUnitData;
        case FaultScope::rr:
            return target.command == kSendRRData;
        case FaultScope::read:
            return readsTag(target.service) && namesTag(target);
        case FaultScope::write:
            return writesTag(target.service) && namesTag(target);
        case FaultScope::open:
            return target.service == kForwardOpen;
        case FaultScope::close:
            return target.service == kForwardClose;
        case FaultScope::registerSession:
            return target.command == kRegisterSession;
        case FaultScope::pccc:
            return target.pccc;
        case FaultScope::any:
            return true;
    }
    return false;
}

bool matches(const Fault& fault, const FaultTarget& target) {
    return inScope(fault.scope, target) &&
           (fault.tag.empty() || (target.tag && *target.tag == fault.tag));
}

}  // namespace

bool parseFault(const QString& text, Fault* fault, QString* problem) {
    *fault = Fault();
    fault->text = text.toStdString();
    const QStringList parts = text.split('@');
    QString why;
    bool ok = parseHead(parts.first(), fault, &why);
    for (int i = 1; ok && i < parts.size(); ++i) {
        ok = parseQualifier(parts.at(i), fault, &why);
    }
    if (!ok) {
        *problem = QString("fault '%1': %2").arg(text, why);
    }
    return ok;
}

QString faultHelp() {
    QString help;
    for (const FaultName& one : kNames) {
        help += QString("  %1 %2\n").arg(one.name, -22).arg(one.help);
    }
    return help;
}

bool FaultPlan::add(const QString& text, QString* problem) {
    Fault fault;
    if (!parseFault(text, &fault, problem)) {
        return false;
    }
    add(fault);
    return true;
}

void FaultPlan::add(const Fault& fault) {
    faults.push_back(std::make_unique<Fault>(fault));
}

void FaultPlan::select(const FaultTarget& target, std::vector<const Fault*>* struck) {
    struck->clear();
    for (const std::unique_ptr<Fault>& fault : faults) {
        if (!matches(*fault, target)) {
            continue;
        }
        ++fault->seen;
        const bool begun = fault->seen >= fault->from;
        const bool over = fault->times > 0 && fault->seen - fault->from >= fault->times;
        if (begun && !over) {
            struck->push_back(fault.get());
        }
    }
}

}  // namespace sim

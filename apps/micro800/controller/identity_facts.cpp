#include "apps/micro800/controller/identity_facts.h"

#include "apps/micro800/format/value_format.h"

namespace {

/// A number and the name that goes with it.
struct NamedNumber {
    unsigned number;
    const char* name;
};

template <size_t count>
QString nameOf(const NamedNumber (&table)[count], unsigned number) {
    for (const NamedNumber& row : table) {
        if (row.number == number) {
            return QLatin1String(row.name);
        }
    }
    return QString();
}

// The vendor that ODVA lists for the controllers that this program is for.
const NamedNumber kVendors[] = {
    {1, "Rockwell Automation/Allen-Bradley"},
};

// Device profiles (Vol. 1, table 6-7.1): those that are met beside a controller.
const NamedNumber kProductTypes[] = {
    {0x00, "generic device"},
    {0x02, "AC drive"},
    {0x03, "motor overload"},
    {0x07, "general purpose discrete I/O"},
    {0x0C, "communications adapter"},
    {0x0E, "programmable logic controller"},
    {0x10, "position controller"},
    {0x13, "DC drive"},
    {0x15, "contactor"},
    {0x16, "motor starter"},
    {0x17, "softstart starter"},
    {0x18, "human-machine interface"},
    {0x2B, "generic device (keyable)"},
    {0x2C, "managed Ethernet switch"},
};

// Status word (Vol. 1, table 5-2.3).
const unsigned kExtendedStatusShift = 4;
const unsigned kExtendedStatusMask = 0x0F;
const unsigned kReservedStatusBits = 0xF00A;
const NamedNumber kStatusFlags[] = {
    {0x0001, "owned"},
    {0x0004, "configured"},
    {0x0100, "minor recoverable fault"},
    {0x0200, "minor unrecoverable fault"},
    {0x0400, "major recoverable fault"},
    {0x0800, "major unrecoverable fault"},
};
// Its extended device status (table 5-2.4). 0 is "self-testing or unknown" and says nothing.
const NamedNumber kExtendedStatus[] = {
    {1, "firmware update in progress"},
    {2, "an I/O connection has failed"},
    {3, "no I/O connections"},
    {4, "non-volatile configuration bad"},
    {5, "major fault"},
    {6, "an I/O connection in run mode"},
    {7, "all I/O connections in idle mode"},
};

// State (Vol. 1, table 5-2.2).
const NamedNumber kStates[] = {
    {0, "nonexistent"},
    {1, "self-testing"},
    {2, "standby"},
    {3, "operational"},
    {4, "major recoverable fault"},
    {5, "major unrecoverable fault"},
};

QString hex(unsigned number, int digits) {
    return QStringLiteral("0x") +
           QStringLiteral("%1").arg(number, digits, 16, QLatin1Char('0')).toUpper();
}

/// "NAME (NUMBER)", or the number alone, and both for a script.
Fact namedFact(const char* label, const char* key, unsigned number, const QString& name) {
    QJsonObject object{{QStringLiteral("id"), static_cast<int>(number)}};
    if (!name.isEmpty()) {
        object[QStringLiteral("name")] = name;
    }
    const QString text = QString::number(number);
    return {label, key, object, name.isEmpty() ? text : QStringLiteral("%1 (%2)").arg(name, text)};
}

Fact addressFact(const CipIdentity& identity) {
    const uint32_t ip = identity.ipAddress;
    return textFact("Address", "address",
                    QStringLiteral("%1.%2.%3.%4:%5")
                        .arg(ip >> 24)
                        .arg(ip >> 16 & 0xFF)
                        .arg(ip >> 8 & 0xFF)
                        .arg(ip & 0xFF)
                        .arg(identity.port));
}

Fact revisionFact(const CipIdentity& identity) {
    const QJsonObject object{{QStringLiteral("major"), identity.majorRevision},
                             {QStringLiteral("minor"), identity.minorRevision}};
    return {"Revision", "revision", object, revisionText(identity)};
}

Fact productNameFact(const CipIdentity& identity) {
    return {"Product name", "product_name", QString::fromLatin1(QByteArray(identity.productName)),
            productText(identity)};
}

Fact statusFact(const CipIdentity& identity) {
    const QString text = statusText(identity.status);
    const QString word = hex(identity.status, 4);
    const QJsonObject object{{QStringLiteral("word"), identity.status},
                             {QStringLiteral("text"), text}};
    return {"Status", "status", object,
            text.isEmpty() ? word : QStringLiteral("%1 (%2)").arg(word, text)};
}

}  // namespace

QString vendorName(uint16_t id) {
    return nameOf(kVendors, id);
}

QString productTypeName(uint16_t type) {
    return nameOf(kProductTypes, type);
}

QString statusText(uint16_t status) {
    QStringList texts;
    for (const NamedNumber& flag : kStatusFlags) {
        if (status & flag.number) {
            texts << QLatin1String(flag.name);
        }
    }
    const unsigned extended = status >> kExtendedStatusShift & kExtendedStatusMask;
    const QString extendedText = nameOf(kExtendedStatus, extended);
    if (!extendedText.isEmpty()) {
        texts << extendedText;
    } else if (extended != 0) {
        texts << QStringLiteral("extended status %1").arg(extended);
    }
    if (status & kReservedStatusBits) {
        texts << QStringLiteral("reserved bits %1").arg(hex(status & kReservedStatusBits, 4));
    }
    return texts.join(QLatin1String(", "));
}

QString stateText(uint8_t state) {
    const QString name = nameOf(kStates, state);
    return name.isEmpty() ? QStringLiteral("state %1").arg(state) : name;
}

QString productText(const CipIdentity& identity) {
    return quotedString(QByteArray(identity.productName));
}

QString revisionText(const CipIdentity& identity) {
    return QStringLiteral("%1.%2").arg(identity.majorRevision).arg(identity.minorRevision);
}

QString serialText(const CipIdentity& identity) {
    return hex(identity.serialNumber, 8);
}

QVector<Fact> identityFacts(const CipIdentity& identity) {
    return {
        namedFact("Vendor", "vendor", identity.vendorId, vendorName(identity.vendorId)),
        namedFact("Product type", "product_type", identity.deviceType,
                  productTypeName(identity.deviceType)),
        numberFact("Product code", "product_code", identity.productCode,
                   QString::number(identity.productCode)),
        productNameFact(identity),
        revisionFact(identity),
        textFact("Serial number", "serial_number", serialText(identity)),
        statusFact(identity),
        {"State", "state",
         QJsonObject{{QStringLiteral("code"), identity.state},
                     {QStringLiteral("text"), stateText(identity.state)}},
         stateText(identity.state)},
        addressFact(identity),
    };
}

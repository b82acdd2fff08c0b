#ifndef RUNTIME_COMMUNICATOR_COMMAND_H
#define RUNTIME_COMMUNICATOR_COMMAND_H

#include <QString>

/// Kinds of data unit that a command counts in (CommunicatorCommand::unitKind).
enum UnitKind {
    kUnitBit = 0,
    kUnitByte = 1,
    kUnitWord = 2,        ///< 2 bytes
    kUnitDoubleWord = 3,  ///< 4 bytes
    kUnitQuadWord = 4,    ///< 8 bytes
    kUnitBlock = 5,       ///< block of bytes
    kUnitBits = 6,        ///< the runtime's other bit kind
    kUnitKindMax = kUnitBits
};

/// One access that the runtime asks of a driver: an address, a kind of unit and a count.
///
/// A value record, copied freely; it belongs to the runtime. The order of the virtual operations
/// (there is no virtual destructor) and of the fields is part of the binary contract between the
/// runtime and its drivers.
class CommunicatorCommand {
 public:
    CommunicatorCommand() : unitKind(kUnitBit), unitCount(0) {}
    CommunicatorCommand(qint32 kind, quint32 count, const QString& addressText)
        : unitKind(kind), unitCount(count), address(addressText) {}

    /// Size of the command's data in bytes, exactly what a successful read() returns.
    /// A product beyond 2^31-1 is cut to that; a driver refuses such a command anyway.
    virtual int getDataSize() const {
        const qint64 count = unitCount;
        qint64 bytes = 1;
        switch (unitKind) {
            case kUnitBit:
                bytes = count == 0 ? 1 : (count + 7) / 8;
                break;
            case kUnitByte:
            case kUnitBlock:
                bytes = count;
                break;
            case kUnitWord:
                bytes = 2 * count;
                break;
            case kUnitDoubleWord:
                bytes = 4 * count;
                break;
            case kUnitQuadWord:
                bytes = 8 * count;
                break;
            default:
                break;
        }
        const qint64 largest = 0x7FFFFFFF;
        return static_cast<int>(bytes < largest ? bytes : largest);
    }

    /// Text that distinguishes one command from another: "address_kind_count", numbers in decimal.
    virtual QString stringKey() const {
        // Not one after the other: an address may contain a "%1" of its own.
        return QString::fromLatin1("%1_%2_%3")
            .arg(address, QString::number(unitKind), QString::number(unitCount));
    }

    qint32 unitKind;    ///< UnitKind, or a value that the driver refuses
    quint32 unitCount;  ///< number of units
    QString address;    ///< tag address as the operator entered it, e.g. DINT0:COUNTER
};

#endif

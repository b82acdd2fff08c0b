#include "apps/micro800/setpoints/element_access.h"

#include <algorithm>

#include "apps/micro800/base/problem.h"
#include "apps/micro800/setpoints/element_value.h"

namespace {

/// A connection carries some 500 bytes. A reply has a few before the value; a request has the tag's
/// name and its indexes as well.
const int kReadBlock = 480;
const int kWriteBlock = 400;

int elementsOf(const TagType& type, int bytes) {
    return type.kind == ValueKind::kString ? 1 : bytes / type.size;
}

bool elementCommand(const ListedAddress& address, int first, int count,
                    CommunicatorCommand* command, QString* problem) {
    TagAddress element;
    return parseTagAddress(address.elementText(first), &element, problem) &&
           commandFor(element, count, command, problem);
}

void appendElements(const TagType& type, const QByteArray& bytes, int count,
                    QVector<QByteArray>* elements) {
    if (type.kind == ValueKind::kString) {
        elements->append(normalElement(type, bytes));
        return;
    }
    for (int i = 0; i < count; ++i) {
        elements->append(normalElement(type, bytes.mid(i * type.size, type.size)));
    }
}

}  // namespace

int elementsOfOneRead(const TagType& type) {
    return elementsOf(type, kReadBlock);
}

int elementsOfOneWrite(const TagType& type) {
    return elementsOf(type, kWriteBlock);
}

bool readElements(DriverSession* session, const ListedAddress& address, int first, int count,
                  QVector<QByteArray>* elements, QString* problem) {
    const TagType& type = *address.first.type;
    for (int at = first; at < first + count;) {
        const int block = std::min(elementsOfOneRead(type), first + count - at);
        CommunicatorCommand command;
        if (!elementCommand(address, at, block, &command, problem)) {
            return false;
        }
        const DriverResult result = session->read(command);
        if (!result.ok) {
            return fail(problem, result.error);
        }
        appendElements(type, result.bytes, block, elements);
        at += block;
    }
    return true;
}

bool writeElements(DriverSession* session, const ListedAddress& address, int first,
                   const QVector<QByteArray>& elements, QString* problem) {
    const TagType& type = *address.first.type;
    CommunicatorCommand command;
    if (!elementCommand(address, first, elements.size(), &command, problem)) {
        return false;
    }
    QByteArray bytes;
    for (const QByteArray& element : elements) {
        bytes += element;
    }
    if (type.kind == ValueKind::kString) {
        if (bytes.isEmpty()) {
            return fail(
                problem,
                QStringLiteral("write %1> the driver sends no empty string").arg(command.address));
        }
        command.unitCount = static_cast<quint32>(bytes.size());
    }
    const DriverResult result = session->write(command, bytes);
    return result.ok || fail(problem, result.error);
}

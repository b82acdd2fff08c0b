#include "apps/micro800/commands/addresses.h"

#include "apps/micro800/problem.h"

bool addressesFrom(const CommandLine& line, int count, QVector<TagAddress>* addresses,
                   QVector<CommunicatorCommand>* commands, QString* problem) {
    if (line.positional().isEmpty())
        return fail(problem, QStringLiteral("no address given"));
    for (const QString& text : line.positional()) {
        TagAddress address;
        CommunicatorCommand command;
        if (!parseTagAddress(text, &address, problem) ||
            !commandFor(address, count, &command, problem)) {
            return false;
        }
        addresses->append(address);
        commands->append(command);
    }
    return true;
}

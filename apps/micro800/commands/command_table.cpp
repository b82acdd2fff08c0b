#include "apps/micro800/commands/command.h"

const QVector<Command>& commandTable() {
    static const QVector<Command> table = {
        {readHelp, runRead},         {writeHelp, runWrite}, {watchHelp, runWatch},
        {identifyHelp, runIdentify}, {infoHelp, runInfo},   {projectHelp, runProject},
    };
    return table;
}

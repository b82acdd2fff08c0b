#include "apps/micro800/commands/command.h"

const QVector<Command>& commandTable() {
    static const QVector<Command> table = {
        // what the plugin answers
        {readHelp, runRead},
        {writeHelp, runWrite},
        {watchHelp, runWatch},
        {serveHelp, runServe},
        {saveHelp, runSave},
        {restoreHelp, runRestore},
        // what the controller answers
        {discoverHelp, runDiscover},
        {identifyHelp, runIdentify},
        {tagsHelp, runTags},
        {checkHelp, runCheck},
        {doctorHelp, runDoctor},
        // neither of them
        {planHelp, runPlan},
        {recordHelp, runRecord},
        {infoHelp, runInfo},
        {projectHelp, runProject},
    };
    return table;
}

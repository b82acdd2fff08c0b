#include <QJsonArray>
#include <QRegularExpression>

#include "apps/micro800/base/connection.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/format/array_declaration.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/project/project_store.h"
#include "apps/micro800/reports/declaration_text.h"
#include "common/hmi_port.h"
#include "common/packet_sizes.h"

namespace {

const char kDefaultConnector[] = "ETHERNET1";

struct ProjectPlan {
    QString directory;
    QVector<ArrayDeclaration> arrays;
    int link = 1;
    int hmiPort = 0;
    bool hasConnector = false;
    bool hasNode = false;
    ProjectContents::Node node;
    bool json = false;

    bool changes() const { return !arrays.isEmpty() || hasConnector || hasNode; }
};

/// The runtime ends the process over a device name of another form.
bool isDeviceName(const QString& name) {
    static const QRegularExpression pattern(QStringLiteral("^(ethernet.*|.*[^0-9][0-9]+)$"),
                                            QRegularExpression::CaseInsensitiveOption);
    return pattern.match(name).hasMatch();
}

bool connectorFrom(const CommandLine& line, ProjectPlan* plan, QString* problem) {
    plan->hasConnector = line.isSet(QStringLiteral("connector"));
    const QString name = plan->hasConnector ? line.value(QStringLiteral("connector"))
                                            : QString(QLatin1String(kDefaultConnector));
    if (!isDeviceName(name)) {
        *problem = QStringLiteral(
                       "--connector \"%1\": not a port of the runtime, such as ETHERNET1 or COM2")
                       .arg(name);
        return false;
    }
    plan->hmiPort = DevStrToHmiPort(name);
    return true;
}

bool nodeFrom(const CommandLine& line, ProjectPlan* plan, QString* problem) {
    plan->hasNode = line.isSet(QStringLiteral("host"));
    if (!plan->hasNode &&
        (line.isSet(QStringLiteral("port")) || line.isSet(QStringLiteral("station")))) {
        *problem = QStringLiteral("--port and --station describe a controller: --host is missing");
        return false;
    }
    plan->node.linkId = plan->link;
    plan->node.isDefault = true;
    if (!plan->hasNode) {
        return true;
    }
    const HostText given = {"--host", line.value(QStringLiteral("host"))};
    if (given.text.isEmpty()) {
        *problem = QStringLiteral("--host: no address given");
        return false;
    }
    return hostAndPortFrom(line, given, &plan->node.ip, &plan->node.port, problem) &&
           line.number(QStringLiteral("station"), 0, 255, 0, &plan->node.stationId, problem);
}

bool planProject(const CommandLine& line, ProjectPlan* plan, QString* problem) {
    const QStringList words = line.positional();
    if (words.size() != 1 || words.first().isEmpty()) {
        *problem = words.size() > 1 ? QStringLiteral("more than one directory given")
                                    : QStringLiteral("no directory given");
        return false;
    }
    plan->directory = words.first();
    plan->json = line.isSet(QStringLiteral("json"));
    for (const QString& text : line.values(QStringLiteral("array"))) {
        ArrayDeclaration declaration;
        if (!parseArrayDeclaration(text, &declaration, problem)) {
            return false;
        }
        plan->arrays.append(declaration);
    }
    return line.number(QStringLiteral("link"), 0, 0x7FFFFFFF, plan->link, &plan->link, problem) &&
           connectorFrom(line, plan, problem) && nodeFrom(line, plan, problem);
}

bool changeProject(const ProjectPlan& plan, QStringList* done, QString* problem) {
    ProjectStore store;
    if (!store.openToChange(plan.directory, problem) ||
        !store.setLink(plan.link, plan.hmiPort, plan.hasConnector, problem)) {
        return false;
    }
    for (const ArrayDeclaration& array : plan.arrays) {
        ProjectStore::Declared declared;
        if (!store.declareArray(plan.link, array, &declared, problem)) {
            return false;
        }
        *done << declaredText(array.text, plan.link, declared);
    }
    if (plan.hasNode) {
        if (!store.setDefaultNode(plan.node, problem)) {
            return false;
        }
        *done << QStringLiteral("%1:%2 on link %3: default node")
                     .arg(plan.node.ip, QString::number(plan.node.port),
                          QString::number(plan.link));
    }
    return store.commit(problem);
}

/// Tells which of the new declarations take the driver several requests a polling pass.
void warnOfLargeArrays(const ProjectPlan& plan, Console& console) {
    for (const ArrayDeclaration& array : plan.arrays) {
        if (array.requests() > 1) {
            console.error(
                QStringLiteral(
                    "micro800: warning: %1: more than the %2 bytes that one packet holds; "
                    "each polling pass takes %3 requests, and the elements may be of "
                    "different scans of the controller")
                    .arg(array.text, QString::number(kReplyValueBytes),
                         QString::number(array.requests())));
        }
    }
}

void printText(const ProjectContents& contents, Console& console) {
    for (const ProjectContents::Link& link : contents.links) {
        console.line(QStringLiteral("link %1: port %2").arg(link.linkId).arg(link.hmiPort));
    }
    for (const ProjectContents::Node& node : contents.nodes) {
        console.line(QStringLiteral("node on link %1: station %2, %3:%4%5")
                         .arg(QString::number(node.linkId), QString::number(node.stationId),
                              node.ip, QString::number(node.port),
                              node.isDefault ? QStringLiteral(", default") : QString()));
    }
    for (const ProjectContents::Array& array : contents.arrays) {
        console.line(
            QStringLiteral("array on link %1: %2%3")
                .arg(QString::number(array.linkId), array.address, elementsText(array.address)));
    }
    if (contents.arrays.isEmpty()) {
        console.line(QStringLiteral("no arrays declared"));
    }
}

QJsonObject contentsJson(const ProjectContents& contents) {
    QJsonArray links;
    for (const ProjectContents::Link& link : contents.links) {
        links.append(QJsonObject{{QStringLiteral("link"), link.linkId},
                                 {QStringLiteral("port"), link.hmiPort}});
    }
    QJsonArray nodes;
    for (const ProjectContents::Node& node : contents.nodes) {
        nodes.append(QJsonObject{{QStringLiteral("link"), node.linkId},
                                 {QStringLiteral("station"), node.stationId},
                                 {QStringLiteral("ip"), node.ip},
                                 {QStringLiteral("port"), node.port},
                                 {QStringLiteral("default"), node.isDefault}});
    }
    QJsonArray arrays;
    for (const ProjectContents::Array& array : contents.arrays) {
        arrays.append(QJsonObject{{QStringLiteral("link"), array.linkId},
                                  {QStringLiteral("address"), array.address}});
    }
    return QJsonObject{{QStringLiteral("links"), links},
                       {QStringLiteral("nodes"), nodes},
                       {QStringLiteral("arrays"), arrays}};
}

bool listProject(const ProjectPlan& plan, Console& console, QString* problem) {
    ProjectStore store;
    ProjectContents contents;
    if (!store.openToRead(plan.directory, problem) || !store.contents(&contents, problem)) {
        return false;
    }
    if (plan.json) {
        console.json(contentsJson(contents));
    } else {
        printText(contents, console);
    }
    return true;
}

QVector<OptionSpec> projectOptions() {
    return {
        {QStringLiteral("array"), QStringLiteral("DECLARATION"),
         QStringLiteral("Declares an array: PREFIX:NAME[LOWER..UPPER], up to three ranges "
                        "separated by commas. May be given more than once. An array that the link "
                        "already declares gets the new bounds."),
         QString()},
        {QStringLiteral("link"), QStringLiteral("N"),
         QStringLiteral(
             "Number of the link for the changes; give it to --link of read, write and watch."),
         QStringLiteral("1")},
        {QStringLiteral("connector"), QStringLiteral("NAME"),
         QStringLiteral("The runtime's name of the port that the link uses: ETHERNET1, COM2. A new "
                        "link without it gets %1.")
             .arg(QLatin1String(kDefaultConnector)),
         QString()},
        {QStringLiteral("host"), QStringLiteral("IP"),
         QStringLiteral(
             "Enters a controller as the link's default node; IP:PORT contains the port as well."),
         QString()},
        {QStringLiteral("port"), QStringLiteral("PORT"),
         QStringLiteral("The TCP port of that controller."), QStringLiteral("44818")},
        {QStringLiteral("station"), QStringLiteral("N"),
         QStringLiteral("The station number of that controller."), QStringLiteral("0")},
        {QStringLiteral("json"), QString(),
         QStringLiteral("Lists the project as one JSON object, also after a change."), QString()},
    };
}

}  // namespace

CommandHelp projectHelp() {
    CommandHelp help;
    help.name = QStringLiteral("project");
    help.summary = QStringLiteral("makes, extends or lists a project database");
    help.synopsis << QStringLiteral("DIR")
                  << QStringLiteral("DIR --array DECLARATION... [OPTION...]");
    help.description
        << QStringLiteral(
               "A driver reads the bounds of the controller's arrays from the runtime's project, "
               "an SQLite file at DIR/compile/database/database. Without a change, the command "
               "lists the project. Otherwise it makes missing directories, the file and its tables "
               "(custom_tag_table, LINK, NODE), and enters the change as a whole or not at all.")
        << QStringLiteral(
               "A declared array is polled as a whole; an element of an array that is not declared "
               "is read by itself. An array above %1 bytes does not fit one packet: it takes "
               "several requests in each pass, and a warning says so.")
               .arg(kReplyValueBytes);
    help.options = projectOptions();
    help.examples << QStringLiteral(
                         "micro800 project ./panel --array 'DINT0:RECIPE[0..9,0..4]'\n"
                         "DINT0:RECIPE[0..9,0..4] (50 elements) on link 1: added")
                  << QStringLiteral(
                         "micro800 project ./panel\n"
                         "link 1: port 2000\n"
                         "array on link 1: DINT0:RECIPE[0..9,0..4] (50 elements)")
                  << QStringLiteral(
                         "micro800 read --host 192.168.1.20 --project ./panel "
                         "'DINT0:RECIPE[2,3]'");
    return help;
}

int runProject(const CommandLine& line, Console& console) {
    ProjectPlan plan;
    QString problem;
    if (!planProject(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("project"), problem);
    }
    QStringList done;
    bool ok = !plan.changes() || changeProject(plan, &done, &problem);
    if (ok && (plan.json || !plan.changes())) {
        ok = listProject(plan, console, &problem);
    }
    if (!ok) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    for (const QString& text : plan.json ? QStringList() : done) {
        console.line(text);
    }
    warnOfLargeArrays(plan, console);
    return kExitOk;
}

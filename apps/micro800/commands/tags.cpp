#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>

#include "apps/micro800/commands/command.h"
#include "apps/micro800/controller/symbol_list.h"
#include "apps/micro800/format/array_declaration.h"
#include "apps/micro800/format/escape.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/options/controller_options.h"
#include "apps/micro800/project/project_store.h"
#include "apps/micro800/reports/declaration_text.h"
#include "common/hmi_port.h"

namespace {

const char kDefaultConnector[] = "ETHERNET1";

enum class TagsForm { kAddresses, kCsv, kJson };

struct TagsPlan {
    Connection connection;
    QVector<QRegularExpression> patterns;
    QString project;
    int link = 1;
    TagsForm form = TagsForm::kAddresses;
};

bool planTags(const CommandLine& line, TagsPlan* plan, QString* problem) {
    for (const QString& word : line.positional()) {
        plan->patterns.append(
            QRegularExpression(QRegularExpression::wildcardToRegularExpression(word),
                               QRegularExpression::CaseInsensitiveOption));
        if (!plan->patterns.last().isValid()) {
            *problem = QStringLiteral("%1: not a pattern").arg(word);
            return false;
        }
    }
    plan->project = line.value(QStringLiteral("project"));
    if (line.isSet(QStringLiteral("project")) && plan->project.isEmpty()) {
        *problem = QStringLiteral("--project: no directory given");
        return false;
    }
    const bool csv = line.isSet(QStringLiteral("csv"));
    const bool json = line.isSet(QStringLiteral("json"));
    if (csv && json) {
        *problem = QStringLiteral("--csv and --json: one of them at a time");
        return false;
    }
    plan->form = json ? TagsForm::kJson : csv ? TagsForm::kCsv : TagsForm::kAddresses;
    return endpointFrom(line, &plan->connection, problem) &&
           line.number(QStringLiteral("link"), 0, 0x7FFFFFFF, plan->link, &plan->link, problem);
}

bool fetchSymbols(const TagsPlan& plan, const TraceSink& trace, QVector<Symbol>* symbols,
                  QString* problem) {
    ControllerSession session(plan.connection, trace);
    if (!session.openUnconnected(problem)) {
        return false;
    }
    const ObjectRequester request = [&session](int service, const QByteArray& path,
                                               const QByteArray& data) {
        return session.object(service, path, data);
    };
    if (listSymbols(request, symbols, problem)) {
        return true;
    }
    *problem = QStringLiteral(
                   "%1 port %2 does not list its variables: %3; export them from the programming "
                   "software, write their addresses into a file, and let 'micro800 check @FILE' "
                   "tell which of them are right")
                   .arg(plan.connection.host, QString::number(plan.connection.port), *problem);
    return false;
}

bool isWanted(const Symbol& symbol, const QVector<QRegularExpression>& patterns) {
    bool wanted = patterns.isEmpty();
    for (const QRegularExpression& pattern : patterns) {
        wanted = wanted || pattern.match(QString::fromLatin1(symbol.name)).hasMatch();
    }
    return wanted && !symbol.isSystem();
}

QStringList dimensionTexts(const Symbol& symbol) {
    QStringList texts;
    for (const quint32 elements : symbol.dimensions) {
        texts << QString::number(elements);
    }
    return texts;
}

QString csvOf(const Symbol& symbol) {
    return QStringList{csvField(symbol.address()), csvField(QString::fromLatin1(symbol.name)),
                       csvField(symbol.typeText()), dimensionTexts(symbol).join(QLatin1Char('x')),
                       csvField(symbol.problem())}
        .join(QLatin1Char(','));
}

QJsonObject jsonOf(const Symbol& symbol) {
    QJsonArray dimensions;
    for (const quint32 elements : symbol.dimensions) {
        dimensions.append(double(elements));
    }
    QJsonObject object{{QStringLiteral("name"), QString::fromLatin1(symbol.name)},
                       {QStringLiteral("type"), symbol.typeText()},
                       {QStringLiteral("dimensions"), dimensions}};
    if (symbol.address().isEmpty()) {
        object[QStringLiteral("problem")] = symbol.problem();
    } else {
        object[QStringLiteral("address")] = symbol.address();
    }
    return object;
}

/// An address, or a comment where there is none: what check @FILE and the others take.
QString addressLineOf(const Symbol& symbol) {
    const QString address = symbol.address();
    return !address.isEmpty()
               ? address
               : QStringLiteral("# %1 %2: %3")
                     .arg(QString::fromLatin1(symbol.name), symbol.typeText(), symbol.problem());
}

void printSymbols(const TagsPlan& plan, const QVector<Symbol>& symbols, Console& console) {
    if (plan.form == TagsForm::kCsv) {
        console.line(QStringLiteral("address,name,type,dimensions,problem"));
    }
    for (const Symbol& symbol : symbols) {
        if (plan.form == TagsForm::kJson) {
            console.json(jsonOf(symbol));
        } else {
            console.line(plan.form == TagsForm::kCsv ? csvOf(symbol) : addressLineOf(symbol));
        }
    }
}

/// Enters the arrays into the project, all of them or none.
bool declareArrays(const TagsPlan& plan, const QVector<Symbol>& symbols, QStringList* done,
                   QString* problem) {
    ProjectStore store;
    if (!store.openToChange(plan.project, problem) ||
        !store.setLink(plan.link, DevStrToHmiPort(QLatin1String(kDefaultConnector)), false,
                       problem)) {
        return false;
    }
    for (const Symbol& symbol : symbols) {
        ArrayDeclaration array;
        QString ignored;
        ProjectStore::Declared declared;
        if (symbol.dimensions.isEmpty() ||
            !parseArrayDeclaration(symbol.address(), &array, &ignored)) {
            continue;
        }
        if (!store.declareArray(plan.link, array, &declared, problem)) {
            return false;
        }
        *done << declaredText(array.text, plan.link, declared);
    }
    return store.commit(problem);
}

QVector<OptionSpec> tagsOptions() {
    return endpointOptionSpecs(
               QStringLiteral("Time-out for the connection and for each reply, in milliseconds.")) +
           QVector<OptionSpec>{
               {QStringLiteral("project"), QStringLiteral("DIR"),
                QStringLiteral("Declares the arrays in the project in DIR, makes a missing "
                               "project, and prints the result for each array on standard error."),
                QString()},
               {QStringLiteral("link"), QStringLiteral("N"),
                QStringLiteral("Number of the link that the declarations belong to."),
                QString::number(Connection().link)},
               {QStringLiteral("csv"), QString(),
                QStringLiteral(
                    "Prints comma-separated values: address, name, type, dimensions, problem."),
                QString()},
               {QStringLiteral("json"), QString(),
                QStringLiteral("Prints one JSON object per variable: name, type, dimensions, and "
                               "address or problem."),
                QString()},
               verboseOptionSpec(),
           };
}

}  // namespace

CommandHelp tagsHelp() {
    CommandHelp help;
    help.name = QStringLiteral("tags");
    help.summary = QStringLiteral("lists the controller's variables as addresses");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] [PATTERN...]");
    help.description
        << QStringLiteral(
               "Asks the controller itself for its global variables and prints each as an address "
               "of the driver, an array with its bounds: DINT0:RECIPE[0..9]. A variable of a type "
               "without a prefix follows a #, with the reason. So the output is an address file "
               "for 'micro800 check @FILE'.")
        << QStringLiteral(
               "A PATTERN chooses variables by name, case-insensitive: * is any text, ? one "
               "character, [A-F] one of these. Put it in quotes for the shell.")
        << QStringLiteral(
               "The list contains the number of elements of an array and not its lower bound; 0 is "
               "assumed. Controllers are reported to omit arrays of BOOL, arrays that do not begin "
               "at 0, and members of structures; 'check' finds them. A controller without a list, "
               "as older firmware, is reported, and the exit status is 1.");
    help.options = tagsOptions();
    help.examples << QStringLiteral(
                         "micro800 tags --host 192.168.1.20\n"
                         "DINT0:COUNTER\n"
                         "DINT0:RECIPE[0..9]\n"
                         "# DELAY TIME: no prefix, the panel cannot read it")
                  << QStringLiteral("micro800 tags --host 192.168.1.20 'PUMP*' > pumps.txt")
                  << QStringLiteral("micro800 tags --host 192.168.1.20 --project ./panel");
    return help;
}

int runTags(const CommandLine& line, Console& console) {
    TagsPlan plan;
    QString problem;
    if (!planTags(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("tags"), problem);
    }
    QVector<Symbol> all;
    QVector<Symbol> wanted;
    QStringList done;
    bool ok = fetchSymbols(plan, traceFrom(line, &console), &all, &problem);
    for (const Symbol& symbol : all) {
        if (isWanted(symbol, plan.patterns)) {
            wanted.append(symbol);
        }
    }
    if (ok && wanted.isEmpty()) {
        ok = false;
        problem =
            all.isEmpty()
                ? QStringLiteral(
                      "the controller lists no variable; only global ones are "
                      "listed: has a program been downloaded?")
                : QStringLiteral("none of the controller's %1 variables is wanted").arg(all.size());
    }
    ok = ok && (plan.project.isEmpty() || declareArrays(plan, wanted, &done, &problem));
    if (!ok) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    printSymbols(plan, wanted, console);
    for (const QString& text : done) {
        console.error(text);
    }
    return kExitOk;
}

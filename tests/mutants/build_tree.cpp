#include "mutants/build_tree.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

namespace {

/// The last command that Ninja would run for the target; empty when there is none.
QString lastCommand(const QString& folder, const QString& target) {
    QProcess ninja;
    ninja.start("ninja", {"-C", folder, "-t", "commands", "-s", target});
    if (!ninja.waitForFinished(60000) || ninja.exitCode() != 0) {
        return QString();
    }
    const QString out = QString::fromLocal8Bit(ninja.readAllStandardOutput()).trimmed();
    return out.mid(out.lastIndexOf('\n') + 1);
}

QString quoted(const QString& path) {
    return "'" + path + "'";
}

}  // namespace

bool BuildTree::open(const QString& path, QString* problem) {
    folder = QDir(path).absolutePath();
    QFile file(folder + "/compile_commands.json");
    if (!file.open(QIODevice::ReadOnly)) {
        *problem = "no compile_commands.json in " + folder;
        return false;
    }
    const QJsonArray commands = QJsonDocument::fromJson(file.readAll()).array();
    for (const QJsonValue& entry : commands) {
        compile.insert(entry["file"].toString(), entry["command"].toString());
    }
    for (const char* target :
         {"tests/unit_common", "tests/unit_cip", "tests/unit_record", "tests/unit_eip",
          "tests/unit_driver", "tests/integration_worker", "plugins/libab_micro800_ethernet.so"}) {
        linking.insert(target, lastCommand(folder, target));
    }
    return true;
}

QString BuildTree::compileCommand(const QString& original, const QString& source,
                                  const QString& object) const {
    QString command = compile.value(original);
    if (command.isEmpty()) {
        return QString();
    }
    // A change may leave something unused, which is no reason not to compile it.
    command.remove(QRegularExpression(" -o \\S+ -c .*$"));
    command.remove(" -Werror").remove(" -Wall").remove(" -Wextra");
    command.remove(QRegularExpression("^\\S*ccache "));
    return "cd " + quoted(folder) + " && " + command + " -w -o " + quoted(object) + " -c " +
           quoted(source);
}

QString BuildTree::linkCommand(const QString& target, const QString& object,
                               const QString& output) const {
    QString command = linking.value(target);
    const QString out = " -o " + target + " ";
    if (!command.contains(out)) {
        return QString();
    }
    command.replace(out, " " + quoted(object) + " -o " + quoted(output) + " ");
    command.remove(QRegularExpression("^: && "));
    return "cd " + quoted(folder) + " && " + command;
}

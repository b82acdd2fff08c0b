#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include "apps/micro800/program.h"
#include "apps/micro800/project/app_directory.h"
#include "apps/micro800/terminal/console.h"

namespace {

/// Arguments are UTF-8 in any locale; what is none is taken byte by byte.
QString decoded(const char* argument) {
    const QByteArray bytes(argument);
    const QString text = QString::fromUtf8(bytes);
    return text.toUtf8() == bytes ? text : QString::fromLatin1(bytes);
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    Console console(stdout, stderr);
    QString problem;
    int code = kExitFailed;
    if (adoptAppDirectory(&argc, argv, &problem)) {
        QStringList arguments;
        for (int i = 1; i < argc; ++i) {
            arguments << decoded(argv[i]);
        }
        code = runProgram(arguments, console);
    } else {
        console.error(QStringLiteral("micro800: %1").arg(problem));
    }
    return code;
}

#include <QCoreApplication>
#include <cstdio>

#include "common/project_paths.h"

// Prints the two paths as a program sees them that runs from the directory that contains it.
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    std::printf("%s\n%s\n", qPrintable(GetCompilePath().absolutePath()),
                qPrintable(GetDatabaseName()));
    return 0;
}

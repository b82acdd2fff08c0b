#include "apps/micro800/base/input.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>
#include <thread>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(Input, AFileAsAWhole) {
    QTemporaryDir dir;
    QFile file(dir.filePath("list"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("DINT0:A\n");
    file.close();
    QByteArray content;
    QString problem;
    ASSERT_TRUE(readInput(file.fileName(), &content, &problem)) << qPrintable(problem);
    EXPECT_EQ(content, QByteArray("DINT0:A\n"));
}

TEST(Input, WhatCannotBeRead) {
    QTemporaryDir dir;
    QByteArray content;
    QString problem;
    EXPECT_FALSE(readInput(dir.filePath("gone"), &content, &problem));
    EXPECT_EQ(problem, dir.filePath("gone") + ": No such file or directory");
    EXPECT_FALSE(readInput(dir.path(), &content, &problem));
    EXPECT_TRUE(problem.startsWith(dir.path() + ": ")) << qPrintable(problem);
}

TEST(Input, TooLarge) {
    QTemporaryDir dir;
    const QString name = dir.filePath("large");
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(kLargestInput + 1));
    QByteArray content;
    QString problem;
    EXPECT_FALSE(readInput(name, &content, &problem));
    EXPECT_EQ(problem, name + ": larger than 16777216 bytes");
}

TEST(Input, APipeIsReadOnceAndKept) {
    QTemporaryDir dir;
    const QString name = dir.filePath("a pipe: 1");
    ASSERT_EQ(mkfifo(QFile::encodeName(name).constData(), 0600), 0);
    std::thread writer([name] {
        QFile pipe(name);
        ASSERT_TRUE(pipe.open(QIODevice::WriteOnly));
        pipe.write("DINT0:A\nDINT0:B\n");
    });
    QByteArray content;
    QString problem;
    EXPECT_TRUE(readInput(name, &content, &problem)) << qPrintable(problem);
    writer.join();
    EXPECT_EQ(content, QByteArray("DINT0:A\nDINT0:B\n"));
    // Nobody writes any more; opening the pipe would wait for ever.
    for (int i = 0; i < 2; ++i) {
        content.clear();
        ASSERT_TRUE(readInput(name, &content, &problem)) << qPrintable(problem);
        EXPECT_EQ(content, QByteArray("DINT0:A\nDINT0:B\n"));
    }
}

TEST(Input, WhatTheProgramInFrontKeptIsReadFromThere) {
    const int descriptor = memfd_create("kept", 0);
    ASSERT_EQ(write(descriptor, "DINT0:A\n", 8), 8);
    adoptInput({"a name: of its own", descriptor});
    QByteArray content;
    QString problem;
    ASSERT_TRUE(readInput("a name: of its own", &content, &problem)) << qPrintable(problem);
    EXPECT_EQ(content, QByteArray("DINT0:A\n"));
    EXPECT_EQ(keptInputs().last().name, QString("a name: of its own"));
    EXPECT_EQ(keptInputs().last().descriptor, descriptor);
}

}  // namespace

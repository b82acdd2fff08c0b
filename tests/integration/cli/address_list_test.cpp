// Addresses from files and from standard input, with a program that starts itself anew in between.

#include <sys/stat.h>

#include <QFile>
#include <thread>

#include "integration/cli/cli_program.h"

namespace {

class CliAddressList : public CliTest {
 protected:
    void SetUp() override { startController({"--tag", "A:DINT=1", "--tag", "B:DINT[0..1]=2,3"}); }
};

const char kList[] = "# panel 3\nDINT0:A\n\nDINT0:B[1]  # level\n";
const char kValues[] = "DINT0:A = 1\nDINT0:B[1] = 3\n";

TEST_F(CliAddressList, FromAFile) {
    const CliResult result = runWith("read", {"@" + fileWith("list", kList), "DINT0:B[0]"});
    EXPECT_EQ(result.out, QByteArray(kValues) + "DINT0:B[0] = 2\n");
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CliAddressList, FromStandardInput) {
    input = fileWith("list", kList);
    EXPECT_EQ(runWith("read", {"-"}).out, QByteArray(kValues));
    EXPECT_EQ(runWith("watch", {"--once", "-"}).out.count(" DINT0:B[1] = 3\n"), 1);
}

TEST_F(CliAddressList, FromAPipeThatCanBeReadOnce) {
    const QString name = files.filePath("pipe");
    ASSERT_EQ(mkfifo(QFile::encodeName(name).constData(), 0600), 0);
    std::thread writer([name] {
        QFile pipe(name);
        ASSERT_TRUE(pipe.open(QIODevice::WriteOnly));
        pipe.write(kList);
    });
    EXPECT_EQ(runWith("read", {"@" + name}).out, QByteArray(kValues));
    writer.join();
}

TEST_F(CliAddressList, AnErrorNamesFileAndLineAndNothingIsSent) {
    const QString name = fileWith("list", "DINT0:A\n# next\nDINT0:B[x]\n");
    const CliResult result = runWith("read", {"@" + name});
    EXPECT_TRUE(result.err.startsWith("micro800 read: " + name.toUtf8() + ":3: DINT0:B[x]: "))
        << result.err.constData();
    EXPECT_EQ(result.exitCode, 2);
    const CliResult gone = runWith("read", {"@" + files.filePath("gone")});
    EXPECT_EQ(gone.err.split('\n').first(),
              "micro800 read: " + files.filePath("gone").toUtf8() + ": No such file or directory");
    EXPECT_EQ(gone.exitCode, 2);
    EXPECT_EQ(runWith("read", {"@" + fileWith("empty", "# none\n")}).err.split('\n').first(),
              QByteArray("micro800 read: no address given"));
    EXPECT_EQ(controller->log().size(), 0);
}

}  // namespace

// Text of a controller and of a project database, on a terminal and in JSON.

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>

#include "integration/cli/cli_program.h"

namespace {

class CliHostileText : public CliTest {};

/// No byte that a terminal obeys, but for the ends of lines.
bool obeysNothing(const QByteArray& output) {
    static const QRegularExpression harmful("[\\x{00}-\\x{09}\\x{0b}-\\x{1f}\\x{7f}-\\x{9f}]");
    return !harmful.match(QString::fromUtf8(output)).hasMatch();
}

TEST_F(CliHostileText, AStringWithEveryByteComesThroughAsJson) {
    QString all;
    QString value;
    for (int code = 0; code < 255; ++code) {
        all += QChar(code + 1);
        value += QString("\\x%1").arg(code + 1, 2, 16, QChar('0'));
    }
    startController({"--tag", "ALL:STRING=" + value, "--tag", "NUL:STRING=AB\\x00CD"});
    const CliResult result = runWith("read", {"--json", "STRING0:ALL", "STRING0:NUL"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_TRUE(obeysNothing(result.out)) << result.out.constData();
    const QList<QByteArray> lines = result.out.split('\n');
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(QJsonDocument::fromJson(lines.at(0)).object().value("value").toString(), all);
    EXPECT_EQ(QJsonDocument::fromJson(lines.at(1)).object().value("value").toString(),
              QString::fromLatin1("AB\0CD", 5));
}

TEST_F(CliHostileText, AProjectCannotWriteToTheTerminal) {
    QTemporaryDir panel;
    ASSERT_EQ(run({"project", panel.path(), "--array", "DINT0:AXXXXX[0..9]"}).exitCode, 0);
    QFile database(panel.filePath("compile/database/database"));
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    QByteArray bytes = database.readAll();
    bytes.replace("AXXXXX", "A\x1b]0;\x07");
    ASSERT_TRUE(database.seek(0));
    ASSERT_EQ(database.write(bytes), bytes.size());
    database.close();

    const CliResult text = run({"project", panel.path()});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_TRUE(text.out.contains("array on link 1: DINT0:A\\x1b]0;\\x07[0..9]\n"))
        << text.out.constData();
    EXPECT_TRUE(obeysNothing(text.out));
    const CliResult json = run({"project", panel.path(), "--json"});
    EXPECT_TRUE(obeysNothing(json.out));
    EXPECT_TRUE(json.out.contains("DINT0:A\\u001b]0;\\u0007[0..9]")) << json.out.constData();
}

TEST_F(CliHostileText, AnArgumentComesBackHarmless) {
    const CliResult result = run({"read\x1b]0;x\x07"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(obeysNothing(result.err));
    EXPECT_TRUE(result.err.contains("\\x1b]0;x\\x07")) << result.err.constData();
}

}  // namespace

// docs/commissioning.md, run line by line against two simulated controllers. They have the page's
// addresses on loopback, with ports of the system's choice.

#include "integration/cli/cli_program.h"
#include "integration/cli/doc_page.h"

namespace {

class Commissioning : public CliTest {
 protected:
    static QStringList plant(const QString& address, const QStringList& values) {
        const QStringList tags = {"COUNTER:DINT",    "RUNNING:BOOL", "LEVEL:REAL", "SPEED:INT",
                                  "RECIPE:DINT[10]", "NAME:STRING",  "MASK:DWORD"};
        QStringList arguments = {"--address", address, "--udp", "--delay", "1"};
        for (int i = 0; i < tags.size(); ++i) {
            const QString value = values.value(i);
            arguments << "--tag" << (value.isEmpty() ? tags.at(i) : tags.at(i) + '=' + value);
        }
        return arguments;
    }

    /// The page's names to what is here, and back.
    QString here(QString command) const {
        command.replace("micro800 discover", QString("micro800 discover --broadcast 127.0.0.20 "
                                                     "--timeout 300 --port %1")
                                                 .arg(former.port()));
        command.replace("192.168.1.20", QString("127.0.0.20:%1").arg(former.port()));
        command.replace("192.168.1.21", QString("127.0.0.21:%1").arg(latter.port()));
        // A host names one port only.
        return command.replace("doctor --port 9", "doctor --host 127.0.0.21:9");
    }
    QString onThePage(QString text) const {
        for (const SimulatorProcess* one : {&former, &latter}) {
            text.replace(QString(":%1").arg(one->port()), ":44818");
            text.replace(QString("port %1").arg(one->port()), "port 44818");
        }
        return text.replace("127.0.0.2", "192.168.1.2");
    }

    SimulatorProcess former{
        plant("127.0.0.20", {"42", "1", "21.5", "1450", "250,80,40,5", "Mixer 3"})};
    SimulatorProcess latter{plant("127.0.0.21", {"", "", "", "", "", "Mixer 3"})};
};

TEST_F(Commissioning, ThePageIsWhatHappens) {
    ASSERT_TRUE(former.start()) << former.error();
    ASSERT_TRUE(latter.start()) << latter.error();
    expectThePageIsWhatHappens("commissioning.md", 13,
                               {shellEnvironment(), [&](const QString& text) { return here(text); },
                                [&](const QString& text) { return onThePage(text); }});
    if (IsSkipped()) {
        return;
    }
    // The controller that the day began with has been read only.
    EXPECT_FALSE(former.log().isEmpty());
    for (const QJsonObject& request : former.log()) {
        EXPECT_NE(request.value("service").toString(), QString("WriteTag"));
    }
}

}  // namespace

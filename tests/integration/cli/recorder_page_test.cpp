// docs/recorder.md, run line by line against a simulated controller that keeps silent once.

#include "integration/cli/cli_program.h"
#include "integration/cli/doc_page.h"

namespace {

class RecorderPage : public CliTest {};

TEST_F(RecorderPage, ThePageIsWhatHappens) {
    startController({"--tag", "COUNTER:DINT=42", "--tag", "LEVEL:REAL=21.5", "--delay", "6",
                     "--fault", "silence@3x1"});
    const QString address = QString("127.0.0.1:%1").arg(controller->port());
    expectThePageIsWhatHappens(
        "recorder.md", 5,
        {shellEnvironment(),
         [&](const QString& command) { return QString(command).replace("192.168.1.20", address); },
         [](const QString& printed) { return printed; }});
}

}  // namespace

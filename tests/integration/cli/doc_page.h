#ifndef TESTS_INTEGRATION_CLI_DOC_PAGE_H
#define TESTS_INTEGRATION_CLI_DOC_PAGE_H

#include <QProcessEnvironment>
#include <QString>
#include <functional>

// A page of the documentation whose commands are run. They are in its blocks of kind "console",
// each after
// "$ " and continued after "> ", with what it prints below. There an ellipsis means any text;
// alone on its line, for any lines.

/// How the page's world is played.
struct PageStage {
    /// Of the one shell that runs all commands, in a directory of its own.
    QProcessEnvironment environment;
    /// A command of the page with the names that its hosts and ports have here.
    std::function<QString(const QString&)> here;
    /// And back: what a command printed, with the page's names.
    std::function<QString(const QString&)> onThePage;
};

/// Runs all commands of docs/NAME and fails the test where one prints something else than the page
/// shows, or when the page has fewer than `atLeast` of them. Skips the test where programs of the
/// emulated machine cannot be started by a shell.
void expectThePageIsWhatHappens(const char* name, int atLeast, const PageStage& stage);

#endif

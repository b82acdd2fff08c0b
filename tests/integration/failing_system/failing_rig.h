#ifndef TESTS_INTEGRATION_FAILING_SYSTEM_FAILING_RIG_H
#define TESTS_INTEGRATION_FAILING_SYSTEM_FAILING_RIG_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <QTemporaryDir>
#include <ostream>
#include <string>
#include <vector>

#include "integration/driver_rig.h"
#include "integration/failing_system/failing_calls.h"
#include "integration/failing_system/life.h"

/// A function and the errors with which it fails.
struct Call {
    const char* name;
    std::vector<int> errors;
};

void PrintTo(const Call& call, std::ostream* out);

/// One life to be lived.
struct Lot {
    failing::Failure failure;
    long number;
    failing::Mode mode;
    bool mustWork;
    bool records;
    int times = 1;
};

/// Two controllers, and lives of drivers in processes of their own.
class FailingSystem : public ::testing::Test {
 protected:
    /// The report of a life's process to the test.
    struct Report {
        long calls;
        bool failed;
        RecordingsLeft left;
        char problem[400];
    };

    typedef std::vector<Report> Reports;

    FailingSystem();
    ~FailingSystem() override;

    /// Lives all of them, some at once. Each is a part of the test. Returns the reports.
    Reports live(const std::vector<Lot>& lots);
    /// Lives for each error of a call, spread over all the moments at which a life makes it.
    /// Such a call and the ones after it fail, so many in all: `times`.
    Reports failEach(const Call& call, failing::Mode mode, bool records, int times = 1);

 private:
    pid_t begin(const Lot& lot, int slot);
    std::string end(pid_t child, int slot);
    long callsOf(const Lot& lot);

    QTemporaryDir recordings;
    Controller first;
    Controller second;
    Report* reports;
    int lives = 0;
};

#endif

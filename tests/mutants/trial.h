#ifndef TESTS_MUTANTS_TRIAL_H
#define TESTS_MUTANTS_TRIAL_H

#include <QHash>
#include <QString>
#include <QStringList>

#include "mutants/build_tree.h"
#include "mutants/mutation_points.h"

enum class Outcome { noticed, survived, doesNotCompile };

struct Result {
    Mutation mutation;
    Outcome outcome;
    QString by;  ///< the program and the test that noticed it, or the compiler's first complaint
};

/// A program of GoogleTest, and how long all of it takes without a change.
struct TestProgram {
    QString target;   ///< below the build folder, e.g. tests/unit_cip
    bool withPlugin;  ///< loads the plugin file; else it contains the product itself
};

/// The programs that see a change of the file, those that last come last. `quick`: without those
/// that load the plugin file.
QList<TestProgram> programsFor(const QString& file, bool quick);

/// Makes changed builds, one at a time in a folder of its own, and runs the tests with them. Tests
/// stop at the first that fails, and a test counts as failed when it fails twice.
class Trial {
 public:
    /// `seconds`: how long each program takes with nothing changed.
    Trial(const QString& root, const BuildTree& build, const QString& folder,
          const QHash<QString, double>& seconds, bool quick);

    Result run(const Mutation& mutation);

    /// Seconds that the program takes as it was built; less than 0 when it fails then, with what it
    /// says.
    static double timeOf(const BuildTree& build, const TestProgram& program, QString* problem);

 private:
    bool compile(const Mutation& mutation, QString* problem);
    bool link(const TestProgram& program, QString* problem);
    /// The name of the test that fails; empty when none does.
    QString failingTest(const TestProgram& program);

    QString root;
    const BuildTree& build;
    QString folder;
    QHash<QString, double> seconds;
    bool quick;
};

#endif

// Changes single operators and constants of the product, and counts the changes that a test
// notices.
//
//   mutate --root TREE --build FOLDER [--sample N] [--from K] [--seed S] [--jobs J] [--json FILE]
//           [--id ID[,ID...]] [--quick] [--list] [PATH...]

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTextStream>
#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "mutants/report.h"

namespace {

const char* const kProduct[] = {"common", "eip", "drivers"};

struct Options {
    QString root;
    QString build;
    QString json;
    QStringList ids;
    QStringList paths;
    quint64 seed = 0;
    int sample = 0;
    int from = 0;
    int jobs = 1;
    bool list = false;
    bool quick = false;
};

Options optionsOf(const QCoreApplication& app) {
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{"root", "The tree.", "folder", "."},
                       {"build", "A finished build of it by Ninja.", "folder", "build-mutants"},
                       {"sample", "How many changes.", "number", "100"},
                       {"from", "How many of the sample to pass over.", "number", "0"},
                       {"seed", "Of the sample's order.", "number", "1"},
                       {"jobs", "How many at a time.", "number",
                        QString::number(std::thread::hardware_concurrency())},
                       {"json", "Where to write the results.", "file"},
                       {"id", "Only these, with commas in between.", "ids"},
                       {"quick", "Without the tests through the plugin file."},
                       {"list", "Only say what would be changed."}});
    parser.addPositionalArgument("path", "Files or folders; else the whole product.", "[PATH...]");
    parser.process(app);
    Options options;
    options.root = QDir(parser.value("root")).absolutePath();
    options.build = parser.value("build");
    options.json = parser.value("json");
    options.ids = parser.value("id").split(',', Qt::SkipEmptyParts);
    options.paths = parser.positionalArguments();
    options.seed = parser.value("seed").toULongLong();
    options.sample = parser.value("sample").toInt();
    options.from = parser.value("from").toInt();
    options.jobs = std::max(1, parser.value("jobs").toInt());
    options.list = parser.isSet("list");
    options.quick = parser.isSet("quick");
    return options;
}

/// All changes of the product's source files, in the sample's order. Not of headers: every program
/// would have to be compiled again.
QList<Mutation> allMutations(const Options& options) {
    QList<Mutation> all;
    for (const char* folder : kProduct) {
        QDirIterator files(options.root + '/' + folder, {"*.cpp"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (file.open(QIODevice::ReadOnly)) {
                all << mutationsOf(QDir(options.root).relativeFilePath(file.fileName()),
                                   file.readAll());
            }
        }
    }
    return inSampleOrder(all, options.seed);
}

bool isWanted(const Mutation& mutation, const Options& options) {
    const auto below = [&](const QString& path) { return mutation.file.startsWith(path); };
    return (options.ids.isEmpty() || options.ids.contains(QString(mutation.id()))) &&
           (options.paths.isEmpty() ||
            std::any_of(options.paths.begin(), options.paths.end(), below));
}

/// Works through the queue, in as many threads as there are trials, until the sample is full. A
/// change that does not compile is no part of the sample; the next one takes its place.
class Sampling {
 public:
    Sampling(const QList<Mutation>& queue, int sample, const Explanations& explanations)
        : queue(queue), missing(sample), explanations(explanations) {}

    QList<Result> run(std::vector<Trial>* trials) {
        std::vector<std::thread> threads;
        for (Trial& trial : *trials) {
            threads.emplace_back([this, &trial] { work(&trial); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        return results;
    }

 private:
    void work(Trial* trial) {
        Mutation mutation;
        while (take(&mutation)) {
            const Result result = trial->run(mutation);
            const std::lock_guard<std::mutex> guard(mutex);
            missing += result.outcome == Outcome::doesNotCompile ? 1 : 0;
            results << result;
            QTextStream(stdout) << lineFor(result, explanations) << Qt::flush;
        }
    }

    bool take(Mutation* mutation) {
        const std::lock_guard<std::mutex> guard(mutex);
        if (missing <= 0 || next >= queue.size()) {
            return false;
        }
        *mutation = queue.at(next++);
        --missing;
        return true;
    }

    const QList<Mutation> queue;
    std::mutex mutex;  // guards what follows
    int next = 0;
    int missing;
    QList<Result> results;
    const Explanations explanations;
};

/// How long the programs take that the queue needs; false when one fails with nothing changed.
bool measure(const BuildTree& build, const QList<Mutation>& queue, bool quick,
             QHash<QString, double>* seconds) {
    for (const Mutation& mutation : queue) {
        for (const TestProgram& program : programsFor(mutation.file, quick)) {
            if (seconds->contains(program.target)) {
                continue;
            }
            QString problem;
            seconds->insert(program.target, Trial::timeOf(build, program, &problem));
            if (!problem.isEmpty()) {
                QTextStream(stderr) << problem << '\n';
                return false;
            }
            QTextStream(stderr) << program.target << ": " << seconds->value(program.target)
                                << " s\n";
        }
    }
    return true;
}

int runSample(const Options& options, const QList<Mutation>& queue) {
    BuildTree build;
    QString problem;
    if (!build.open(options.build, &problem)) {
        QTextStream(stderr) << problem << '\n';
        return 2;
    }
    QHash<QString, double> seconds;
    if (!measure(build, queue.mid(0, options.sample), options.quick, &seconds)) {
        return 2;
    }
    std::vector<Trial> trials;
    for (int i = 0; i < options.jobs; ++i) {
        trials.emplace_back(options.root, build, build.path() + QString("/trial-%1").arg(i),
                            seconds, options.quick);
    }
    const Explanations explanations =
        readExplanations(options.root + "/tests/mutants/explained.txt");
    const QList<Result> results = Sampling(queue, options.sample, explanations).run(&trials);
    QTextStream(stdout) << '\n' << tableOf(results, explanations);
    if (!options.json.isEmpty()) {
        QFile file(options.json);
        if (!file.open(QIODevice::WriteOnly)) {
            QTextStream(stderr) << "cannot write " << options.json << '\n';
            return 2;
        }
        file.write(jsonOf(results, explanations, options.seed));
    }
    return isEnough(results, explanations) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const Options options = optionsOf(app);
    QList<Mutation> queue;
    for (const Mutation& mutation : allMutations(options)) {
        if (isWanted(mutation, options)) {
            queue << mutation;
        }
    }
    queue = queue.mid(options.from);
    if (!options.list) {
        return runSample(options, queue);
    }
    for (const Mutation& mutation : queue.mid(0, options.sample)) {
        QTextStream(stdout) << mutation.id() << ' ' << mutation.kind << ' ' << mutation.file << ':'
                            << mutation.line << ": " << mutation.from.simplified() << " -> "
                            << mutation.to.simplified() << " in: " << mutation.where << '\n';
    }
    return 0;
}

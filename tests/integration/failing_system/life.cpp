#include "integration/failing_system/life.h"

#include <dirent.h>

#include <string.h>

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <QVariant>
#include <atomic>
#include <exception>
#include <set>

#include "integration/driver_rig.h"
#include "integration/failing_system/failing_calls.h"
#include "support/capture_file.h"

// The address sanitizer's search for memory that nothing points to, which prints what it finds. Not
// there in other builds.
extern "C" {

__attribute__((weak)) int __lsan_do_recoverable_leak_check();

__attribute__((visibility("default"))) const char* __lsan_default_options() {
    return "print_suppressions=0";
}

/// The loader frees its list of dependencies when the process ends. The constructor of a pattern
/// that gets no memory loses what it had by then; Qt has it so.
__attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:_dl_map_object_deps\nleak:QRegExp::QRegExp\n";
}

}  // extern "C"

namespace {

/// A step that has not worked by then never will. Far more than all time-outs of a try together.
const int kStepMs = 20000;
const int kTimeoutMs = 1000;

/// What both controllers have under one name, and the value that only one of them has.
const int kConstant = 4711;
const int kFirst = 101;
const int kSecond = 202;

struct Problem {
    std::string text;
};

int countThreads() {
    int count = 0;
    DIR* const dir = opendir("/proc/self/task");
    while (const dirent* entry = readdir(dir)) {
        count += entry->d_name[0] != '.';
    }
    closedir(dir);
    return count;
}

class Life {
 public:
    Life(const LifePlace& where, bool must)
        : device(where.firstPort, kTimeoutMs),
          place(where),
          mustWork(must),
          library(pluginFile()) {}

    void load();
    void use();
    /// The least that makes two recordings: of a refusal, and of the end.
    void record();
    bool hasRecorded() const;
    /// The least that shows that it works.
    void readOnce();
    void end();

 private:
    template <class Try>
    void until(const char* step, const Try& attempt);
    bool reads(const char* address, int count, const QByteArray& first, const QByteArray& second);
    bool readsDint(const QString& name, int first, int second);

    TestDevice device;
    const LifePlace place;
    const bool mustWork;
    QLibrary library;
    DriverInterface* driver = nullptr;
};

/// Calls `attempt` until it succeeds.
template <class Try>
void Life::until(const char* step, const Try& attempt) {
    if (!waitFor(attempt, mustWork ? kStepMs : 1) && mustWork) {
        const QString text = driver ? driver->getLastError() : QString();
        throw Problem{std::string(step) + " never worked: " + text.toStdString()};
    }
}

/// One read. True for a value of the two, false for a failure; any other value ends the life.
bool Life::reads(const char* address, int count, const QByteArray& first,
                 const QByteArray& second) {
    const CommunicatorCommand command(kUnitDoubleWord, static_cast<unsigned>(count),
                                      QLatin1String(address));
    QByteArray value;
    {
        const failing::DriverScope scope;
        value = driver->read(&device, command);
    }
    if (!value.isEmpty() && value != first && value != second) {
        throw Problem{std::string("wrong value of ") + address + ": " +
                      value.toHex().toStdString()};
    }
    return value == first;
}

bool Life::readsDint(const QString& name, int first, int second) {
    return reads(("DINT0:" + name).toLatin1().constData(), 1, dintBytes(first), dintBytes(second));
}

/// By both of the ways into the file. Qt's loader is the host's: what it does does not count.
void Life::load() {
    typedef DriverInterface* (*Create)();
    typedef QObject* (*Instance)();
    const bool isInstance = place.value % 2 == 0;
    const auto entry = library.resolve(isInstance ? "qt_plugin_instance" : "CreateDriver");
    until("load", [&] {
        const failing::DriverScope scope;
        driver = isInstance ? qobject_cast<DriverInterface*>(reinterpret_cast<Instance>(entry)())
                            : reinterpret_cast<Create>(entry)();
        return driver != nullptr;
    });
}

void Life::use() {
    const QString slot = QString("SLOT%1").arg(place.slot);
    const QByteArray element = dintBytes(kFirst + 2);
    const QList<CommunicatorCommand> list = QList<CommunicatorCommand>()
                                            << dint("D") << dint("ARR[1]") << dint("UND[1]");
    {
        const failing::DriverScope scope;
        driver->initialize(&device);
        driver->setSessionCommand(list);
        driver->name();
        driver->getVersionNumber();
        delete driver->getDefaultSerialDeviceSetting();
        delete driver->getDefaultDriverSetting();
    }
    readOnce();
    until("read of a polled tag", [&] { return readsDint("D", kFirst, kFirst); });
    until("read of a polled array's element",
          [&] { return reads("DINT0:ARR[2]", 1, element, element); });
    until("direct read of two elements", [&] {
        const QByteArray two = dintBytes(kFirst + 1) + dintBytes(kFirst + 2);
        return reads("DINT0:UND[1]", 2, two, two);
    });
    const int written = place.value;
    until("write", [&] {
        const failing::DriverScope scope;
        return driver->write(&device, dint(slot), dintBytes(written));
    });
    until("read of what was written",
          [&] { return readsDint(slot, written, mustWork ? written : 0); });
    DeviceSetting setting(device.device);
    setting.socketList.clear();
    setting.socketList.append(qMakePair(QString("127.0.0.1"), place.secondPort));
    until("change of the address", [&] {
        const failing::DriverScope scope;
        return driver->deviceSettingChanged(&setting);
    });
    until("read behind the change of the address",
          [&] { return readsDint("D", kSecond, mustWork ? kSecond : kFirst); });
    failing::DriverScope scope;
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("C"));
    driver->clearSessionCommand();
}

void Life::record() {
    readOnce();
    // The recorder takes a text that it knows for no news: each refusal is of another tag.
    int refusals = 0;
    until("recording of a refusal", [&] {
        const QString unknown = QString("NOPE%1").arg(++refusals);
        reads(("DINT0:" + unknown).toLatin1().constData(), 1, QByteArray(), QByteArray());
        return waitFor([&] { return hasRecorded(); }, kStepMs / 10);
    });
    readOnce();
}

/// Whether a recording is written or lost.
bool Life::hasRecorded() const {
    const QVariantMap counters = driver->getThisObject()->property("counters").toMap();
    const QVariantMap made = counters.value("recording").toMap();
    return made.value("written").toInt() + made.value("failed").toInt() > 0;
}

void Life::end() {
    const failing::DriverScope scope;
    delete driver;
    driver = nullptr;
    library.unload();
}

void Life::readOnce() {
    until("read of a constant", [&] { return readsDint("C", kConstant, kConstant); });
}

/// Descriptors and threads, to be compared.
std::pair<std::set<int>, int> belongings() {
    return std::make_pair(openDescriptors(), countThreads());
}

/// The recorder's lines in the runtime's log. Takes no memory: that is refused to the recorder.
std::atomic<int> linesTold(0);
char lastLine[sizeof(RecordingsLeft::line)];

void takeLine(QtMsgType, const QMessageLogContext&, const QString& line) {
    if (!line.startsWith(QLatin1String("micro800 recorder: "))) {
        return;
    }
    const int size = qMin(line.size(), int(sizeof lastLine) - 1);
    for (int i = 0; i < size; ++i) {
        lastLine[i] = line.at(i).toLatin1();
    }
    lastLine[size] = '\0';
    ++linesTold;
}

/// How many recordings there are. Every one has to be whole, whatever failed.
int countRecordings(const QString& path) {
    const QDir folder(path);
    const QStringList names = folder.entryList(QStringList("*.pcapng"), QDir::Files);
    for (const QString& name : names) {
        CaptureFile file;
        QString problem;
        if (!file.read(folder.filePath(name), &problem) || file.packets.isEmpty()) {
            throw Problem{"recording " + name.toStdString() + " is not whole"};
        }
    }
    return names.size();
}

void liveAndThrow(const LifePlace& place, bool mustWork, RecordingsLeft* left) {
    const bool records = !place.recordings.isEmpty();
    if (records) {
        setenv("MICRO800_RECORD", place.recordings.toLocal8Bit().constData(), 1);
        setenv("MICRO800_RECORD_SIZE", "100,64K", 1);
        qInstallMessageHandler(takeLine);
    }
    const auto before = belongings();
    Life life(place, mustWork);
    life.load();
    records ? life.record() : life.use();
    life.end();
    failing::disarm();
    // The system lists a thread for a moment after it was joined.
    waitFor([&] { return countThreads() == before.second; }, kStepMs);
    const auto after = belongings();
    if (after != before) {
        throw Problem{"left " + std::to_string(minus(after.first, before.first).size()) +
                      " descriptors and " + std::to_string(after.second - before.second) +
                      " threads"};
    }
    if (records) {
        // All is written: the recorder's thread has ended.
        left->files = countRecordings(place.recordings);
        left->told = linesTold;
        memcpy(left->line, lastLine, sizeof lastLine);
    }
    // The remains of a failure in this process spoil no other driver's life.
    Life next(place, true);
    next.load();
    next.readOnce();
    next.end();
    if (records &&
        !waitFor([&] { return countRecordings(place.recordings) > left->files; }, kStepMs)) {
        throw Problem{"the next life is not recorded"};
    }
}

}  // namespace

bool leavesMemory() {
    return __lsan_do_recoverable_leak_check && __lsan_do_recoverable_leak_check() != 0;
}

std::string liveOnce(const LifePlace& place, bool mustWork, RecordingsLeft* left) {
    try {
        liveAndThrow(place, mustWork, left);
        if (leavesMemory()) {
            return "left memory that nothing points to";
        }
    } catch (const Problem& problem) {
        return problem.text;
    } catch (const std::exception& error) {
        return std::string("thrown over the border: ") + error.what();
    }
    return std::string();
}

QStringList lifeTags(bool second) {
    const int base = second ? kSecond : kFirst;
    QStringList options;
    options << "--tag" << QString("C:DINT=%1").arg(kConstant);
    options << "--tag" << QString("D:DINT=%1").arg(base);
    for (const char* array : {"ARR", "UND"}) {
        options << "--tag"
                << QString("%1:DINT[0..3]=%2,%3,%4,%5")
                       .arg(array)
                       .arg(base)
                       .arg(base + 1)
                       .arg(base + 2)
                       .arg(base + 3);
    }
    for (int slot = 0; slot < kLifeSlots; ++slot) {
        options << "--tag" << QString("SLOT%1:DINT=0").arg(slot);
    }
    return options;
}

QStringList lifeDeclarations() {
    return QStringList() << "DINT0:ARR[0..3]";
}

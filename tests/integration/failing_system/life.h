#ifndef TESTS_INTEGRATION_FAILING_SYSTEM_LIFE_H
#define TESTS_INTEGRATION_FAILING_SYSTEM_LIFE_H

#include <QString>
#include <QStringList>
#include <string>

/// Where a life of the driver takes place: two controllers with the tags of lifeTags(), and a tag
/// of the first that no other life writes to at the same time.
struct LifePlace {
    quint16 firstPort;
    quint16 secondPort;
    int slot;
    int value;           ///< that this life writes; no other one does
    QString recordings;  ///< folder for them, which is not there yet; empty: the recorder is off
};

/// The simulator's options for the controllers; the second differs from the first.
QStringList lifeTags(bool second);
/// What the project declares.
QStringList lifeDeclarations();

/// How many lives can take place at once.
const int kLifeSlots = 12;

/// What became of the two recordings of a life that records.
struct RecordingsLeft {
    int files;
    int told;        ///< lines of the recorder in the runtime's log
    char line[200];  ///< the last one
};

/// A whole life of a driver out of the real plugin file: load, declare arrays from the project
/// database, hand a session list over, read from the cache and directly, write, change the address,
/// end. Whatever fails meanwhile, each step has to work at a later try, and no try may give a value
/// that the controller does not have. Returns what went wrong, an empty text when nothing did.
///
/// With a folder for recordings it is a shorter one, which reads, is refused and ends; it tells in
/// `left` what it has recorded.
///
/// `mustWork` false: only the calls themselves are looked at, not whether they succeed.
std::string liveOnce(const LifePlace& place, bool mustWork, RecordingsLeft* left);

/// Whether this process has memory that nothing points to any more, which is printed. Only the
/// build with the address sanitizer can tell; false in others.
bool leavesMemory();

#endif

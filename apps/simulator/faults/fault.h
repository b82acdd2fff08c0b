#ifndef APPS_SIMULATOR_FAULTS_FAULT_H
#define APPS_SIMULATOR_FAULTS_FAULT_H

#include <QString>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sim {

/// What can go wrong with an answer. The README lists each with its parameter.
enum class FaultKind {
    silence,
    cut,
    reset,
    torn,
    tornHeader,
    wrongSequence,
    wrongSession,
    wrongCommand,
    wrongConnection,
    wrongService,
    encapStatus,
    encapLengthLong,
    encapLengthShort,
    itemCount,
    itemLengthLong,
    status,
    additionalStatusSize,
    unknownType,
    stringLengthPastEnd,
    shortReply,
    late,
    repeat,
    truncate,
    refuseRegister,
    refuseOpen,
    shortOpenReply,
    pcccStatus,
    wrongRequestor,
    wrongPcccCommand,
    wrongTransaction,
    wrongPcccType,
};

/// Which requests a fault is for.
enum class FaultScope { unit, rr, read, write, open, close, registerSession, pccc, any };

const int64_t kNoParameter = -1;

struct Fault {
    FaultKind kind = FaultKind::silence;
    FaultScope scope = FaultScope::unit;
    std::string tag;  ///< upper-case name or data-table address, empty for all
    /// What follows the name, its default where nothing does; kNoParameter without one.
    int64_t parameter = kNoParameter;
    int64_t parameter2 = kNoParameter;
    uint64_t from = 1;   ///< first request that it strikes, counted from 1
    uint64_t times = 0;  ///< how many it strikes, 0 for all after that
    uint64_t seen = 0;   ///< requests of its scope so far
    std::string text;    ///< as it was given
};

/// Reads NAME[:PARAM[,PARAM]][xM][@N[xM]][@tag=NAME][@on=SCOPE]. False with the reason in
/// `problem`.
bool parseFault(const QString& text, Fault* fault, QString* problem);

/// Every fault's name with its parameters, one per line, for the help text.
QString faultHelp();

/// The request that a fault may be for.
struct FaultTarget {
    uint16_t command = 0;
    int service = -1;  ///< of CIP, -1 without one
    /// Upper-case name without its last indices, or address in the data table.
    const std::string* tag = nullptr;
    bool pccc = false;  ///< there is a PCCC command in it
};

/// The faults that are switched on.
class FaultPlan {
 public:
    bool add(const QString& text, QString* problem);
    void add(const Fault& fault);
    void clear() { faults.clear(); }
    bool empty() const { return faults.empty(); }

    /// Counts the request and lists the faults that strike it. They live until the next clear().
    void select(const FaultTarget& target, std::vector<const Fault*>* struck);

 private:
    std::vector<std::unique_ptr<Fault>> faults;
};

}  // namespace sim

#endif

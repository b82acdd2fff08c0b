#ifndef EIP_RECORD_LIVE_COUNTERS_H
#define EIP_RECORD_LIVE_COUNTERS_H

#include <cstdint>
#include <mutex>
#include <vector>

struct _Encap_Header;

/// What one driver and its controller have done since the driver was made. Times are microseconds.
struct LiveFigures {
    LiveFigures();
    uint64_t requests;             ///< encapsulated messages to the controller, openings included
    uint64_t answers;              ///< whole messages from it
    uint64_t timeouts;             ///< answers that did not arrive in time
    uint64_t connects;             ///< TCP connections made
    uint64_t connectFailures;      ///< attempts that failed
    uint64_t opens;                ///< class 3 connections opened; all but the first are reconnects
    uint64_t losses;               ///< failures that cost the connection
    uint64_t errorTexts;           ///< failures reported to the host
    uint64_t hostCalls;            ///< reads and writes that had to ask the worker
    uint64_t longestHostWait;      ///< of those
    uint64_t passes;               ///< polling passes over the whole session list
    uint64_t passLast;             ///< time of the last one
    uint64_t passMean;             ///< of the last 256
    uint64_t passP99;              ///< of the last 256
    uint64_t encapsulationErrors;  ///< answers with an encapsulation status other than 0
    std::vector<uint64_t> byStatus;  ///< answers by CIP general status, 256 numbers
};

/// Keeps the figures. Any thread; each operation takes a leaf mutex for some nanoseconds.
class LiveCounters {
 public:
    LiveCounters();

    /// The general status of an answer that has none, and of one that the target refused with an
    /// encapsulation status.
    static const int kNoStatus = -1;
    static const int kEncapsulationError = -2;

    void noteRequest();
    /// `status`: CIP general status, 0 to 255, or one of the two above.
    void noteAnswer(int status);
    void noteTimeout();
    void noteConnect(bool connected);
    void noteOpen();
    void noteLoss();
    void noteErrorText();
    void notePass(int64_t micros);
    void noteHostWait(int64_t micros);

    LiveFigures figures() const;

 private:
    LiveCounters(const LiveCounters&) = delete;
    LiveCounters& operator=(const LiveCounters&) = delete;

    mutable std::mutex mutex;
    // guarded by mutex
    LiveFigures kept;              ///< but for the mean and the 99th percentile
    std::vector<uint32_t> window;  ///< the last passes, in a circle
};

/// The CIP general status of an encapsulated reply, or one of the two numbers of LiveCounters.
/// `reply` contains 24 + its length field bytes. Any thread.
int statusOfReply(const _Encap_Header* reply);

#endif

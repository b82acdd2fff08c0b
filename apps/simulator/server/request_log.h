#ifndef APPS_SIMULATOR_SERVER_REQUEST_LOG_H
#define APPS_SIMULATOR_SERVER_REQUEST_LOG_H

#include <QString>
#include <string>

#include "apps/simulator/faults/delivery.h"

namespace sim {

/// One JSON line a request, appended to a file before the answer is sent. The README lists the
/// keys.
class RequestLog {
 public:
    RequestLog() = default;
    ~RequestLog();
    RequestLog(const RequestLog&) = delete;
    RequestLog& operator=(const RequestLog&) = delete;

    /// False with the reason in `problem`.
    bool open(const QString& path, QString* problem);
    bool isOpen() const { return file >= 0; }

    /// Does nothing as long as no file is open. A line that cannot be written is lost.
    void write(const std::string& peer, const Exchange& exchange, const Delivery* delivery);

 private:
    int file = -1;
    std::string line;
};

/// The line that write() appends, without its line feed; `ms` since 1970. `delivery` says what goes
/// out instead of the reply unchanged, null when nothing strikes it.
std::string requestLogLine(double ms, const std::string& peer, const Exchange& exchange,
                           const Delivery* delivery);

}  // namespace sim

#endif

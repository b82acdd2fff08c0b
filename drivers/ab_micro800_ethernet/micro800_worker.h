#ifndef DRIVERS_AB_MICRO800_ETHERNET_MICRO800_WORKER_H
#define DRIVERS_AB_MICRO800_ETHERNET_MICRO800_WORKER_H

#include <QRegExp>
#include <QString>
#include <memory>

#include "eip/worker.h"

class Micro800DriverCallback;

/// The worker of a Micro800 controller: adds the write command. Owns its receiver.
/// Threads as EipWorker.
class Micro800Worker : public EipWorker {
 public:
    /// `timeout` in milliseconds.
    Micro800Worker(const QString& ip, unsigned short port, unsigned long timeout);
    /// The thread must have ended.
    virtual ~Micro800Worker();

 protected:
    /// Performs the pending write and answers it exactly once. On success `writtenName` is the
    /// tag whose cache entry was refreshed: the written name, or the array's for an element.
    bool processDriverWriteCmd(QString* writtenName, bool* broken);
    /// Refreshes the tag's value if it is cached, and answers the write.
    bool updateCacheAfterWrite(int pipe, unsigned short tid, const QString& name, bool* broken);

 private:
    QString cachedNameFor(const QString& name);
    Micro800Worker(std::unique_ptr<Micro800DriverCallback> receiver, const QString& ip,
                   unsigned short port, unsigned long timeout);

    struct Impl;
    std::unique_ptr<Impl> m;
};

#endif

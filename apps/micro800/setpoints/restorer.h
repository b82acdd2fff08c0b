#ifndef APPS_MICRO800_SETPOINTS_RESTORER_H
#define APPS_MICRO800_SETPOINTS_RESTORER_H

#include <QString>
#include <QVector>
#include <functional>

#include "apps/micro800/plugin/driver_session.h"
#include "apps/micro800/setpoints/difference.h"
#include "apps/micro800/setpoints/value_file.h"

/// A value that could not be read, or an element that did not become what it was to be.
struct Shortfall {
    QString address;  ///< of the value or the element
    QString problem;  ///< in one sentence
};

/// Writes the values of a file to a controller. The driver session must outlive it; used on one
/// thread.
class Restorer {
 public:
    /// Asked before every access; true ends the work.
    using StopQuestion = std::function<bool()>;

    Restorer(const QVector<SavedValue>& saved, DriverSession* opened, const StopQuestion& question);

    /// Reads every value of the file from the controller. False when it was stopped.
    bool compare();
    /// Writes what differs and reads it back. False when it was stopped, by the question or because
    /// the controller refused kMostFailures writes in succession.
    bool write();

    static const int kMostFailures = 3;

    const QVector<Difference>& differences() const { return found; }
    /// Elements that are as the file has them.
    int same() const { return sameCount; }
    /// Values that could not be read: they are not written.
    const QVector<Shortfall>& unreadable() const { return unread; }
    /// Elements that were written and have the file's value now.
    int restored() const { return restoredCount; }
    /// Elements whose write failed, or which read back otherwise.
    const QVector<Shortfall>& notTaken() const { return missed; }
    /// The first element that write() did not come to; empty when it came to all.
    QString nextAddress() const;

    QString addressOf(const Difference& difference) const;

 private:
    void writeRun(const WriteRun& run);
    void readBack(const WriteRun& run);
    void miss(const WriteRun& run, const QString& problem);

    const QVector<SavedValue>& values;
    DriverSession* session;
    const StopQuestion isStopped;
    QVector<Difference> found;
    QVector<Shortfall> unread;
    QVector<Shortfall> missed;
    int sameCount = 0;
    int restoredCount = 0;
    int reached = 0;  // differences that write() came to
    int failuresOnEnd = 0;
};

#endif

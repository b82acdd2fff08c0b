#ifndef TESTS_INTEGRATION_ARRAY_CONTROLLER_H
#define TESTS_INTEGRATION_ARRAY_CONTROLLER_H

#include <QByteArray>
#include <QList>
#include <functional>
#include <mutex>
#include <vector>

#include "integration/scripted_controller.h"

/// A controller with one array of DINTs, A, and one DINT, D, that keeps to connections of 504
/// bytes: values beyond one reply are sent in parts (general status 06), what does not fit a
/// request it does not answer. Each element of the array is its index plus 1000 at first, D is 42.
class ArrayController {
 public:
    /// A tag request as it came.
    struct Request {
        int service;
        char tag;   ///< 'A' or 'D'
        int index;  ///< of the element that the path names, 0 for none
        int count;
        int offset;  ///< of a fragment, else -1
        int bytes;   ///< of data, in a write
    };

    explicit ArrayController(int elements);

    quint16 port() const { return scripted.port(); }
    /// Every tag request so far, and how many of one service for one tag.
    QList<Request> requests() const;
    int count(int service, char tag = 'A') const;
    int value(int index) const;
    void setValue(int index, int value);
    int countOfCommand(int command) const { return scripted.countRequests(command); }

    /// How long the controller takes over every request.
    void setDelay(int us) { delayUs = us; }
    /// What it answers instead, or an empty text for no difference.
    void setOtherwise(const std::function<QByteArray(const Request&)>& answer) {
        const std::lock_guard<std::mutex> lock(mutex);
        otherwise = answer;
    }

 private:
    QByteArray serve(const QByteArray& bytes);
    QByteArray serveRead(const Request& request);
    QByteArray serveWrite(const Request& request, const QByteArray& data);

    mutable std::mutex mutex;
    std::vector<int> values;    ///< guarded by mutex
    int scalar;                 ///< guarded by mutex
    std::vector<Request> seen;  ///< guarded by mutex; shares nothing with what it is copied to
    std::atomic<int> delayUs;
    std::function<QByteArray(const Request&)> otherwise;  ///< guarded by mutex
    ScriptedController scripted;                          ///< last: its thread uses the others
};

#endif

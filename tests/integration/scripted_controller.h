#ifndef TESTS_INTEGRATION_SCRIPTED_CONTROLLER_H
#define TESTS_INTEGRATION_SCRIPTED_CONTROLLER_H

#include <QByteArray>
#include <QList>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// A controller on loopback that sends the answers of a test, for answers that the simulator does
/// not give: it registers sessions and opens connections, and hands every connected request to the
/// test. One client at a time; a new one takes the place of one that has gone.
class ScriptedController {
 public:
    /// A message-router reply to a message-router request. An empty one: no answer at all.
    typedef std::function<QByteArray(const QByteArray& request)> Service;
    /// The bytes sent instead of a whole encapsulated answer to a connected request.
    typedef std::function<QByteArray(const QByteArray& answer)> Distortion;

    /// What follows one request of any kind: the pieces in turn, each by a send of its own with the
    /// pause before the next; then, when it says so, the end of the connection.
    struct Answer {
        QList<QByteArray> pieces;
        int pauseUs = 0;
        bool hangsUp = false;
    };
    /// An answer to each whole encapsulated request, instead of what this class knows by itself.
    struct Script {
        std::function<Answer(const QByteArray& request)> answer;
    };

    explicit ScriptedController(const Service& connected);
    ScriptedController(const Service& connected, const Distortion& asSent);
    explicit ScriptedController(const Script& everything);
    ~ScriptedController();
    ScriptedController(const ScriptedController&) = delete;
    ScriptedController& operator=(const ScriptedController&) = delete;

    quint16 port() const { return tcpPort; }
    /// Whole encapsulated requests so far, of this command (0 for all).
    int countRequests(int command) const;

 private:
    void start();
    void serve();
    void serveClient(int client);
    bool answer(int client, const QByteArray& request);
    Answer answerTo(const QByteArray& request) const;
    QByteArray ownAnswer(const QByteArray& request) const;
    QByteArray connectedAnswer(const QByteArray& request) const;

    const Service connected;
    const Distortion asSent;
    const Script script;
    int listener;
    quint16 tcpPort;
    std::atomic<bool> ended;
    mutable std::mutex mutex;
    QList<int> commands;  ///< guarded by mutex
    std::thread thread;
};

#endif

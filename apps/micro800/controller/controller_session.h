#ifndef APPS_MICRO800_CONTROLLER_CONTROLLER_SESSION_H
#define APPS_MICRO800_CONTROLLER_CONTROLLER_SESSION_H

#include <QByteArray>
#include <QString>
#include <memory>

#include "apps/micro800/base/connection.h"
#include "apps/micro800/controller/trace/traced_transport.h"
#include "eip/cip/connection_manager.h"
#include "eip/cip/identity.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session.h"

/// What the controller made of one Read Tag request.
struct TagReply {
    enum class Kind {
        kValue,    ///< the tag's type and bytes
        kRefused,  ///< the controller answered with a status
        kNone      ///< no reply, or none of use
    };
    Kind kind = Kind::kNone;
    int type = 0;      ///< type code of a value
    QByteArray data;   ///< the bytes after the type
    int status = 0;    ///< general status of a refusal
    int extended = 0;  ///< its first word of additional status; 0 without one
    QString error;     ///< the client's text, "AB error: 0005H"; empty for a value
    double microseconds = 0;
    int requests = 0;  ///< that it took
};

/// What the controller answers to a request for one of its objects.
struct ObjectReply {
    bool answered = false;  ///< a message-router reply came, with any status
    int status = 0;         ///< its general status
    QByteArray data;
    QString error;  ///< the client's text; empty for status 0
};

/// A conversation with the controller itself, without the plugin: the steps in the order in which
/// they are declared. Each waits up to the connection's time-out. A step that fails leaves the
/// client's or the system's text in error(). The destructor closes what is open and says so to the
/// controller. One thread.
class ControllerSession {
 public:
    /// `trace` gets every message (traced_transport.h).
    explicit ControllerSession(const Connection& endpoint, const TraceSink& trace = TraceSink());
    ~ControllerSession();
    ControllerSession(const ControllerSession&) = delete;
    ControllerSession& operator=(const ControllerSession&) = delete;

    /// The TCP connection. `address` is the host's IPv4 address.
    bool connect(const QString& address);
    /// ListIdentity; needs the TCP connection only.
    bool identify(CipIdentity* identity);
    /// RegisterSession.
    bool registerSession();
    /// Forward Open of a class 3 connection to the controller itself, as the plugin opens it.
    bool openConnection();

    /// All of them but identify(), the host's name first. `problem` is a sentence that names host
    /// and port, what went wrong and what to do.
    bool open(QString* problem);
    /// open() without the Forward Open: enough for object(), and takes up no connection.
    bool openUnconnected(QString* problem);
    /// Ends everything, with a word to the controller where a reply can still be had.
    void close();

    /// Reads one element of a tag over the connection: one request, any type.
    /// After Kind::kNone the connection is in doubt: close() and open().
    TagReply read(const QByteArray& name);
    /// Reads `count` elements as the plugin does, in pieces where one reply is too small for them.
    TagReply readWhole(const QByteArray& name, int count);
    /// Sends a request unconnected.
    ObjectReply object(int service, const QByteArray& path, const QByteArray& data);

    QString error() const { return text; }
    /// How often the controller was asked for something since construction.
    int requests() const { return requestCount; }

 private:
    bool failed();
    TagReply exchange(const void* request, int size, cip::MallocPtr<_Eip_Item>* item);
    QString endpointText() const;

    const Connection endpoint;
    TracedTransport transport;
    std::unique_ptr<_Eip_Session, void (*)(_Eip_Session*)> session;
    _Eip_Connection* connection = nullptr;
    bool isRegistered = false;
    QString text;
    int requestCount = 0;
};

#endif

#ifndef EIP_WORKER_H
#define EIP_WORKER_H

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <QThread>
#include <memory>
#include <vector>

#include "eip/cip/logix_services.h"

class CipPlcDriverCallback;
class FlightRecorder;

/// The thread that owns the EtherNet/IP session and the class 3 connection to one controller.
///
/// Its loop serves the driver's commands, which arrive over the transport's pipes, and between
/// them reads every session entry in turn so that the value cache stays fresh.
///
/// Threads: the owner constructs, starts, stops and waits for it. The operations under "host
/// thread" may be called from there while the loop runs; everything else belongs to the loop.
/// Nothing throws.
class EipWorker : public QThread {
 public:
    /// `receiver` carries the traffic and takes the driver's commands; it is not owned and must
    /// outlive the thread. `ip` is dotted text or a host name, `timeout` is in milliseconds and
    /// applies to the connect and to every reply.
    EipWorker(CipPlcDriverCallback* receiver, const QString& ip, unsigned short port,
              unsigned long timeout);
    /// As above, with a route path (port segments) put before the message router's path in the
    /// Forward Open.
    EipWorker(CipPlcDriverCallback* receiver, const QString& ip, unsigned short port,
              unsigned long timeout, const std::vector<unsigned char>& routePath);
    /// The thread must have ended. Frees the session and connection records without a word to the
    /// controller.
    virtual ~EipWorker();

    // ---- host thread ---------------------------------------------------------------------

    /// Sets the stop flag; the loop ends at its next test. The longest wait until then is one
    /// connect or one request with its time-outs. An open connection is closed with a farewell of
    /// at most 50 ms.
    void stop();

    /// The text of the last failure; kept when the flag is cleared.
    QString errStr() const;
    /// True while the connection to the controller is in trouble.
    bool hasErr() const;

    /// Looks a cached value up; see LgxDataCache.
    bool cacheValue(const QString& key, QByteArray& out);
    bool cacheValue(const QString& key, QByteArray& out, int offset);

    /// True when the pipes to this worker exist (they need free descriptors).
    bool pipesOpened() const;
    /// Sends one line on the client end of a pipe, after discarding all unread bytes there.
    /// Returns the number of bytes sent.
    int sendCmd(int pipe, const char* line, int length);
    /// Receives one line from the client end of a pipe within its time-out. `*received` gets the
    /// number of bytes, at most `size`; the text is not terminated. True when it ends in a line
    /// feed.
    bool recvRsp(int pipe, char* buffer, int size, int* received);

    // ---- worker thread -------------------------------------------------------------------

    /// Connects, registers a session and opens the connection. On failure the error is set and
    /// nothing stays open.
    bool openConnection();
    /// Closes connection, session and socket, informing a controller that still listens.
    void closeConnection();
    /// True only while both the session record and the connection record exist.
    bool connectionIsOpened() const;

    /// Stores the text and raises the flag.
    void setErrStr(const QString& text);
    /// Clears the flag and leaves the text.
    void clearErr();

    /// Replaces the receiver; only before the thread starts.
    void setCPDC(CipPlcDriverCallback* receiver);
    /// The recorder of the worker and its transport; null, as at first, for none. Not owned.
    /// Only before the thread starts.
    void setRecorder(FlightRecorder* recorder);
    /// Waits through the transport, which keeps serving the pipes; a command cuts it short, and
    /// one that is already pending lets it return at once.
    void sleep(unsigned long ms);

 protected:
    void run();

    /// Serve the pending command of their kind. `broken` (may be null) shows whether the
    /// connection was found broken; the name (may be null) is the tag whose value was read or
    /// refreshed, which the rest of the polling pass skips. True when the driver got what it
    /// asked for.
    virtual bool processDriverReadCmd(bool* broken, QString* servedName);
    virtual bool processDriverReadArrayElementCmd(bool* broken, QString* servedName);
    /// The base worker has no write service: the command slot of its receiver is empty.
    virtual bool processDriverWriteCmd(QString* writtenName, bool* broken);
    bool processDriverIpSettingChangedCmd();

    /// Reads the controller and stores the value in the cache. When the controller refuses the tag,
    /// or its answer cannot be decoded, the entry is withheld.
    bool updateCache(const QString& name, int count, bool* broken);
    /// Reads the controller; empty on failure. Both take as many requests as the tag's size needs,
    /// one after the other, and serve nothing in between.
    QByteArray readFromPLC(const QString& name, int count, bool* broken);
    /// Writes `count` elements of `data`; `data` contains at least count * element size bytes (the
    /// characters for a short string). The worker sends data beyond one request in pieces; when
    /// a piece after the first fails, the error text says which elements are written.
    bool writeToPLC(const QString& name, _LGX_Data_Type type, QByteArray& data,
                    unsigned short count, bool* broken);

    bool sessionReadCmdHashContains(const QString& name) const;
    /// The element count of a session entry; 0 when the name is none.
    int sessionReadCmdHashValue(const QString& name) const;

    /// Takes the pending session list over, and empties the cache; false when it does not parse.
    bool takeSessionList();
    /// One pass over the session entries. Ends early when the connection breaks, when the list or
    /// the controller's address changes, and when the worker is to stop.
    void pollSession();

    /// Opens the connection when there is none, or when the one there is has been idle for so
    /// long that the controller has dropped it.
    bool ensureConnection();

    /// The receiver given at construction.
    CipPlcDriverCallback* receiver() const;

 private:
    struct Served;
    struct ArrayRequest;

    void seedOriginator();
    bool connectAndOpen();
    bool openingFailed(const QString& reason);
    void noteOpened();
    void noteLost(const QString& reason);
    void noteSessionList();
    void noteAddress();
    void notePass(qint64 startedUs);
    bool dropSession();
    void runOneRound();
    void recoverFromNoMemory();
    void sayFarewell();
    bool hasDriverCommand() const;
    bool serveOneDriverCommand(Served* served);
    bool serveDuringPass(QSet<QString>* done);
    bool pollEntry(const QString& name, int count, QSet<QString>* done);
    bool finishPoll(const QString& name, bool broken);
    LgxProgress readInOneGo(LgxTagRead* read);
    bool storeInCache(const QString& name, int count, LgxProgress progress, LgxTagRead* read,
                      bool* broken);
    QString entryKeyOf(const QString& name) const;
    bool takeArrayRequest(ArrayRequest* request);
    bool arraySliceFromCache(const ArrayRequest& request, QByteArray* value);
    bool readArrayElements(const ArrayRequest& request, QByteArray* value, QString* refreshed,
                           QString* failure, bool* broken);
    bool isPolled(const QString& name, const QString& key) const;
    bool finishFailedRequest(const QString& cacheKey, bool* broken);
    void answerRead(int pipe, unsigned short tid, const QByteArray& value);
    void answerArrayElement(int pipe, unsigned short tid, const QByteArray& value);

    struct Impl;
    std::unique_ptr<Impl> d;
};

#endif

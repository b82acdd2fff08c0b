#ifndef DRIVERS_AB_MICRO800_ETHERNET_AB_MICRO800_ETHERNET_H
#define DRIVERS_AB_MICRO800_ETHERNET_AB_MICRO800_ETHERNET_H

#include <sys/types.h>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QRegExp>
#include <QString>
#include <QVariant>
#include <memory>
#include <vector>

#include "common/qt_compat.h"
#include "drivers/ab_micro800_ethernet/lgx_array_def.h"
#include "eip/cip/logix_services.h"
#include "runtime/driver_interface.h"

class FlightRecorder;
class LgxReadCmd;
class Micro800Worker;

/// The driver that the runtime loads: reads and writes the tags of one Micro800 controller.
///
/// One caller at a time: the runtime calls `read`, `write`, `setSessionCommand` and the setting
/// changes of one object from one thread. The first read or write loads the array declarations
/// from the project database and starts the worker thread; the destructor stops it.
/// Nothing throws: an operation over which memory runs out fails, and the next one tries again.
/// Failures set the error flag and the text for the operator.
class DriverABMicro800Eth : public QObject, public DriverInterface {
    Q_OBJECT
    Q_INTERFACES(DriverInterface)
    Q_PROPERTY(QVariantMap counters READ counters)
    MICRO800_PLUGIN_METADATA("com.tarvelon.drivers.DriverInterface/1.1")

 public:
    DriverABMicro800Eth();
    /// Stops the worker and waits for its thread, without a limit: at most one connect or one
    /// request with its time-outs. Then waits up to a second for the last recording. Also safe in a
    /// handler that exit() runs, even when other objects are already destroyed, and in a process
    /// that was forked: what its parent has running is left alone.
    virtual ~DriverABMicro800Eth();

    /// The object that the plugin loader returns, a new one when the last was deleted; null when
    /// there is no memory for it.
    static QObject* pluginInstance();

    // ---- identity and defaults (identity.cpp) ----------------------------------------------
    int totalSize();
    bool initialize(AbstractDeviceInterface* device);
    bool validation(const QString& text);
    QString name();
    QString vender();
    QString getVersionNumber();
    DeviceSetting* getDefaultSerialDeviceSetting();
    DriverSetting* getDefaultDriverSetting();
    QString getStringBasedDefaultDriverSetting();
    int supportedCommunicationFlags();
    void setDebugMode(bool on);
    int getBlockAccessSize();
    int getBitBlockAccessSize();
    bool hasError();
    QString getLastError();
    QObject* getThisObject();
    bool isSupportSessionCommand();

    // ---- read path (read_path.cpp) ---------------------------------------------------------
    /// The value of one tag, command.getDataSize() bytes, little-endian; empty on failure.
    QByteArray read(AbstractDeviceInterface* device, const CommunicatorCommand& command);
    /// One attempt: from the cache, else from the controller.
    QByteArray readData(const CommunicatorCommand& command);
    /// Asks the worker for `count` elements of the tag `name`.
    QByteArray directRead(const QString& name, int count);
    /// Asks the worker for elements of a declared array; `indexText` includes its brackets.
    QByteArray directReadArrayElements(const QString& arrayName, const QString& indexText,
                                       _LGX_Data_Type type, int elementCount, int arraySize,
                                       int byteOffset);
    /// Receives one answer line from client pipe 0; false when none came in time.
    bool recvRspFromWorker();
    void resetRspBuf();
    /// Puts "read ADDRESS> " before the error text, once.
    void appendCmdToReadCommError(int stationNumber, const CommunicatorCommand& command);

    // ---- write path (write_path.cpp) -------------------------------------------------------
    /// Sets one tag; true when the worker confirmed it. Never repeated by itself.
    bool write(AbstractDeviceInterface* device, const CommunicatorCommand& command,
               const QByteArray& value);
    bool directWrite(const QString& name, _LGX_Data_Type type, const QByteArray& data);
    void appendCmdToWriteCommError(int stationNumber, const CommunicatorCommand& command);

    // ---- session commands (session_commands.cpp) --------------------------------------------
    /// Hands the list to the worker, or keeps it until there is one. An empty list is ignored.
    void setSessionCommand(QList<CommunicatorCommand> list);
    /// Does nothing: a list is only ever replaced.
    void clearSessionCommand();
    bool sendSetSessionCmd(QList<CommunicatorCommand>& list);

    // ---- start-up and settings (start_up.cpp) -----------------------------------------------
    /// Starts the worker when there is none and delivers what was kept for it.
    bool initWorker(AbstractDeviceInterface* device);
    bool deviceSettingChanged(const DeviceSetting* setting);
    bool notifyWorkerDeviceSettingChanged(const QString& ip, unsigned short port);
    /// The next transaction id of a client pipe (0 or 1): 1, 2, ... 65535, 0, 1, ...
    unsigned short nextTID(int pipe);
    unsigned short tid(int pipe) const;

    // ---- tag addresses (tag_address.cpp) ----------------------------------------------------
    /// Position of the first "0:", -1 when there is none.
    int findNamePos(const QString& address) const;
    /// The text after the "0:" at `pos`, in upper case.
    QString varNameFrom(const QString& address, int pos) const;
    /// The prefix symbol with its "0", as written.
    QString prefixSymbolFrom(const QString& address, int pos) const;
    /// The tag name of a plain address; null when there is no "0:".
    QString parseVarName(const QString& address) const;
    /// The type of exactly this symbol (upper case); 0 for any other.
    _LGX_Data_Type prefixSymbolToType(const QString& symbol) const;
    /// Element size in bytes by the symbol's beginning, without regard to case; -1 if unknown.
    int prefixSymbolToDataSize(const QString& symbol) const;
    /// Elements that `byteCount` bytes fill, rounded up; 1 for a type without an element size.
    int numberFrom(int byteCount, _LGX_Data_Type type) const;
    /// Whether the address names an array element; the captures are then read below.
    bool isArray(const QString& address);
    QString arrayPrefixSymbol() const;
    QString arrayElementName() const;
    QString arrayName() const;
    QString arrayIndex() const;
    /// The same on a matcher of its own, for the session path.
    bool isArray1(const QString& address);
    QString arrayPrefixSymbol1() const;
    QString arrayElementName1() const;
    QString arrayName1() const;

    // ---- array declarations (array_definitions.cpp) -----------------------------------------
    bool createDBConnection();
    bool readDB(AbstractDeviceInterface* device);
    bool initArrayDefMap(int connectorId);
    /// Parses "lower..upper" ranges; on failure `dims` contains the number of parts all the same.
    bool arrayDefFromStr(const QString& ranges, LgxArrayDef& def) const;
    bool arrayDefined(const QString& name) const;
    int arraySize(const QString& name) const;
    int arrayElementByteOffset(const QString& name, const QString& indexes, int elementSize) const;
    /// Byte offset of an element, row by row; -1 when there is none. No bounds are checked.
    int strToValueOffset(const QString& indexes, const LgxArrayDef& def, int elementSize) const;

    // ---- counters (access_record.cpp) -------------------------------------------------------
    /// What the driver has done so far: the property "counters" of the object, by name. Any
    /// thread, while the object lives.
    QVariantMap counters() const;

 private:
    // ---- recorder (access_record.cpp) -------------------------------------------------------
    // In the header, so that an access that the cache serves costs two comparisons.
    void beginAccess(const char* verb, const CommunicatorCommand& command) {
        access = &command;
        accessVerb = verb;
        askedAt = 0;
        if (!recorderStarted) {
            startRecorder();
        }
    }
    void startRecorder();
    QVariantMap allCounters() const;
    void noteAsked();
    /// `bytes` of a value that was read or written, -1 without one.
    void endAccess(int bytes) {
        if (askedAt != 0 || commError) {
            tellAccess(bytes);
        }
        access = nullptr;
    }
    void tellAccess(int bytes);

    /// What an address comes to, worked out at its first read and kept.
    struct ReadTarget {
        int dataSize;  ///< the command size that this was worked out for
        bool isElement;
        bool isDeclared;
        bool isValid;       ///< every index fits
        QString name;       ///< plain tag's name, or the element's text such as GRID[2,3]
        QString arrayName;  ///< of a declared array
        QString indexText;  ///< with brackets
        _LGX_Data_Type type;
        int elementCount;
        int arraySize;
        int byteOffset;
        QString key;       ///< cache key of the value or of the whole declared array
        QByteArray value;  ///< memory for what the cache has, shared with the host
    };

    class EndWithTheProcess;
    static void endBeforeTheDatabase();
    static void endBeforeTheThread();
    static void endLivingDrivers();
    void becomeLiving();
    void stopBeingLiving();
    void stopWorker();
    void closeDatabase();

    void clearCommError();
    void setCommError(const QString& text);
    void noMemoryFor(const char* verb, const CommunicatorCommand& command);
    bool cutBehindAnswer(unsigned short id);
    void prefixCommError(const char* verb, const CommunicatorCommand& command);
    bool prepare(AbstractDeviceInterface* device, const char* verb,
                 const CommunicatorCommand& command);
    /// What one attempt of a read came to; kNoLine: the worker said nothing in time.
    enum Attempt { kValue, kFailure, kNoLine };
    Attempt readAttempt(const CommunicatorCommand& command, QByteArray* data);
    QByteArray readWithRetries(AbstractDeviceInterface* device, const CommunicatorCommand& command);
    bool writeOnce(AbstractDeviceInterface* device, const CommunicatorCommand& command,
                   const QByteArray& value);
    bool cachedValue(const ReadTarget& target, QByteArray* value);
    bool readCached(ReadTarget* target, QByteArray* data);
    QByteArray readUncached(const ReadTarget& target);
    QByteArray elementToWrite(const QByteArray& value, QString* name, _LGX_Data_Type* type) const;
    QByteArray plainToWrite(const QString& address, const QByteArray& value, QString* name,
                            _LGX_Data_Type* type) const;
    ReadTarget& readTarget(const CommunicatorCommand& command);
    ReadTarget makeReadTarget(const CommunicatorCommand& command);
    bool sendToWorker(const char* line, int length);
    typedef bool (*AnswerCheck)(const char* line, unsigned short id, QString& error);
    typedef QByteArray (*AnswerDecoder)(const char* line, unsigned short id, QString& error);
    /// Sends the line in the command buffer on pipe 0 and looks at the answer with one of the pipe
    /// protocol's functions. False or empty on failure; what a failure answer says becomes the
    /// error.
    bool workerConfirms(int length, AnswerCheck check);
    QByteArray workersValue(int length, AnswerDecoder decode);
    void awaitOutstandingAnswer();
    bool sessionEntryFrom(const CommunicatorCommand& command, LgxReadCmd* entry);
    bool deliverSession(const QList<LgxReadCmd>& entries);

    DriverABMicro800Eth* nextLiving;  ///< in the list of all, guarded by its mutex
    bool commError;
    bool debugMode;
    bool dbOpen;
    bool connectionListed;  ///< this driver's connection is in Qt's list
    bool arrayDefsLoaded;
    QRegExp elementMatcher;
    QRegExp elementMatcher1;
    QRegExp rangeMatcher;
    QString lastError;
    QList<CommunicatorCommand> pendingSessionCommands;
    QString connectionName;
    QHash<QString, LgxArrayDef> arrayDefs;
    QHash<QString, _LGX_Data_Type> prefixTypes;
    QHash<QString, ReadTarget> readTargets;
    int rspLength;
    unsigned short sentId;   ///< of the last line on pipe 0
    bool answerOutstanding;  ///< a late answer came in place of the one to that line
    std::unique_ptr<Micro800Worker> worker;
    pid_t workerProcess;  ///< the process that started it
    std::vector<char> cmdBuf;
    std::vector<char> rspBuf;
    unsigned short transactionIds[2];
    QMutex sessionMutex;
    QString pendingIP;
    unsigned short pendingPort;
    const QString noMemory;                    ///< a text that is there when it is needed
    std::unique_ptr<FlightRecorder> recorder;  ///< outlives the worker
    bool recorderStarted;                      ///< its writer thread was asked for
    const CommunicatorCommand* access;         ///< of the call that is under way
    const char* accessVerb;
    qint64 askedAt;  ///< when it asked the worker, monotonic microseconds; 0: it did not
};

#endif

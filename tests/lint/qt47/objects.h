#ifndef LINT_QT47_OBJECTS_H
#define LINT_QT47_OBJECTS_H

// QObject, the plugin macros, QPointer, threads, time, streams, files, variants and SQL.

#include "containers.h"

struct QMetaObject;
class QObject;

#define QT_TR_FUNCTIONS static QString tr(const char* s, const char* c = 0);
#define Q_OBJECT                                   \
 public:                                           \
    static const QMetaObject staticMetaObject;     \
    virtual const QMetaObject* metaObject() const; \
    virtual void* qt_metacast(const char*);        \
    virtual int qt_metacall(int, int, void**);     \
    QT_TR_FUNCTIONS                                \
 private:
#define Q_INTERFACES(x)
#define Q_PROPERTY(text)
#define Q_CLASSINFO(name, value)
#define Q_SIGNALS protected
#define Q_SLOTS
#define slots Q_SLOTS
#define signals protected
#define emit
#define SIGNAL(a) "2" #a
#define SLOT(a) "1" #a
#define Q_EXPORT_PLUGIN2(name, Class)
#define Q_DECLARE_INTERFACE(Interface, id)                        \
    template <>                                                   \
    inline const char* qobject_interface_iid<Interface*>() {      \
        return id;                                                \
    }                                                             \
    template <>                                                   \
    inline Interface* qobject_cast<Interface*>(QObject * object); \
    template <>                                                   \
    inline Interface* qobject_cast<Interface*>(const QObject* object);

template <typename T>
const char* qobject_interface_iid();
template <typename T>
T qobject_cast(QObject* object);
template <typename T>
T qobject_cast(const QObject* object);

class QEvent;
class QThread;

class QObject {
 public:
    static const QMetaObject staticMetaObject;
    explicit QObject(QObject* parent = 0);
    virtual ~QObject();
    virtual const QMetaObject* metaObject() const;
    virtual void* qt_metacast(const char*);
    virtual int qt_metacall(int, int, void**);
    virtual bool event(QEvent*);
    virtual bool eventFilter(QObject*, QEvent*);
    QString objectName() const;
    void setObjectName(const QString& name);
    QThread* thread() const;
    void moveToThread(QThread* thread);
    static bool connect(const QObject* sender, const char* signal, const QObject* receiver,
                        const char* member, Qt::ConnectionType = Qt::AutoConnection);
    static bool disconnect(const QObject* sender, const char* signal, const QObject* receiver,
                           const char* member);
    void setParent(QObject*);
    QObject* parent() const;
    bool inherits(const char* className) const;
    void deleteLater();

 private:
    QObject(const QObject&);
    QObject& operator=(const QObject&);
};

template <typename T>
class QPointer {
 public:
    QPointer();
    QPointer(T* p);
    QPointer(const QPointer& p);
    ~QPointer();
    QPointer& operator=(const QPointer& p);
    QPointer& operator=(T* p);
    bool isNull() const;
    T* operator->() const;
    T& operator*() const;
    operator T*() const;
    T* data() const;
};

class QMutex {
 public:
    enum RecursionMode { NonRecursive, Recursive };
    explicit QMutex(RecursionMode mode = NonRecursive);
    ~QMutex();
    void lock();
    bool tryLock();
    bool tryLock(int timeout);
    void unlock();

 private:
    QMutex(const QMutex&);
    QMutex& operator=(const QMutex&);
};

class QMutexLocker {
 public:
    explicit QMutexLocker(QMutex* m);
    ~QMutexLocker();
    void unlock();
    void relock();

 private:
    QMutexLocker(const QMutexLocker&);
    QMutexLocker& operator=(const QMutexLocker&);
};

class QThread : public QObject {
    Q_OBJECT
 public:
    enum Priority {
        IdlePriority,
        LowestPriority,
        LowPriority,
        NormalPriority,
        HighPriority,
        HighestPriority,
        TimeCriticalPriority,
        InheritPriority
    };
    static QThread* currentThread();
    explicit QThread(QObject* parent = 0);
    ~QThread();
    void setPriority(Priority priority);
    bool isFinished() const;
    bool isRunning() const;
    void setStackSize(uint stackSize);
    void start(Priority = InheritPriority);
    void terminate();
    void quit();
    bool wait(unsigned long time = (~0ul));

 protected:
    virtual void run();
    int exec();
    static void sleep(unsigned long);
    static void msleep(unsigned long);
    static void usleep(unsigned long);
};

class QTime {
 public:
    QTime();
    QTime(int h, int m, int s = 0, int ms = 0);
    bool isNull() const;
    bool isValid() const;
    int hour() const;
    int minute() const;
    int second() const;
    int msec() const;
    QString toString(const QString& format) const;
    int secsTo(const QTime&) const;
    int msecsTo(const QTime&) const;
    static QTime currentTime();
    void start();
    int restart();
    int elapsed() const;
};

class QElapsedTimer {
 public:
    void start();
    qint64 restart();
    void invalidate();
    bool isValid() const;
    qint64 elapsed() const;
    bool hasExpired(qint64 timeout) const;
};

class QIODevice : public QObject {
    Q_OBJECT
 public:
    enum OpenModeFlag {
        NotOpen = 0,
        ReadOnly = 1,
        WriteOnly = 2,
        ReadWrite = 3,
        Append = 4,
        Truncate = 8,
        Text = 16,
        Unbuffered = 32
    };
    typedef QFlags<OpenModeFlag> OpenMode;
    virtual bool isSequential() const;
    virtual bool open(OpenMode mode);
    virtual void close();
    virtual qint64 pos() const;
    virtual qint64 size() const;
    virtual bool atEnd() const;
    virtual qint64 bytesAvailable() const;
    qint64 read(char* data, qint64 maxlen);
    QByteArray read(qint64 maxlen);
    QByteArray readAll();
    qint64 write(const char* data, qint64 len);
    qint64 write(const QByteArray& data);
};

class QDataStream {
 public:
    enum Version { Qt_4_0 = 7, Qt_4_5 = 11, Qt_4_6 = 12, Qt_4_7 = Qt_4_6 };
    enum ByteOrder { BigEndian, LittleEndian };
    enum Status { Ok, ReadPastEnd, ReadCorruptData };
    QDataStream();
    explicit QDataStream(QIODevice*);
    QDataStream(QByteArray*, QIODevice::OpenMode flags);
    QDataStream(const QByteArray&);
    virtual ~QDataStream();
    QIODevice* device() const;
    bool atEnd() const;
    Status status() const;
    void setStatus(Status status);
    void resetStatus();
    ByteOrder byteOrder() const;
    void setByteOrder(ByteOrder);
    int version() const;
    void setVersion(int);
    QDataStream& operator>>(qint8& i);
    QDataStream& operator>>(quint8& i);
    QDataStream& operator>>(qint16& i);
    QDataStream& operator>>(quint16& i);
    QDataStream& operator>>(qint32& i);
    QDataStream& operator>>(quint32& i);
    QDataStream& operator>>(qint64& i);
    QDataStream& operator>>(quint64& i);
    QDataStream& operator>>(bool& i);
    QDataStream& operator>>(float& f);
    QDataStream& operator>>(double& f);
    QDataStream& operator<<(qint8 i);
    QDataStream& operator<<(quint8 i);
    QDataStream& operator<<(qint16 i);
    QDataStream& operator<<(quint16 i);
    QDataStream& operator<<(qint32 i);
    QDataStream& operator<<(quint32 i);
    QDataStream& operator<<(qint64 i);
    QDataStream& operator<<(quint64 i);
    QDataStream& operator<<(bool i);
    QDataStream& operator<<(float f);
    QDataStream& operator<<(double f);
    int readRawData(char*, int len);
    int writeRawData(const char*, int len);
    int skipRawData(int len);
};
template <typename T>
QDataStream& operator<<(QDataStream& s, const QList<T>& l);
template <typename T>
QDataStream& operator>>(QDataStream& s, QList<T>& l);
template <typename T1, typename T2>
QDataStream& operator<<(QDataStream& s, const QPair<T1, T2>& p);
template <typename T1, typename T2>
QDataStream& operator>>(QDataStream& s, QPair<T1, T2>& p);

class QDebug {
 public:
    QDebug(QtMsgType t);
    QDebug(const QDebug& o);
    QDebug& operator=(const QDebug& other);
    ~QDebug();
    QDebug& space();
    QDebug& nospace();
    QDebug& maybeSpace();
    QDebug& operator<<(QChar t);
    QDebug& operator<<(bool t);
    QDebug& operator<<(char t);
    QDebug& operator<<(signed short t);
    QDebug& operator<<(unsigned short t);
    QDebug& operator<<(signed int t);
    QDebug& operator<<(unsigned int t);
    QDebug& operator<<(signed long t);
    QDebug& operator<<(unsigned long t);
    QDebug& operator<<(qint64 t);
    QDebug& operator<<(quint64 t);
    QDebug& operator<<(float t);
    QDebug& operator<<(double t);
    QDebug& operator<<(const char* t);
    QDebug& operator<<(const QString& t);
    QDebug& operator<<(const QLatin1String& t);
    QDebug& operator<<(const QByteArray& t);
    QDebug& operator<<(const void* t);
};

class QCoreApplication : public QObject {
    Q_OBJECT
 public:
    static QCoreApplication* instance();
    static QString applicationDirPath();
    static QString applicationFilePath();
    static QString applicationName();
    static QStringList arguments();
    static qint64 applicationPid();
};

class QFile : public QIODevice {
    Q_OBJECT
 public:
    QFile();
    QFile(const QString& name);
    bool exists() const;
    static bool exists(const QString& fileName);
    bool open(OpenMode flags);
    QString fileName() const;
    static bool remove(const QString& fileName);
    static QByteArray encodeName(const QString& fileName);
    static QString decodeName(const QByteArray& localFileName);
};

class QFileInfo {
 public:
    QFileInfo();
    QFileInfo(const QString& file);
    bool exists() const;
    QString filePath() const;
    QString absoluteFilePath() const;
    QString fileName() const;
    bool isFile() const;
    bool isDir() const;
    qint64 size() const;
};

class QDir {
 public:
    enum Filter { Dirs = 1, Files = 2, Hidden = 0x100 };
    typedef QFlags<Filter> Filters;
    enum SortFlag { Name = 0, Time = 1, NoSort = -1 };
    typedef QFlags<SortFlag> SortFlags;
    QDir(const QString& path = QString());
    QString path() const;
    QString absolutePath() const;
    QString canonicalPath() const;
    QString dirName() const;
    QString filePath(const QString& fileName) const;
    QString absoluteFilePath(const QString& fileName) const;
    bool cd(const QString& dirName);
    bool cdUp();
    bool exists() const;
    bool exists(const QString& name) const;
    QStringList entryList(Filters filters, SortFlags sort = NoSort) const;
    QStringList entryList(const QStringList& nameFilters, Filters filters,
                          SortFlags sort = NoSort) const;
    bool mkpath(const QString& dirPath) const;
    static QString currentPath();
    static QDir current();
    static QString cleanPath(const QString& path);
};

class QVariant;
typedef QMap<QString, QVariant> QVariantMap;

class QVariant {
 public:
    QVariant();
    QVariant(int i);
    QVariant(uint i);
    QVariant(qlonglong i);
    QVariant(bool b);
    QVariant(double d);
    QVariant(const QVariantMap& map);
    QVariant(const char* s);
    QVariant(const QByteArray& a);
    QVariant(const QString& s);
    QVariant(const QVariant& other);
    ~QVariant();
    QVariant& operator=(const QVariant& other);
    bool isValid() const;
    bool isNull() const;
    int toInt(bool* ok = 0) const;
    uint toUInt(bool* ok = 0) const;
    qlonglong toLongLong(bool* ok = 0) const;
    bool toBool() const;
    double toDouble(bool* ok = 0) const;
    QByteArray toByteArray() const;
    QString toString() const;
};

class QSqlError {
 public:
    QString driverText() const;
    QString databaseText() const;
    QString text() const;
    bool isValid() const;
};

class QSqlDatabase {
 public:
    QSqlDatabase();
    QSqlDatabase(const QSqlDatabase& other);
    ~QSqlDatabase();
    QSqlDatabase& operator=(const QSqlDatabase& other);
    bool open();
    void close();
    bool isOpen() const;
    bool isOpenError() const;
    bool isValid() const;
    QStringList tables() const;
    QSqlError lastError() const;
    void setDatabaseName(const QString& name);
    QString databaseName() const;
    QString connectionName() const;
    void setConnectOptions(const QString& options = QString());
    static QSqlDatabase addDatabase(
        const QString& type,
        const QString& connectionName = QLatin1String("qt_sql_default_connection"));
    static QSqlDatabase database(
        const QString& connectionName = QLatin1String("qt_sql_default_connection"),
        bool open = true);
    static void removeDatabase(const QString& connectionName);
    static bool contains(
        const QString& connectionName = QLatin1String("qt_sql_default_connection"));
    static QStringList connectionNames();
    static QStringList drivers();
    static bool isDriverAvailable(const QString& name);
};

class QSqlQuery {
 public:
    explicit QSqlQuery(const QString& query = QString(), QSqlDatabase db = QSqlDatabase());
    explicit QSqlQuery(QSqlDatabase db);
    QSqlQuery(const QSqlQuery& other);
    ~QSqlQuery();
    QSqlQuery& operator=(const QSqlQuery& other);
    bool isValid() const;
    bool isActive() const;
    bool isNull(int field) const;
    bool isSelect() const;
    int at() const;
    QSqlError lastError() const;
    int size() const;
    void setForwardOnly(bool forward);
    bool exec(const QString& query);
    bool exec();
    bool prepare(const QString& query);
    void bindValue(const QString& placeholder, const QVariant& val);
    void bindValue(int pos, const QVariant& val);
    void addBindValue(const QVariant& val);
    QVariant value(int i) const;
    bool first();
    bool next();
    bool previous();
    bool last();
    bool seek(int i, bool relative = false);
    void clear();
    void finish();
};

template <typename T>
T qFromLittleEndian(const uchar* src);
template <typename T>
T qFromLittleEndian(T src);
template <typename T>
T qFromBigEndian(const uchar* src);
template <typename T>
T qFromBigEndian(T src);
template <typename T>
void qToLittleEndian(T src, uchar* dest);
template <typename T>
T qToLittleEndian(T src);
template <typename T>
void qToBigEndian(T src, uchar* dest);
template <typename T>
T qToBigEndian(T src);

#endif

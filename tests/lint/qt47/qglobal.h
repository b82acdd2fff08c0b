#ifndef LINT_QT47_QGLOBAL_H
#define LINT_QT47_QGLOBAL_H

// Declarations of what the Qt 4.7 reference lists, as far as the product uses it, so that a
// compiler can show whether the product keeps to it. Nothing is defined and nothing links.
//
// A call that does not compile against these headers is either one that Qt 4.7 lacks, or one to
// look up in its reference and to add here.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#define QT_VERSION 0x040703
#define QT_VERSION_STR "4.7.3"
#define QT_VERSION_CHECK(major, minor, patch) ((major << 16) | (minor << 8) | (patch))

typedef signed char qint8;
typedef unsigned char quint8;
typedef short qint16;
typedef unsigned short quint16;
typedef int qint32;
typedef unsigned int quint32;
typedef long long qint64;
typedef unsigned long long quint64;
typedef qint64 qlonglong;
typedef quint64 qulonglong;
typedef double qreal;
typedef unsigned char uchar;
typedef unsigned short ushort;
typedef unsigned int uint;
typedef unsigned long ulong;

#define Q_INT64_C(c) static_cast<long long>(c##LL)
#define Q_UINT64_C(c) static_cast<unsigned long long>(c##ULL)
#define Q_DECL_EXPORT __attribute__((visibility("default")))
#define Q_DECL_IMPORT __attribute__((visibility("default")))
#define Q_UNUSED(x) (void)x;
#define Q_ASSERT(condition) ((void)0)
#define Q_ASSERT_X(condition, where, what) ((void)0)
#define Q_CHECK_PTR(pointer) ((void)0)
#define Q_DISABLE_COPY(Class) \
    Class(const Class&);      \
    Class& operator=(const Class&);
#define Q_FOREVER for (;;)
#define forever Q_FOREVER
#define Q_BIG_ENDIAN 4321
#define Q_LITTLE_ENDIAN 1234
#define Q_BYTE_ORDER Q_LITTLE_ENDIAN
#define Q_OS_LINUX
#define Q_OS_UNIX
#define Q_CC_GNU
#define Q_WS_QWS

#define QT_TR_NOOP(x) (x)
#define QT_TRANSLATE_NOOP(scope, x) (x)

template <typename T>
const T& qMin(const T& a, const T& b) {
    return a < b ? a : b;
}
template <typename T>
const T& qMax(const T& a, const T& b) {
    return a < b ? b : a;
}
template <typename T>
const T& qBound(const T& low, const T& value, const T& high) {
    return qMax(low, qMin(high, value));
}
template <typename T>
T qAbs(const T& t) {
    return t >= 0 ? t : -t;
}
template <typename T>
void qSwap(T& a, T& b) {
    T c = a;
    a = b;
    b = c;
}
int qRound(qreal value);
qint64 qRound64(qreal value);
bool qFuzzyCompare(double a, double b);
bool qFuzzyCompare(float a, float b);
int qrand();
void qsrand(uint seed);
class QByteArray;
QByteArray qgetenv(const char* name);
bool qputenv(const char* name, const QByteArray& value);

class QDebug;
QDebug qDebug();
QDebug qWarning();
QDebug qCritical();
void qDebug(const char* format, ...) __attribute__((format(printf, 1, 2)));
void qWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void qCritical(const char* format, ...) __attribute__((format(printf, 1, 2)));
void qFatal(const char* format, ...) __attribute__((format(printf, 1, 2)));
enum QtMsgType { QtDebugMsg, QtWarningMsg, QtCriticalMsg, QtFatalMsg };
typedef void (*QtMsgHandler)(QtMsgType, const char*);
QtMsgHandler qInstallMsgHandler(QtMsgHandler handler);

template <typename Enum>
class QFlags {
 public:
    QFlags(Enum flag);
    QFlags operator|(Enum flag) const;
    operator int() const;
};

namespace Qt {
enum CaseSensitivity { CaseInsensitive, CaseSensitive };
enum ConnectionType {
    AutoConnection,
    DirectConnection,
    QueuedConnection,
    AutoCompatConnection,
    BlockingQueuedConnection,
    UniqueConnection = 0x80
};
}  // namespace Qt

template <typename T>
class QTypeInfo;
enum { Q_COMPLEX_TYPE = 0, Q_PRIMITIVE_TYPE = 1, Q_STATIC_TYPE = 0, Q_MOVABLE_TYPE = 2 };
#define Q_DECLARE_TYPEINFO(Type, Flags)

#endif

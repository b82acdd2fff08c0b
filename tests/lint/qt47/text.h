#ifndef LINT_QT47_TEXT_H
#define LINT_QT47_TEXT_H

// QChar, QLatin1Char, QLatin1String, QByteArray, QString, QStringList, QRegExp.

#include <string>

#include "qglobal.h"

template <typename T>
class QList;
class QDataStream;
class QRegExp;
class QStringList;
class QVariant;

struct QLatin1Char {
    explicit QLatin1Char(char c);
    const char toLatin1() const;
    const ushort unicode() const;
};

class QChar {
 public:
    enum SpecialCharacter { Null = 0, Nbsp = 0xa0, ReplacementCharacter = 0xfffd };
    QChar();
    QChar(char c);
    QChar(uchar c);
    QChar(QLatin1Char c);
    QChar(uchar c, uchar r);
    QChar(ushort rc);
    QChar(short rc);
    QChar(uint rc);
    QChar(int rc);
    QChar(SpecialCharacter c);
    bool isNull() const;
    bool isPrint() const;
    bool isPunct() const;
    bool isSpace() const;
    bool isLetter() const;
    bool isNumber() const;
    bool isLetterOrNumber() const;
    bool isDigit() const;
    bool isLower() const;
    bool isUpper() const;
    int digitValue() const;
    QChar toLower() const;
    QChar toUpper() const;
    char toAscii() const;
    char toLatin1() const;
    ushort unicode() const;
    ushort& unicode();
    uchar cell() const;
    uchar row() const;
    static QChar fromAscii(char c);
    static QChar fromLatin1(char c);
};
bool operator==(QChar a, QChar b);
bool operator!=(QChar a, QChar b);
bool operator<=(QChar a, QChar b);
bool operator>=(QChar a, QChar b);
bool operator<(QChar a, QChar b);
bool operator>(QChar a, QChar b);

class QString;

class QLatin1String {
 public:
    explicit QLatin1String(const char* s);
    const char* latin1() const;
    bool operator==(const QString& s) const;
    bool operator!=(const QString& s) const;
};

char* qstrdup(const char*);
uint qstrlen(const char* str);
uint qstrnlen(const char* str, uint maxlen);
char* qstrcpy(char* dst, const char* src);
char* qstrncpy(char* dst, const char* src, uint len);
int qstrcmp(const char* str1, const char* str2);
int qstrncmp(const char* str1, const char* str2, uint len);
int qstricmp(const char*, const char*);
int qstrnicmp(const char*, const char*, uint len);
int qsnprintf(char* str, size_t n, const char* fmt, ...);
quint16 qChecksum(const char* s, uint len);

class QByteRef {
 public:
    operator char() const;
    QByteRef& operator=(char c);
};

class QByteArray {
 public:
    typedef char* iterator;
    typedef const char* const_iterator;
    QByteArray();
    QByteArray(const char*);
    QByteArray(const char*, int size);
    QByteArray(int size, char c);
    QByteArray(const QByteArray&);
    ~QByteArray();
    QByteArray& operator=(const QByteArray&);
    QByteArray& operator=(const char* str);

    int size() const;
    bool isEmpty() const;
    void resize(int size);
    QByteArray& fill(char c, int size = -1);
    int capacity() const;
    void reserve(int size);
    void squeeze();
    operator const char*() const;
    operator const void*() const;
    char* data();
    const char* data() const;
    const char* constData() const;
    void detach();
    bool isDetached() const;
    void clear();
    char at(int i) const;
    char operator[](int i) const;
    char operator[](uint i) const;
    QByteRef operator[](int i);
    QByteRef operator[](uint i);
    int indexOf(char c, int from = 0) const;
    int indexOf(const char* c, int from = 0) const;
    int indexOf(const QByteArray& a, int from = 0) const;
    int lastIndexOf(char c, int from = -1) const;
    int lastIndexOf(const char* c, int from = -1) const;
    int lastIndexOf(const QByteArray& a, int from = -1) const;
    bool contains(char c) const;
    bool contains(const char* a) const;
    bool contains(const QByteArray& a) const;
    int count(char c) const;
    int count(const char* a) const;
    int count(const QByteArray& a) const;
    int count() const;
    QByteArray left(int len) const;
    QByteArray right(int len) const;
    QByteArray mid(int index, int len = -1) const;
    bool startsWith(const QByteArray& a) const;
    bool startsWith(char c) const;
    bool startsWith(const char* c) const;
    bool endsWith(const QByteArray& a) const;
    bool endsWith(char c) const;
    bool endsWith(const char* c) const;
    void truncate(int pos);
    void chop(int n);
    QByteArray toLower() const;
    QByteArray toUpper() const;
    QByteArray trimmed() const;
    QByteArray simplified() const;
    QByteArray leftJustified(int width, char fill = ' ', bool truncate = false) const;
    QByteArray rightJustified(int width, char fill = ' ', bool truncate = false) const;
    QByteArray& prepend(char c);
    QByteArray& prepend(const char* s);
    QByteArray& prepend(const QByteArray& a);
    QByteArray& append(char c);
    QByteArray& append(const char* s);
    QByteArray& append(const char* s, int len);
    QByteArray& append(const QByteArray& a);
    QByteArray& insert(int i, char c);
    QByteArray& insert(int i, const char* s);
    QByteArray& insert(int i, const QByteArray& a);
    QByteArray& remove(int index, int len);
    QByteArray& replace(int index, int len, const char* s);
    QByteArray& replace(int index, int len, const QByteArray& s);
    QByteArray& replace(char before, char after);
    QByteArray& replace(char before, const QByteArray& after);
    QByteArray& replace(const QByteArray& before, const QByteArray& after);
    QByteArray& replace(const char* before, const char* after);
    QByteArray& operator+=(char c);
    QByteArray& operator+=(const char* s);
    QByteArray& operator+=(const QByteArray& a);
    QList<QByteArray> split(char sep) const;
    QByteArray repeated(int times) const;
    short toShort(bool* ok = 0, int base = 10) const;
    ushort toUShort(bool* ok = 0, int base = 10) const;
    int toInt(bool* ok = 0, int base = 10) const;
    uint toUInt(bool* ok = 0, int base = 10) const;
    long toLong(bool* ok = 0, int base = 10) const;
    ulong toULong(bool* ok = 0, int base = 10) const;
    qlonglong toLongLong(bool* ok = 0, int base = 10) const;
    qulonglong toULongLong(bool* ok = 0, int base = 10) const;
    float toFloat(bool* ok = 0) const;
    double toDouble(bool* ok = 0) const;
    QByteArray toBase64() const;
    QByteArray toHex() const;
    QByteArray toPercentEncoding(const QByteArray& exclude, const QByteArray& include,
                                 char percent = '%') const;
    QByteArray& setNum(int, int base = 10);
    static QByteArray number(int, int base = 10);
    static QByteArray number(uint, int base = 10);
    static QByteArray number(qlonglong, int base = 10);
    static QByteArray number(qulonglong, int base = 10);
    static QByteArray number(double, char f = 'g', int prec = 6);
    static QByteArray fromRawData(const char*, int size);
    QByteArray& setRawData(const char*, uint size);
    static QByteArray fromBase64(const QByteArray& base64);
    static QByteArray fromHex(const QByteArray& hexEncoded);
    iterator begin();
    const_iterator begin() const;
    const_iterator constBegin() const;
    iterator end();
    const_iterator end() const;
    const_iterator constEnd() const;
    void push_back(char c);
    void push_back(const QByteArray& a);
    void push_front(char c);
    void push_front(const QByteArray& a);
    int length() const;
    bool isNull() const;
};
bool operator==(const QByteArray& a, const QByteArray& b);
bool operator==(const QByteArray& a, const char* b);
bool operator==(const char* a, const QByteArray& b);
bool operator!=(const QByteArray& a, const QByteArray& b);
bool operator!=(const QByteArray& a, const char* b);
bool operator!=(const char* a, const QByteArray& b);
bool operator<(const QByteArray& a, const QByteArray& b);
const QByteArray operator+(const QByteArray& a, const QByteArray& b);
const QByteArray operator+(const QByteArray& a, const char* b);
const QByteArray operator+(const QByteArray& a, char b);
const QByteArray operator+(const char* a, const QByteArray& b);
const QByteArray operator+(char a, const QByteArray& b);
QDataStream& operator<<(QDataStream&, const QByteArray&);
QDataStream& operator>>(QDataStream&, QByteArray&);

class QCharRef {
 public:
    operator QChar() const;
    QCharRef& operator=(const QChar& c);
    ushort unicode() const;
    bool isDigit() const;
    char toLatin1() const;
};

// Left out here: what takes plain characters for text, and text for plain characters. Qt 4.7 reads
// them as Latin-1 and Qt 5 as UTF-8; the product says which it means.
class QString {
 public:
    typedef QChar* iterator;
    typedef const QChar* const_iterator;
    enum SplitBehavior { KeepEmptyParts, SkipEmptyParts };
    enum SectionFlag { SectionDefault = 0, SectionSkipEmpty = 1 };
    QString();
    QString(const QChar* unicode, int size);
    explicit QString(const QChar* unicode);
    QString(QChar c);
    QString(int size, QChar c);
    QString(const QLatin1String& latin1);
    QString(const QString&);
    ~QString();
    QString& operator=(QChar c);
    QString& operator=(const QString&);
    QString& operator=(const QLatin1String&);

    int size() const;
    int count() const;
    int length() const;
    bool isEmpty() const;
    void resize(int size);
    QString& fill(QChar c, int size = -1);
    void truncate(int pos);
    void chop(int n);
    int capacity() const;
    void reserve(int size);
    void squeeze();
    const QChar* unicode() const;
    QChar* data();
    const QChar* data() const;
    const QChar* constData() const;
    void detach();
    void clear();
    const QChar at(int i) const;
    const QChar operator[](int i) const;
    QCharRef operator[](int i);
    const QChar operator[](uint i) const;
    QCharRef operator[](uint i);
    QString arg(qlonglong a, int fieldwidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(qulonglong a, int fieldwidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(long a, int fieldwidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(ulong a, int fieldwidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(int a, int fieldWidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(uint a, int fieldWidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(short a, int fieldWidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(ushort a, int fieldWidth = 0, int base = 10,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(double a, int fieldWidth = 0, char fmt = 'g', int prec = -1,
                const QChar& fill = QLatin1Char(' ')) const;
    QString arg(char a, int fieldWidth = 0, const QChar& fill = QLatin1Char(' ')) const;
    QString arg(QChar a, int fieldWidth = 0, const QChar& fill = QLatin1Char(' ')) const;
    QString arg(const QString& a, int fieldWidth = 0, const QChar& fill = QLatin1Char(' ')) const;
    QString arg(const QString& a1, const QString& a2) const;
    QString arg(const QString& a1, const QString& a2, const QString& a3) const;
    QString arg(const QString& a1, const QString& a2, const QString& a3, const QString& a4) const;
    QString& sprintf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int indexOf(QChar c, int from = 0, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    int indexOf(const QString& s, int from = 0, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    int indexOf(const QLatin1String& s, int from = 0,
                Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    int indexOf(const QRegExp&, int from = 0) const;
    int lastIndexOf(QChar c, int from = -1, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    int lastIndexOf(const QString& s, int from = -1,
                    Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool contains(QChar c, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool contains(const QString& s, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool contains(const QRegExp& rx) const;
    int count(QChar c, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    int count(const QString& s, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    QString section(QChar sep, int start, int end = -1) const;
    QString left(int n) const;
    QString right(int n) const;
    QString mid(int position, int n = -1) const;
    bool startsWith(const QString& s, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool startsWith(const QLatin1String& s, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool startsWith(const QChar& c, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool endsWith(const QString& s, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool endsWith(const QLatin1String& s, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool endsWith(const QChar& c, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    QString leftJustified(int width, QChar fill = QLatin1Char(' '), bool trunc = false) const;
    QString rightJustified(int width, QChar fill = QLatin1Char(' '), bool trunc = false) const;
    QString toLower() const;
    QString toUpper() const;
    QString trimmed() const;
    QString simplified() const;
    QString& insert(int i, QChar c);
    QString& insert(int i, const QString& s);
    QString& append(QChar c);
    QString& append(const QString& s);
    QString& append(const QLatin1String& s);
    QString& prepend(QChar c);
    QString& prepend(const QString& s);
    QString& prepend(const QLatin1String& s);
    QString& operator+=(QChar c);
    QString& operator+=(const QString& s);
    QString& operator+=(const QLatin1String& s);
    QString& remove(int i, int len);
    QString& remove(QChar c, Qt::CaseSensitivity cs = Qt::CaseSensitive);
    QString& remove(const QString& s, Qt::CaseSensitivity cs = Qt::CaseSensitive);
    QString& remove(const QRegExp& rx);
    QString& replace(int i, int len, QChar after);
    QString& replace(int i, int len, const QString& after);
    QString& replace(QChar before, QChar after, Qt::CaseSensitivity cs = Qt::CaseSensitive);
    QString& replace(const QString& before, const QString& after,
                     Qt::CaseSensitivity cs = Qt::CaseSensitive);
    QString& replace(const QRegExp& rx, const QString& after);
    QStringList split(const QString& sep, SplitBehavior behavior = KeepEmptyParts,
                      Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    QStringList split(const QChar& sep, SplitBehavior behavior = KeepEmptyParts,
                      Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    QStringList split(const QRegExp& sep, SplitBehavior behavior = KeepEmptyParts) const;
    QString repeated(int times) const;
    const ushort* utf16() const;
    QByteArray toAscii() const;
    QByteArray toLatin1() const;
    QByteArray toUtf8() const;
    QByteArray toLocal8Bit() const;
    std::string toStdString() const;
    static QString fromAscii(const char*, int size = -1);
    static QString fromLatin1(const char*, int size = -1);
    static QString fromUtf8(const char*, int size = -1);
    static QString fromLocal8Bit(const char*, int size = -1);
    static QString fromUtf16(const ushort*, int size = -1);
    static QString fromRawData(const QChar*, int size);
    static QString fromStdString(const std::string& s);
    int compare(const QString& s) const;
    int compare(const QString& s, Qt::CaseSensitivity cs) const;
    static int compare(const QString& s1, const QString& s2);
    static int compare(const QString& s1, const QString& s2, Qt::CaseSensitivity cs);
    short toShort(bool* ok = 0, int base = 10) const;
    ushort toUShort(bool* ok = 0, int base = 10) const;
    int toInt(bool* ok = 0, int base = 10) const;
    uint toUInt(bool* ok = 0, int base = 10) const;
    long toLong(bool* ok = 0, int base = 10) const;
    ulong toULong(bool* ok = 0, int base = 10) const;
    qlonglong toLongLong(bool* ok = 0, int base = 10) const;
    qulonglong toULongLong(bool* ok = 0, int base = 10) const;
    float toFloat(bool* ok = 0) const;
    double toDouble(bool* ok = 0) const;
    static QString number(int, int base = 10);
    static QString number(uint, int base = 10);
    static QString number(long, int base = 10);
    static QString number(ulong, int base = 10);
    static QString number(qlonglong, int base = 10);
    static QString number(qulonglong, int base = 10);
    static QString number(double, char f = 'g', int prec = 6);
    iterator begin();
    const_iterator begin() const;
    const_iterator constBegin() const;
    iterator end();
    const_iterator end() const;
    const_iterator constEnd() const;
    void push_back(QChar c);
    void push_back(const QString& s);
    bool isNull() const;
    bool operator==(const QString& s) const;
    bool operator<(const QString& s) const;
    bool operator!=(const QString& s) const;
    bool operator==(const QLatin1String& s) const;
    bool operator!=(const QLatin1String& s) const;
};
const QString operator+(const QString& s1, const QString& s2);
const QString operator+(const QString& s1, QChar s2);
const QString operator+(QChar s1, const QString& s2);
QDataStream& operator<<(QDataStream&, const QString&);
QDataStream& operator>>(QDataStream&, QString&);

class QRegExp {
 public:
    enum PatternSyntax { RegExp, Wildcard, FixedString, RegExp2, WildcardUnix, W3CXmlSchema11 };
    QRegExp();
    explicit QRegExp(const QString& pattern, Qt::CaseSensitivity cs = Qt::CaseSensitive,
                     PatternSyntax syntax = RegExp);
    QRegExp(const QRegExp& rx);
    ~QRegExp();
    QRegExp& operator=(const QRegExp& rx);
    bool isEmpty() const;
    bool isValid() const;
    QString pattern() const;
    void setPattern(const QString& pattern);
    Qt::CaseSensitivity caseSensitivity() const;
    PatternSyntax patternSyntax() const;
    bool isMinimal() const;
    void setMinimal(bool minimal);
    bool exactMatch(const QString& str) const;
    int indexIn(const QString& str, int offset = 0) const;
    int lastIndexIn(const QString& str, int offset = -1) const;
    int matchedLength() const;
    int captureCount() const;
    QStringList capturedTexts() const;
    QString cap(int nth = 0) const;
    int pos(int nth = 0) const;
    QString errorString() const;
    static QString escape(const QString& str);
};

#endif

#ifndef LINT_QT47_CONTAINERS_H
#define LINT_QT47_CONTAINERS_H

// QPair, QList, QStringList, QVector, QHash, QSet, QMap, QPointer.

#include "text.h"

template <typename T1, typename T2>
struct QPair {
    QPair();
    QPair(const T1& t1, const T2& t2);
    QPair& operator=(const QPair& other);
    T1 first;
    T2 second;
};
template <typename T1, typename T2>
QPair<T1, T2> qMakePair(const T1& x, const T2& y);

template <typename T>
class QVector;
template <typename T>
class QSet;

template <typename T>
class QList {
 public:
    typedef T* iterator;
    typedef const T* const_iterator;
    typedef T value_type;
    QList();
    QList(const QList& l);
    ~QList();
    QList& operator=(const QList& l);
    bool operator==(const QList& l) const;
    bool operator!=(const QList& l) const;
    int size() const;
    int count() const;
    int length() const;
    bool isEmpty() const;
    bool empty() const;
    void detach();
    void clear();
    void reserve(int size);
    const T& at(int i) const;
    const T& operator[](int i) const;
    T& operator[](int i);
    void append(const T& t);
    void append(const QList& t);
    void prepend(const T& t);
    void insert(int i, const T& t);
    void replace(int i, const T& t);
    void removeAt(int i);
    int removeAll(const T& t);
    bool removeOne(const T& t);
    T takeAt(int i);
    T takeFirst();
    T takeLast();
    void move(int from, int to);
    void swap(int i, int j);
    int indexOf(const T& t, int from = 0) const;
    int lastIndexOf(const T& t, int from = -1) const;
    bool contains(const T& t) const;
    int count(const T& t) const;
    iterator begin();
    const_iterator begin() const;
    const_iterator constBegin() const;
    iterator end();
    const_iterator end() const;
    const_iterator constEnd() const;
    iterator insert(iterator before, const T& t);
    iterator erase(iterator pos);
    T& first();
    const T& first() const;
    T& last();
    const T& last() const;
    void removeFirst();
    void removeLast();
    bool startsWith(const T& t) const;
    bool endsWith(const T& t) const;
    QList mid(int pos, int length = -1) const;
    T value(int i) const;
    T value(int i, const T& defaultValue) const;
    void push_back(const T& t);
    void push_front(const T& t);
    void pop_back();
    void pop_front();
    T& front();
    T& back();
    QList& operator+=(const QList& l);
    QList operator+(const QList& l) const;
    QList& operator+=(const T& t);
    QList& operator<<(const T& t);
    QList& operator<<(const QList& l);
    QVector<T> toVector() const;
    QSet<T> toSet() const;
};

template <typename Key, typename T>
class QMap {
 public:
    struct iterator {
        const Key& key() const;
        T& value() const;
    };
    QMap();
    QMap(const QMap& other);
    ~QMap();
    QMap& operator=(const QMap& other);
    int size() const;
    bool isEmpty() const;
    bool contains(const Key& key) const;
    iterator insert(const Key& key, const T& value);
    const T value(const Key& key) const;
};

class QStringList : public QList<QString> {
 public:
    QStringList();
    explicit QStringList(const QString& i);
    QStringList(const QStringList& l);
    QStringList(const QList<QString>& l);
    QStringList& operator=(const QStringList& l);
    void sort();
    int removeDuplicates();
    QString join(const QString& sep) const;
    QStringList filter(const QString& str, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    bool contains(const QString& str, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    QStringList operator+(const QStringList& other) const;
    QStringList& operator<<(const QString& str);
    QStringList& operator<<(const QStringList& l);
    int indexOf(const QString& str, int from = 0) const;
};

template <typename T>
class QVector {
 public:
    typedef T* iterator;
    typedef const T* const_iterator;
    typedef T value_type;
    QVector();
    explicit QVector(int size);
    QVector(int size, const T& t);
    QVector(const QVector& v);
    ~QVector();
    QVector& operator=(const QVector& v);
    bool operator==(const QVector& v) const;
    bool operator!=(const QVector& v) const;
    int size() const;
    bool isEmpty() const;
    void resize(int size);
    int capacity() const;
    void reserve(int size);
    void squeeze();
    T* data();
    const T* data() const;
    const T* constData() const;
    void clear();
    const T& at(int i) const;
    T& operator[](int i);
    const T& operator[](int i) const;
    void append(const T& t);
    void prepend(const T& t);
    void insert(int i, const T& t);
    void insert(int i, int n, const T& t);
    void replace(int i, const T& t);
    void remove(int i);
    void remove(int i, int n);
    QVector& fill(const T& t, int size = -1);
    int indexOf(const T& t, int from = 0) const;
    bool contains(const T& t) const;
    int count(const T& t) const;
    iterator begin();
    const_iterator begin() const;
    const_iterator constBegin() const;
    iterator end();
    const_iterator end() const;
    const_iterator constEnd() const;
    int count() const;
    T& first();
    const T& first() const;
    T& last();
    const T& last() const;
    QVector mid(int pos, int length = -1) const;
    T value(int i) const;
    T value(int i, const T& defaultValue) const;
    void push_back(const T& t);
    void pop_back();
    bool empty() const;
    QVector& operator+=(const QVector& l);
    QVector& operator+=(const T& t);
    QVector& operator<<(const T& t);
    QList<T> toList() const;
};

uint qHash(char key);
uint qHash(uchar key);
uint qHash(ushort key);
uint qHash(short key);
uint qHash(uint key);
uint qHash(int key);
uint qHash(ulong key);
uint qHash(long key);
uint qHash(quint64 key);
uint qHash(qint64 key);
uint qHash(QChar key);
uint qHash(const QByteArray& key);
uint qHash(const QString& key);

template <typename Key, typename T>
class QHash {
 public:
    class const_iterator {
     public:
        const Key& key() const;
        const T& value() const;
        const T& operator*() const;
        const T* operator->() const;
        bool operator==(const const_iterator& o) const;
        bool operator!=(const const_iterator& o) const;
        const_iterator& operator++();
        const_iterator operator++(int);
    };
    class iterator {
     public:
        const Key& key() const;
        T& value() const;
        T& operator*() const;
        T* operator->() const;
        bool operator==(const iterator& o) const;
        bool operator!=(const iterator& o) const;
        iterator& operator++();
        iterator operator++(int);
        operator const_iterator() const;
    };
    typedef const_iterator ConstIterator;
    QHash();
    QHash(const QHash& other);
    ~QHash();
    QHash& operator=(const QHash& other);
    bool operator==(const QHash& other) const;
    bool operator!=(const QHash& other) const;
    int size() const;
    bool isEmpty() const;
    int capacity() const;
    void reserve(int size);
    void squeeze();
    void clear();
    int remove(const Key& key);
    T take(const Key& key);
    bool contains(const Key& key) const;
    const Key key(const T& value) const;
    const T value(const Key& key) const;
    const T value(const Key& key, const T& defaultValue) const;
    T& operator[](const Key& key);
    const T operator[](const Key& key) const;
    QList<Key> keys() const;
    QList<Key> uniqueKeys() const;
    QList<Key> keys(const T& value) const;
    QList<T> values() const;
    QList<T> values(const Key& key) const;
    int count(const Key& key) const;
    iterator begin();
    const_iterator begin() const;
    const_iterator constBegin() const;
    iterator end();
    const_iterator end() const;
    const_iterator constEnd() const;
    iterator erase(iterator it);
    int count() const;
    bool empty() const;
    iterator find(const Key& key);
    const_iterator find(const Key& key) const;
    const_iterator constFind(const Key& key) const;
    iterator insert(const Key& key, const T& value);
    iterator insertMulti(const Key& key, const T& value);
    QHash& unite(const QHash& other);
};

template <typename T>
class QSet {
 public:
    class const_iterator {
     public:
        const T& operator*() const;
        const T* operator->() const;
        bool operator==(const const_iterator& o) const;
        bool operator!=(const const_iterator& o) const;
        const_iterator& operator++();
    };
    typedef const_iterator iterator;
    QSet();
    QSet(const QSet& other);
    QSet& operator=(const QSet& other);
    bool operator==(const QSet& other) const;
    bool operator!=(const QSet& other) const;
    int size() const;
    int count() const;
    bool isEmpty() const;
    void reserve(int size);
    void clear();
    bool remove(const T& value);
    bool contains(const T& value) const;
    const_iterator begin() const;
    const_iterator constBegin() const;
    const_iterator end() const;
    const_iterator constEnd() const;
    const_iterator insert(const T& value);
    const_iterator find(const T& value) const;
    QSet& unite(const QSet& other);
    QSet& intersect(const QSet& other);
    QSet& subtract(const QSet& other);
    QSet& operator<<(const T& value);
    QList<T> toList() const;
    QList<T> values() const;
};

#endif

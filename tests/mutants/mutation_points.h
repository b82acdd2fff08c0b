#ifndef TESTS_MUTANTS_MUTATION_POINTS_H
#define TESTS_MUTANTS_MUTATION_POINTS_H

#include <QByteArray>
#include <QList>
#include <QString>

/// One small change of one source file.
struct Mutation {
    QString file;      ///< as it was named by the caller, here: from the tree's root
    int line;          ///< 1 for the first
    int offset;        ///< of the first byte that is replaced
    QByteArray from;   ///< what is there
    QByteArray to;     ///< what replaces it
    QByteArray kind;   ///< relation, logic, arithmetic, constant, condition or statement
    QByteArray where;  ///< the line without blanks around it, as it is before the change
    int occurrence;  ///< how many like it come before it in the file: same kind, line, from and to

    QByteArray source;  ///< the whole file

    /// The file with the change.
    QByteArray changed() const;
    /// Eight hexadecimal digits. They stay when other lines of the file change.
    QByteArray id() const;
};

/// All changes of one C++ source, in the order of their places. They go by tokens, without types: a
/// change may not compile. Comments, texts and the preprocessor's lines have none.
///
/// A source formatted as this tree's is expected: a binary operator has blanks on both sides, and
/// what marks a pointer, a reference or a template's arguments has not.
QList<Mutation> mutationsOf(const QString& file, const QByteArray& text);

/// The mutations in an order that depends on the seed and on their ids only: the first N are a
/// random sample of them, and the first 100 a part of the first 500.
QList<Mutation> inSampleOrder(const QList<Mutation>& mutations, quint64 seed);

#endif

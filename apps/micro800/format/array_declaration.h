#ifndef APPS_MICRO800_FORMAT_ARRAY_DECLARATION_H
#define APPS_MICRO800_FORMAT_ARRAY_DECLARATION_H

#include <QString>
#include <QVector>

/// The array declarations of a project: DINT0:RECIPE[0..9,0..4].
struct ArrayDeclaration {
    struct Range {
        int lower;
        int upper;
    };

    QString text;           ///< as written; the text in the database
    QString name;           ///< in upper case: the driver's key
    QVector<Range> ranges;  ///< one to three
    int elementSize = 0;    ///< bytes; 0 for STRING

    /// Number of elements, at least 1.
    int size() const;
    /// Requests that the driver needs to read the array whole, at least 1. Elements without a fixed
    /// size are read one by one.
    int requests() const;
};

/// A Read Tag request counts its elements in 16 bits; a larger array could not be read whole.
const int kLargestArray = 65535;

/// Takes a declaration apart. False when the driver would not take it, or take it wrongly;
/// `problem` names the text and says why.
bool parseArrayDeclaration(const QString& text, ArrayDeclaration* declaration, QString* problem);

/// The array that the driver takes a row of the database for, in upper case; empty for a row that
/// it skips. The driver looks for a declaration anywhere in the text and in any case.
QString declaredArrayName(const QString& row);

#endif

#ifndef TESTS_MUTANTS_BUILD_TREE_H
#define TESTS_MUTANTS_BUILD_TREE_H

#include <QHash>
#include <QString>
#include <QStringList>

/// The commands of a finished build folder (Ninja), for builds beside it.
class BuildTree {
 public:
    /// False, with the problem, when the folder has no build of that kind.
    bool open(const QString& folder, QString* problem);

    QString path() const { return folder; }
    /// The shell command that compiles `source` as the build folder compiles `original`; empty when
    /// the build has no such file.
    QString compileCommand(const QString& original, const QString& source,
                           const QString& object) const;
    /// The shell command that links the target, e.g. tests/unit_cip, with `object` in place of the
    /// member of a library that defines the same names; empty when the build has no such target.
    QString linkCommand(const QString& target, const QString& object, const QString& output) const;

 private:
    QString folder;
    QHash<QString, QString> compile;          ///< by the source's absolute path
    mutable QHash<QString, QString> linking;  ///< by the target
};

#endif

#ifndef APPS_MICRO800_TERMINAL_COMMAND_LINE_H
#define APPS_MICRO800_TERMINAL_COMMAND_LINE_H

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <QVector>

/// One option of a subcommand.
struct OptionSpec {
    QString name;                   ///< without its dashes
    QString valueName;              ///< "MS"; empty for a switch
    QString description;            ///< one sentence or two, shown by --help
    QString defaultText;            ///< shown by --help; empty when there is none
    QString shortName = QString();  ///< one letter; empty when there is none
};

/// The help text of a subcommand, beside its options.
struct CommandHelp {
    QString name;             ///< "read"
    QString summary;          ///< one line without a full stop
    QStringList synopsis;     ///< what follows "micro800 read"
    QStringList description;  ///< paragraphs; one that begins with a blank is kept as it is
    QVector<OptionSpec> options;
    QStringList examples;  ///< whole command lines and their output, kept as they are
};

/// The arguments of one subcommand.
///
/// A negative number is a value and never an option, at any place; "--" ends the options.
class CommandLine {
 public:
    explicit CommandLine(const CommandHelp& help);

    /// Takes the arguments that follow the subcommand's name. False when there is an unknown
    /// option, or a value is missing or too much; `problem` says so.
    bool parse(const QStringList& arguments, QString* problem);

    bool helpWanted() const;
    /// Whether the subcommand has this option at all.
    bool knows(const QString& option) const;
    bool isSet(const QString& option) const;
    /// The last value given; empty when there is none.
    QString value(const QString& option) const;
    QStringList values(const QString& option) const;
    QStringList positional() const;

    /// The option's whole number, `byDefault` when it was not given. False when it is no number
    /// from `smallest` to `largest`.
    bool number(const QString& option, int smallest, int largest, int byDefault, int* number,
                QString* problem) const;

 private:
    const OptionSpec* optionOf(const QString& name) const;
    QString problemOf(const QStringList& arguments) const;

    QCommandLineParser parser;
    QVector<OptionSpec> options;
};

/// The page that "micro800 COMMAND --help" shows, without a line feed at its end.
QString helpPage(const CommandHelp& help);

/// Breaks a paragraph into lines of at most `width` characters, each after `indent` blanks.
QString wrapped(const QString& paragraph, int indent, int width);

#endif

#include "apps/micro800/terminal/command_line.h"

#include <QCommandLineOption>
#include <QRegularExpression>

#include "apps/micro800/base/near.h"
#include "apps/micro800/base/problem.h"

namespace {

const int kPageWidth = 79;
const int kIndent = 4;

/// Stands before a negative number while the parser looks at it. A character for private
/// use: no argument begins with it by chance, and one that does comes back unchanged as well.
const QChar kNumberMark(0xE000);

bool looksLikeNegativeNumber(const QString& argument) {
    static const QRegularExpression pattern(QStringLiteral(R"(^-(\.?[0-9]|inf|nan))"),
                                            QRegularExpression::CaseInsensitiveOption);
    return pattern.match(argument).hasMatch();
}

QStringList marked(const QStringList& arguments) {
    QStringList result;
    for (const QString& argument : arguments) {
        const bool mark = looksLikeNegativeNumber(argument) || argument.startsWith(kNumberMark);
        result << (mark ? kNumberMark + argument : argument);
    }
    return result;
}

QString unmarked(const QString& text) {
    return text.startsWith(kNumberMark) ? text.mid(1) : text;
}

QStringList unmarked(const QStringList& texts) {
    QStringList result;
    for (const QString& text : texts) {
        result << unmarked(text);
    }
    return result;
}

void addSection(const QString& title, const QString& body, QStringList* page) {
    *page << QString() << title << body;
}

QString indented(const QString& text) {
    QStringList lines;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        lines << (line.isEmpty() ? line : QString(kIndent, QLatin1Char(' ')) + line);
    }
    return lines.join(QLatin1Char('\n'));
}

QString synopsisText(const CommandHelp& help) {
    QStringList lines;
    for (const QString& form : help.synopsis) {
        lines << QStringLiteral("micro800 %1 %2").arg(help.name, form);
    }
    return indented(lines.join(QLatin1Char('\n')));
}

QString descriptionText(const CommandHelp& help) {
    QStringList paragraphs;
    for (const QString& paragraph : help.description) {
        const bool asItIs = paragraph.startsWith(QLatin1Char(' '));
        paragraphs << (asItIs ? indented(paragraph) : wrapped(paragraph, kIndent, kPageWidth));
    }
    return paragraphs.join(QLatin1String("\n\n"));
}

QString optionText(const OptionSpec& option) {
    QString head(kIndent, QLatin1Char(' '));
    if (!option.shortName.isEmpty()) {
        head += QStringLiteral("-%1, ").arg(option.shortName);
    }
    head += QLatin1String("--") + option.name;
    if (!option.valueName.isEmpty()) {
        head += QLatin1Char(' ') + option.valueName;
    }
    QString text = option.description;
    if (!option.defaultText.isEmpty()) {
        text += QStringLiteral(" Default: %1.").arg(option.defaultText);
    }
    return head + QLatin1Char('\n') + wrapped(text, 2 * kIndent, kPageWidth);
}

QString optionsText(const CommandHelp& help) {
    QStringList parts;
    for (const OptionSpec& option : help.options) {
        parts << optionText(option);
    }
    parts << optionText(
        {QStringLiteral("help"), QString(), QStringLiteral("Shows this page."), QString()});
    return parts.join(QLatin1Char('\n'));
}

}  // namespace

CommandLine::CommandLine(const CommandHelp& help) {
    for (const OptionSpec& option : help.options) {
        QStringList names(option.name);
        if (!option.shortName.isEmpty()) {
            names << option.shortName;
        }
        parser.addOption(QCommandLineOption(names, option.description, option.valueName));
        options.append(option);
    }
    parser.addOption(QCommandLineOption(QStringList{QStringLiteral("h"), QStringLiteral("help")}));
}

bool CommandLine::parse(const QStringList& arguments, QString* problem) {
    // The parser takes the first entry for the program's name.
    if (parser.parse(QStringList(QStringLiteral("micro800")) + marked(arguments))) {
        return true;
    }
    return fail(problem, problemOf(arguments));
}

const OptionSpec* CommandLine::optionOf(const QString& name) const {
    for (const OptionSpec& option : options) {
        if (name == option.name || (!name.isEmpty() && name == option.shortName)) {
            return &option;
        }
    }
    return nullptr;
}

/// What is wrong with arguments that the parser refused, in this program's words.
QString CommandLine::problemOf(const QStringList& arguments) const {
    static const QRegularExpression dashes(QStringLiteral("^--?"));
    for (int i = 0; i < arguments.size() && arguments.at(i) != QLatin1String("--"); ++i) {
        const QString& argument = arguments.at(i);
        if (!argument.startsWith(QLatin1Char('-')) || argument.size() == 1 ||
            looksLikeNegativeNumber(argument)) {
            continue;
        }
        const QString shown = argument.section(QLatin1Char('='), 0, 0);
        const QString name = QString(shown).remove(dashes);
        if (name == QLatin1String("help") || name == QLatin1String("h")) {
            continue;
        }
        const OptionSpec* option = optionOf(name);
        const bool hasValue = argument.contains(QLatin1Char('='));
        const bool wantsValue = option && !option->valueName.isEmpty();
        if (!option) {
            QStringList known;
            for (const OptionSpec& one : options) {
                known << one.name;
            }
            known << QStringLiteral("help");
            return QStringLiteral("unknown option %1%2")
                .arg(shown, suggestionFor(name, known, QStringLiteral("--")));
        }
        if (hasValue && !wantsValue) {
            return QStringLiteral("%1 takes no value").arg(shown);
        }
        if (wantsValue && !hasValue && ++i == arguments.size()) {
            return QStringLiteral("%1 %2: the value is missing").arg(shown, option->valueName);
        }
    }
    return QStringLiteral("the options cannot be understood");
}

bool CommandLine::helpWanted() const {
    return parser.isSet(QStringLiteral("help"));
}

bool CommandLine::knows(const QString& option) const {
    return optionOf(option) != nullptr;
}

bool CommandLine::isSet(const QString& option) const {
    return parser.isSet(option);
}

QString CommandLine::value(const QString& option) const {
    return unmarked(parser.value(option));
}

QStringList CommandLine::values(const QString& option) const {
    return unmarked(parser.values(option));
}

QStringList CommandLine::positional() const {
    return unmarked(parser.positionalArguments());
}

bool CommandLine::number(const QString& option, int smallest, int largest, int byDefault,
                         int* number, QString* problem) const {
    *number = byDefault;
    if (!isSet(option)) {
        return true;
    }
    bool ok = false;
    const int given = value(option).toInt(&ok);
    if (!ok || given < smallest || given > largest) {
        *problem =
            QStringLiteral("--%1 %2: not a whole number from %3 to %4")
                .arg(option, value(option), QString::number(smallest), QString::number(largest));
        return false;
    }
    *number = given;
    return true;
}

QString wrapped(const QString& paragraph, int indent, int width) {
    const QString margin(indent, QLatin1Char(' '));
    QStringList lines;
    QString line;
    for (const QString& word : paragraph.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && indent + line.size() + 1 + word.size() > width) {
            lines << margin + line;
            line.clear();
        }
        line += (line.isEmpty() ? QString() : QString(QLatin1Char(' '))) + word;
    }
    lines << margin + line;
    return lines.join(QLatin1Char('\n'));
}

QString helpPage(const CommandHelp& help) {
    QStringList page;
    page << QStringLiteral("NAME")
         << indented(QStringLiteral("micro800 %1 - %2").arg(help.name, help.summary));
    addSection(QStringLiteral("SYNOPSIS"), synopsisText(help), &page);
    addSection(QStringLiteral("DESCRIPTION"), descriptionText(help), &page);
    addSection(QStringLiteral("OPTIONS"), optionsText(help), &page);
    addSection(QStringLiteral("EXAMPLES"), indented(help.examples.join(QLatin1String("\n\n"))),
               &page);
    addSection(QStringLiteral("EXIT STATUS"),
               indented(QStringLiteral("0  everything was done\n"
                                       "1  something failed: a tag, the plugin file, the project\n"
                                       "2  the command line is wrong; nothing was sent")),
               &page);
    return page.join(QLatin1Char('\n'));
}

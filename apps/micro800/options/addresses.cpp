#include "apps/micro800/options/addresses.h"

#include "apps/micro800/base/connection.h"
#include "apps/micro800/base/input.h"
#include "apps/micro800/base/problem.h"
#include "apps/micro800/project/project_store.h"

QString addressFileHelp() {
    return QStringLiteral(
        "@FILE stands for the addresses in FILE and - for those on standard input: one per line, # "
        "begins a comment.");
}

bool listedWordsFrom(const QStringList& words, QVector<ListedWord>* listed, QString* problem) {
    for (const QString& word : words) {
        const bool isFile = word.size() > 1 && word.startsWith(QLatin1Char('@'));
        if (!isFile && word != QLatin1String(kStandardInput)) {
            listed->append({word, QString()});
            continue;
        }
        const QString name = isFile ? word.mid(1) : word;
        QByteArray content;
        if (!readInput(name, &content, problem)) {
            return false;
        }
        appendListedWords(content, name, listed);
    }
    return true;
}

bool addressesFrom(const CommandLine& line, int count, QVector<TagAddress>* addresses,
                   QVector<CommunicatorCommand>* commands, QString* problem) {
    QVector<ListedWord> words;
    if (!listedWordsFrom(line.positional(), &words, problem)) {
        return false;
    }
    for (const ListedWord& word : words) {
        TagAddress address;
        CommunicatorCommand command;
        QString why;
        if (!parseTagAddress(word.text, &address, &why) ||
            !commandFor(address, count, &command, &why)) {
            return fail(problem, word.problemHere(why));
        }
        addresses->append(address);
        commands->append(command);
    }
    return !addresses->isEmpty() || fail(problem, QStringLiteral("no address given"));
}

bool declaredArrays(const QString& project, int link, QVector<ListedAddress>* arrays,
                    QString* problem) {
    ProjectStore store;
    ProjectContents contents;
    if (!store.openToRead(project, problem) || !store.contents(&contents, problem)) {
        return false;
    }
    for (const ProjectContents::Array& array : contents.arrays) {
        ListedAddress address;
        QString ignored;
        // The driver takes a declaration in any case, an address has its prefix in upper case.
        if (array.linkId == link &&
            (parseListedAddress({array.address, project}, &address, &ignored) ||
             parseListedAddress({array.address.toUpper(), project}, &address, &ignored))) {
            arrays->append(address);
        }
    }
    return true;
}

bool listedAddressesFrom(const CommandLine& line, QVector<ListedAddress>* addresses,
                         QString* problem) {
    QVector<ListedWord> words;
    if (!listedWordsFrom(line.positional(), &words, problem)) {
        return false;
    }
    for (const ListedWord& word : words) {
        ListedAddress address;
        if (!parseListedAddress(word, &address, problem)) {
            return false;
        }
        addresses->append(address);
    }
    const QString project = line.value(QStringLiteral("project"));
    if (addresses->isEmpty() && line.positional().isEmpty() && !project.isEmpty()) {
        int link = 0;
        if (!line.number(QStringLiteral("link"), 0, 0x7FFFFFFF, Connection().link, &link,
                         problem) ||
            !declaredArrays(project, link, addresses, problem)) {
            return false;
        }
        if (addresses->isEmpty()) {
            return fail(problem, QStringLiteral("the project in %1 declares no array on link %2")
                                     .arg(project, QString::number(link)));
        }
    }
    return !addresses->isEmpty() || fail(problem, QStringLiteral("no address given"));
}

#include "apps/simulator/options.h"

#include <QCommandLineParser>
#include <QFile>
#include <functional>

#include "apps/simulator/faults/fault.h"
#include "apps/simulator/pccc/data_table_text.h"
#include "apps/simulator/profiles.h"
#include "apps/simulator/tags/oracle.h"
#include "apps/simulator/tags/tag_text.h"
#include "apps/simulator/tags/values_file.h"

namespace sim {

namespace {

const char kVersion[] = SIMULATOR_VERSION;
const char kDefaultRamp[] = "100";

const char kExamples[] =
    "Examples:\n"
    "  micro800-sim --tag COUNTER:DINT=42 --tag 'NAME:STRING=Mixer 3'\n"
    "  micro800-sim --port 0 --tag 'GRID:INT[2..5,0..3]=1,2,3' --delay 6 --log requests.json\n"
    "  micro800-sim --tags plant.json --ramp 100\n"
    "  micro800-sim --tag A:DINT=1 --fault late:1500@10x1 --fault torn:7@tag=A\n"
    "  micro800-sim --pccc-file N7[301]=1,2,3 --pccc-file T4[2]=0,1000,250 --accept-path 0100\n"
    "\n"
    "The first line on standard output is the TCP port. SIGINT and SIGTERM end the program.\n"
    "\n"
    "Faults, "
    "NAME[:PARAM][@N][xM][@tag=NAME][@on=unit|rr|read|write|open|close|register|pccc|any]:\n";

void addOptions(QCommandLineParser& parser) {
    parser.addOptions({
        {"address", "IP address to listen on (127.0.0.1).", "IP", "127.0.0.1"},
        {"port", "TCP port to listen on (44818); 0 takes a free one.", "N", "44818"},
        {"tag", "Declares a tag, NAME:TYPE[dims]=v1,v2,... May be given again.", "TAG"},
        {"tags",
         "Declares the tags and data files of a JSON file, or those of a file that 'micro800 save' "
         "wrote. May be given again.",
         "FILE"},
        {"pccc-file",
         "Declares a file of the data table, N7[elements]=v1,v2,... May be given again.", "FILE"},
        {"accept-path",
         "Connection and route path (hexadecimal) that leads here as well. May be given again.",
         "HEX"},
        {"delay", "Time that the controller takes for a request (0).", "MS", "0"},
        {"connections", "CIP connections at once (16).", "N", "16"},
        {"connection-size",
         "Grants a CIP connection at most N bytes per message (511, the largest possible request).",
         "N", "511"},
        {"connection-timeout",
         "Drops a CIP connection after MS without traffic, for any request of its originator.",
         "MS", "0"},
        {"keep-connections", "A CIP connection outlives its TCP connection until it times out."},
        {"profile",
         "What a generation of firmware is reported to do differently: early, older or newer. The "
         "next three options "
         "override it.",
         "NAME"},
        {"unknown-tag-status", "General status for an unknown tag, 04 or 05 (05).", "CODE"},
        {"bool-true", "Byte that a true BOOL reads as, 01 or FF (01).", "CODE"},
        {"tag-list",
         "What the list of tags holds: all, partial (without arrays of BOOL, arrays that do not "
         "begin at 0 "
         "and members of structures) or none (all).",
         "WHICH"},
        {"ramp", "Numeric values count up once in MS (100).", "MS"},
        {"ramp-tag", "Only this tag counts up. May be given again.", "NAME"},
        {"oracle", "Numeric values tell their tag and the number of the read."},
        {"fault", "Distorts answers, see below. May be given again.", "FAULT"},
        {"log", "Appends one JSON line per request to FILE.", "FILE"},
        {"stdin", "Takes commands from standard input; its end ends the program."},
        {"udp", "Answers the list commands on the UDP port of the same number as well."},
    });
    parser.addOption({{"h", "help"}, "Shows this page."});
    // Qt programs list it; here there is nothing more to show.
    QCommandLineOption helpAll("help-all");
    helpAll.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(helpAll);
    parser.addVersionOption();
    parser.setApplicationDescription(
        "A simulated Micro800 controller: EtherNet/IP with Read Tag and Write Tag, whole and in "
        "pieces.");
}

/// The value of --ramp may be left out; the parser knows no such options.
QStringList withRampValue(QStringList arguments) {
    for (int i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i) != "--ramp") {
            continue;
        }
        bool isNumber = false;
        arguments.value(i + 1).toInt(&isNumber);
        if (!isNumber) {
            arguments.insert(i + 1, kDefaultRamp);
        }
    }
    return arguments;
}

/// Reads options one after the other and keeps the first complaint.
class OptionReader {
 public:
    explicit OptionReader(const QCommandLineParser& commandLine) : parser(commandLine) {}

    int number(const QString& name, int low, int high) {
        const QString text = parser.value(name);
        bool ok = false;
        const int value = text.toInt(&ok);
        if (!ok || value < low || value > high) {
            complain(name, QString("'%1' is no number from %2 to %3").arg(text).arg(low).arg(high));
        }
        return value;
    }

    uint8_t oneOf(const QString& name, uint8_t first, uint8_t second) {
        const QString text = parser.value(name);
        bool ok = false;
        const uint value = text.toUInt(&ok, 16);
        if (!ok || (value != first && value != second)) {
            complain(name, QString("'%1' is neither %2 nor %3")
                               .arg(text)
                               .arg(first, 2, 16, QChar('0'))
                               .arg(second, 2, 16, QChar('0')));
        }
        return uint8_t(value);
    }

    SymbolList tagList(const QString& name) {
        const QString text = parser.value(name);
        if (text != "all" && text != "partial" && text != "none") {
            complain(name, QString("'%1' is neither all, partial nor none").arg(text));
        }
        return text == "partial" ? SymbolList::partial
               : text == "none"  ? SymbolList::none
                                 : SymbolList::all;
    }

    void complain(const QString& name, const QString& why) {
        if (complaint.isEmpty()) {
            complaint = QString("--%1: %2").arg(name, why);
        }
    }

    const QString& error() const { return complaint; }

 private:
    const QCommandLineParser& parser;
    QString complaint;
};

void readNetwork(const QCommandLineParser& parser, OptionReader& reader, Options* options) {
    if (!options->address.setAddress(parser.value("address"))) {
        reader.complain("address", QString("'%1' is no IP address").arg(parser.value("address")));
    }
    options->port = quint16(reader.number("port", 0, 65535));
    options->delayMs = reader.number("delay", 0, 3600000);
    options->discovery = parser.isSet("udp");
    options->control = parser.isSet("stdin");
    options->log = parser.value("log");
}

/// A profile, and what was asked for beside it.
void readBehaviour(const QCommandLineParser& parser, OptionReader& reader,
                   ControllerSettings* controller) {
    const QString profile = parser.value("profile");
    if (parser.isSet("profile") && !applyProfile(profile, controller)) {
        reader.complain("profile", QString("there is no '%1' (%2)").arg(profile, profileNames()));
    }
    if (parser.isSet("unknown-tag-status")) {
        controller->tags.unknownTagStatus =
            reader.oneOf("unknown-tag-status", kPathSegmentError, kPathDestinationUnknown);
    }
    if (parser.isSet("bool-true")) {
        controller->tags.boolTrue = reader.oneOf("bool-true", 0x01, 0xFF);
    }
    if (parser.isSet("tag-list")) {
        controller->symbols = reader.tagList("tag-list");
    }
    controller->tags.oracle = parser.isSet("oracle");
}

void readController(const QCommandLineParser& parser, OptionReader& reader, Options* options) {
    ControllerSettings& controller = options->controller;
    ConnectionSettings& connections = controller.connections;
    connections.limit = size_t(reader.number("connections", 0, 65535));
    connections.timeoutMs = reader.number("connection-timeout", 0, 86400000);
    connections.keep = parser.isSet("keep-connections");
    connections.largestSize = size_t(
        reader.number("connection-size", int(kLeastConnectionSize), int(kLargestConnectionSize)));
    readBehaviour(parser, reader, &controller);
    options->faults = parser.values("fault");
    FaultPlan plan;
    for (const QString& fault : options->faults) {
        QString why;
        if (!plan.add(fault, &why)) {
            reader.complain("fault", why);
        }
    }
}

/// Paths are whole words of at most 255.
bool parsePath(const QString& text, Bytes* path) {
    const QByteArray digits = text.toLatin1();
    const QByteArray bytes = QByteArray::fromHex(digits);
    path->assign(bytes.begin(), bytes.end());
    return bytes.toHex() == digits.toLower() && !bytes.isEmpty() && bytes.size() % 2 == 0 &&
           bytes.size() <= 255 * 2;
}

void readPaths(const QCommandLineParser& parser, OptionReader& reader, Options* options) {
    for (const QString& text : parser.values("accept-path")) {
        Bytes path;
        if (!parsePath(text, &path)) {
            reader.complain("accept-path", QString("'%1' is no path").arg(text));
        }
        options->controller.connections.paths.push_back(path);
    }
}

void readTags(const QCommandLineParser& parser, OptionReader& reader, Options* options) {
    options->tags = parser.values("tag");
    options->files = parser.values("pccc-file");
    options->tagFiles = parser.values("tags");
    options->rampTags = parser.values("ramp-tag");
    if (parser.isSet("ramp")) {
        options->rampMs = reader.number("ramp", 1, 3600000);
    } else if (!options->rampTags.isEmpty()) {
        options->rampMs = QString(kDefaultRamp).toInt();
    }
    if (options->rampMs > 0 && options->controller.tags.oracle) {
        reader.complain("ramp", "oracle values do not count up by time");
    }
}

/// Hands the documents to `add` one after the other, until it says no.
bool loadJson(const QStringList& paths, const std::function<bool(const QByteArray&, QString*)>& add,
              QString* problem) {
    for (const QString& path : paths) {
        QFile file(path);
        QString why;
        if (!file.open(QIODevice::ReadOnly)) {
            why = file.errorString();
        } else if (add(file.readAll(), &why)) {
            continue;
        }
        *problem = QString("--tags %1: %2").arg(path, why);
        return false;
    }
    return true;
}

}  // namespace

ParseResult parseOptions(const QStringList& arguments, Options* options, QString* text) {
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(withRampValue(arguments))) {
        *text = parser.errorText();
        return ParseResult::exitUsage;
    }
    if (parser.isSet("help") || parser.isSet("help-all")) {
        *text = parser.helpText() + "\n" + kExamples + faultHelp();
        return ParseResult::exitOk;
    }
    if (parser.isSet("version")) {
        *text = QString("micro800-sim %1\n").arg(kVersion);
        return ParseResult::exitOk;
    }
    OptionReader reader(parser);
    readNetwork(parser, reader, options);
    readController(parser, reader, options);
    readPaths(parser, reader, options);
    readTags(parser, reader, options);
    if (!parser.positionalArguments().isEmpty()) {
        *text = QString("'%1' is no option").arg(parser.positionalArguments().first());
        return ParseResult::exitUsage;
    }
    *text = reader.error();
    return text->isEmpty() ? ParseResult::run : ParseResult::exitUsage;
}

bool loadTags(const Options& options, TagTable& table, QString* problem) {
    const auto add = [&table](const QByteArray& json, QString* why) {
        return isValuesFile(json) ? addTagsFromValues(json, table, why)
                                  : addTagsFromJson(json, table, why);
    };
    if (!loadJson(options.tagFiles, add, problem)) {
        return false;
    }
    for (const QString& tag : options.tags) {
        if (!addTagFromText(tag, table, problem)) {
            return false;
        }
    }
    for (const QString& name : options.rampTags) {
        const Tag* tag = table.findAnyCase(name.toStdString());
        if (!tag || !tag->type().isNumeric()) {
            *problem = QString("--ramp-tag: there is no numeric tag '%1'").arg(name);
            return false;
        }
    }
    if (options.controller.tags.oracle && table.elements() > kMaxOracleElements) {
        *problem = QString("--oracle: more than %1 elements").arg(kMaxOracleElements);
        return false;
    }
    return true;
}

bool loadFiles(const Options& options, DataTable& table, QString* problem) {
    table.putDefaultFiles();
    const auto add = [&table](const QByteArray& json, QString* why) {
        return addFilesFromJson(json, table, why);
    };
    if (!loadJson(options.tagFiles, add, problem)) {
        return false;
    }
    for (const QString& file : options.files) {
        if (!addFileFromText(file, table, problem)) {
            return false;
        }
    }
    return true;
}

}  // namespace sim

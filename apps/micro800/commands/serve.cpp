#include <QSet>

#include "apps/micro800/base/problem.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/controller/identity_facts.h"
#include "apps/micro800/controller/identity_query.h"
#include "apps/micro800/options/addresses.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/serve/feed_plan.h"
#include "apps/micro800/serve/http/access_token.h"
#include "apps/micro800/serve/http/listen_address.h"
#include "apps/micro800/serve/live_service.h"

namespace {

const int kDefaultIntervalMs = 100;
const int kShortestIntervalMs = 50;
const int kLongestIntervalMs = 60000;
const int kDefaultHours = 8;
const int kMostHours = 168;
const int kMostTags = 10000;
const qint64 kHourMs = 3600 * 1000;
const qint64 kShortestStaleMs = 3000;
const int kIdentityTimeoutMs = 500;

struct ServePlan {
    ConnectionOptions options;
    ListenAddress listen;
    QByteArray token;
    bool allowWrite = false;
    int intervalMs = kDefaultIntervalMs;
    int hours = kDefaultHours;
    QVector<TagAddress> addresses;
    QVector<CommunicatorCommand> commands;
    QVector<int> perDriver;  ///< how many of them each driver gets
};

/// Each address once.
bool tagsFrom(const CommandLine& line, ServePlan* plan, QString* problem) {
    QVector<TagAddress> addresses;
    QVector<CommunicatorCommand> commands;
    if (!addressesFrom(line, 1, &addresses, &commands, problem)) {
        return false;
    }
    QSet<QString> known;
    for (int i = 0; i < addresses.size(); ++i) {
        if (!known.contains(addresses.at(i).text)) {
            known.insert(addresses.at(i).text);
            plan->addresses.append(addresses.at(i));
            plan->commands.append(commands.at(i));
        }
    }
    if (plan->addresses.size() > kMostTags) {
        return fail(problem, QStringLiteral("%1 addresses, and a page has at most %2")
                                 .arg(plan->addresses.size())
                                 .arg(kMostTags));
    }
    QVector<ListedAddress> declared;
    if (!plan->options.project.isEmpty() &&
        !declaredArrays(plan->options.project, plan->options.connection.link, &declared, problem)) {
        return false;
    }
    plan->perDriver = spreadOverDrivers(plan->addresses, declared);
    return true;
}

bool accessFrom(const CommandLine& line, ServePlan* plan, QString* problem) {
    const QString listen = line.value(QStringLiteral("listen"));
    if (line.isSet(QStringLiteral("listen")) &&
        !parseListenAddress(listen, &plan->listen, problem)) {
        return fail(problem, QStringLiteral("--listen %1").arg(*problem));
    }
    plan->allowWrite = line.isSet(QStringLiteral("allow-write"));
    if (line.isSet(QStringLiteral("token"))) {
        const QString token = line.value(QStringLiteral("token"));
        if (!isAccessToken(token, problem)) {
            return fail(problem, QStringLiteral("--token: %1").arg(*problem));
        }
        plan->token = token.toLatin1();
    } else if (plan->allowWrite || !plan->listen.isLoopback()) {
        plan->token = newAccessToken();
    }
    return true;
}

bool planServe(const CommandLine& line, ServePlan* plan, QString* problem) {
    return connectionOptionsFrom(line, &plan->options, problem) &&
           line.number(QStringLiteral("interval"), kShortestIntervalMs, kLongestIntervalMs,
                       kDefaultIntervalMs, &plan->intervalMs, problem) &&
           line.number(QStringLiteral("history"), 1, kMostHours, kDefaultHours, &plan->hours,
                       problem) &&
           accessFrom(line, plan, problem) && tagsFrom(line, plan, problem);
}

LiveFacts factsOf(const ServePlan& plan) {
    LiveFacts facts;
    facts.connection = plan.options.connection;
    facts.addresses = plan.addresses;
    facts.drivers = plan.perDriver.size();
    facts.allowWrite = plan.allowWrite;
    facts.staleMs = std::max<qint64>(kShortestStaleMs, 3 * plan.intervalMs);
    facts.history.thinnedMs = plan.hours * kHourMs;
    facts.history.intervalMs = plan.intervalMs;
    return facts;
}

/// What a page shows of the controller; null while it does not say.
QJsonValue identityOf(Connection connection) {
    connection.timeoutMs = std::min(connection.timeoutMs, kIdentityTimeoutMs);
    CipIdentity identity;
    QString ignored;
    if (!queryIdentity(connection, TraceSink(), &identity, &ignored)) {
        return QJsonValue();
    }
    const QString vendor = vendorName(identity.vendorId);
    return QJsonObject{
        {QStringLiteral("vendor"), vendor.isEmpty() ? QString::number(identity.vendorId) : vendor},
        {QStringLiteral("product"), QString::fromLatin1(QByteArray(identity.productName))},
        {QStringLiteral("revision"), revisionText(identity)},
        {QStringLiteral("serial"), serialText(identity)},
        {QStringLiteral("state"), stateText(identity.state)}};
}

/// One session for each part of the list. False with the reason on the console.
bool openSessions(const ServePlan& plan, std::vector<std::unique_ptr<DriverSession>>* sessions,
                  Console& console) {
    for (int i = 0; i < plan.perDriver.size(); ++i) {
        auto session = std::make_unique<DriverSession>(plan.options.connection);
        session->setAnother(i > 0);
        if (!openSession(plan.options, session.get(), console)) {
            return false;
        }
        sessions->push_back(std::move(session));
    }
    return true;
}

void tellPlan(const ServePlan& plan, const LiveFacts& facts, Console& console) {
    if (plan.perDriver.size() > 1) {
        console.error(QStringLiteral("micro800: %1 addresses are spread over %2 drivers; each is "
                                     "one connection of the controller")
                          .arg(plan.addresses.size())
                          .arg(plan.perDriver.size()));
    }
    const qint64 most = TagHistory::mostBytes(facts.history) * plan.addresses.size();
    console.error(QStringLiteral("micro800: the trends of %1 tags over %2 hours take at most %3 MB "
                                 "of memory")
                      .arg(plan.addresses.size())
                      .arg(plan.hours)
                      .arg((most + 999999) / 1000000));
    console.flush();
}

int serve(const ServePlan& plan, int socket, std::vector<std::unique_ptr<DriverSession>>* sessions,
          Console& console) {
    const LiveFacts facts = factsOf(plan);
    LiveService service(facts, plan.token, &console);
    int first = 0;
    for (int i = 0; i < plan.perDriver.size(); ++i) {
        const int count = plan.perDriver.at(i);
        service.addDriver(
            std::move((*sessions)[static_cast<size_t>(i)]),
            {i, first, plan.addresses.mid(first, count), plan.commands.mid(first, count)},
            plan.intervalMs);
        first += count;
    }
    const Connection connection = plan.options.connection;
    service.setIdentityQuestion([connection] { return identityOf(connection); });
    QString address = pageAddress(socket);
    if (!plan.token.isEmpty()) {
        address += QLatin1String("?token=") + QLatin1String(plan.token);
    }
    const auto ready = [&] {
        console.line(address);
        console.flush();
        tellPlan(plan, facts, console);
    };
    QString problem;
    if (!service.run(socket, ready, &problem)) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    return kExitOk;
}

QVector<OptionSpec> serveOptions() {
    return QVector<OptionSpec>{
               {QStringLiteral("listen"), QStringLiteral("HOST:PORT"),
                QStringLiteral("Where the page is served: a numeric address of this machine, and a "
                               "port; port 0 takes a free one. An address other than loopback "
                               "needs a token."),
                QStringLiteral("127.0.0.1:8800")},
               {QStringLiteral("token"), QStringLiteral("TOKEN"),
                QStringLiteral("What a page or a program has to show: 8 to 128 letters, digits and "
                               "characters of -._~. Without it one is made where one is needed."),
                QString()},
               {QStringLiteral("allow-write"), QString(),
                QStringLiteral("Lets pages with the token write to the tags. Each write is logged "
                               "on standard error."),
                QString()},
               {QStringLiteral("interval"), QStringLiteral("MS"),
                QStringLiteral("From the start of one round of reads to the start of the next."),
                QString::number(kDefaultIntervalMs)},
               {QStringLiteral("history"), QStringLiteral("HOURS"),
                QStringLiteral("How long trends go back. The last hour is kept in full, what is "
                               "older as the least and greatest value of every ten seconds."),
                QString::number(kDefaultHours)},
           } +
           connectionOptionSpecs(true);
}

}  // namespace

CommandHelp serveHelp() {
    CommandHelp help;
    help.name = QStringLiteral("serve");
    help.summary = QStringLiteral("shows tags live on a page for browsers");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] ADDRESS|@FILE...");
    help.description
        << QStringLiteral(
               "Has the driver keep the tags fresh, as watch does, and serves a page that shows "
               "them: values, trends, failures with what to do about them, and, with "
               "--allow-write, a field to set each tag. The first line on standard output is the "
               "page's address. Ctrl-C or SIGTERM ends it with exit status 0.")
        << addressFileHelp()
        << QStringLiteral(
               "A driver takes a list of 4096 characters. More addresses are spread over several "
               "drivers, and each is one connection of the controller, which has few; how many "
               "there are is said at the start.")
        << QStringLiteral(
               "By default only this machine reaches the page, and nothing can be written. "
               "Requests with another Host or Origin are refused. HTTP is not encrypted: whoever "
               "can listen to the network between browser and this program sees the token.")
        << QStringLiteral(
               "Programs use the same paths: /api/tags, /api/events, /api/history, /api/status, "
               "/api/entries, /api/write, and /metrics for Prometheus. With a token they send "
               "'Authorization: Bearer TOKEN'.");
    help.options = serveOptions();
    help.examples
        << QStringLiteral(
               "micro800 serve --host 192.168.1.20 @panel.txt\n"
               "http://127.0.0.1:8800/")
        << QStringLiteral(
               "micro800 serve --host plc --listen 192.168.1.7:8800 --allow-write "
               "@panel.txt\n"
               "http://192.168.1.7:8800/?token=3f0c9b5d7a1e48c2b6d0f4a89e571c23")
        << QStringLiteral(
               "curl -s http://127.0.0.1:8800/api/tags | jq '.tags[] | .address, .value'");
    return help;
}

int runServe(const CommandLine& line, Console& console) {
    if (!HttpServer::isThere()) {
        console.error(QStringLiteral(
            "micro800: this build has no live page: libmicrohttpd or the chart library was not "
            "there when it was made"));
        return kExitUsage;
    }
    ServePlan plan;
    QString problem;
    if (!planServe(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("serve"), problem);
    }
    std::vector<std::unique_ptr<DriverSession>> sessions;
    if (!openSessions(plan, &sessions, console)) {
        return kExitFailed;
    }
    const int socket = listenOn(plan.listen, &problem);
    if (socket < 0) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    return serve(plan, socket, &sessions, console);
}

#include "apps/micro800/serve/help/help_links.h"

#include "apps/micro800/controller/doctor/troubleshooting.h"
#include "apps/micro800/serve/help/troubleshooting_page.h"

namespace {

/// A reason may contain numbers that go on for ever.
const int kMostKnown = 1000;

QString linkForReason(const QString& reason) {
    const Advice advice = troubleshooting().adviceFor(reason);
    return advice.text.isEmpty() ? QString()
                                 : QStringLiteral("/troubleshooting#") + anchorOf(advice.text);
}

}  // namespace

QString reasonOf(const QString& address, const QString& problem) {
    const QString access = QStringLiteral(" %1> ").arg(address);
    const int at = address.isEmpty() ? -1 : problem.indexOf(access);
    return at < 0 ? problem : problem.mid(at + access.size());
}

QString HelpLinks::linkFor(const QString& address, const QString& problem) {
    if (problem.isEmpty()) {
        return QString();
    }
    const QString reason = reasonOf(address, problem);
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = known.constFind(reason);
    if (found != known.constEnd()) {
        return found.value();
    }
    if (known.size() >= kMostKnown) {
        known.clear();
    }
    const QString link = linkForReason(reason);
    known.insert(reason, link);
    return link;
}

#ifndef APPS_MICRO800_SERVE_HELP_LINKS_H
#define APPS_MICRO800_SERVE_HELP_LINKS_H

#include <QHash>
#include <QString>
#include <mutex>

/// The place in the troubleshooting page with the advice for an operator's text. Any thread.
class HelpLinks {
 public:
    /// "/troubleshooting#ab-error-0005h" for "read DINT0:X> AB error: 0005H"; empty when the page
    /// has no row for the text.
    QString linkFor(const QString& address, const QString& problem);

 private:
    std::mutex mutex;
    QHash<QString, QString> known;  // guarded by mutex; by reason
};

/// The text without the access before it: "AB error: 0005H".
QString reasonOf(const QString& address, const QString& problem);

#endif

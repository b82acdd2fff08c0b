#ifndef TESTS_UNIT_COMMON_DEBUG_LINES_H
#define TESTS_UNIT_COMMON_DEBUG_LINES_H

#include <QString>
#include <QStringList>
#include <QtGlobal>

/// Collects what goes to Qt's debug output while it lives. One at a time.
class DebugLines {
 public:
    DebugLines() {
        lines().clear();
        previous = qInstallMessageHandler(&DebugLines::take);
    }
    ~DebugLines() { qInstallMessageHandler(previous); }
    DebugLines(const DebugLines&) = delete;
    DebugLines& operator=(const DebugLines&) = delete;

    QStringList taken() const { return lines(); }

 private:
    static QStringList& lines() {
        static QStringList list;
        return list;
    }
    static void take(QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtDebugMsg) {
            lines().append(text);
        }
    }

    QtMessageHandler previous;
};

#endif

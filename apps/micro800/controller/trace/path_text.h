#ifndef APPS_MICRO800_CONTROLLER_TRACE_PATH_TEXT_H
#define APPS_MICRO800_CONTROLLER_TRACE_PATH_TEXT_H

#include <QByteArray>
#include <QString>

/// What a request path names (CIP Networks Library Vol. 1, C-1.4), as a person writes it:
/// "GRID[2,3]" or "class 0x6B, instance 0". Ends at the first segment of another kind.
QString requestPathText(const QByteArray& path);

#endif

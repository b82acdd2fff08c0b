#ifndef COMMON_HMI_PORT_H
#define COMMON_HMI_PORT_H

#include <QString>

/// The runtime's port number of a device name: 2000 for a name that begins with "ETHERNET" in
/// any case, else the decimal digits at its end plus 1001 ("COM2" is 1003). Numbers too large for
/// an int give the largest int, a port that no project has.
///
/// A name of another form (empty, no digits at the end, nothing but digits) is a fault of the
/// runtime's configuration and ends the process by assertion, in every kind of build.
/// Any thread.
int DevStrToHmiPort(const QString& dev_str);

#endif

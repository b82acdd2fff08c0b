#include "common/hmi_port.h"

// The assertion below is active in release builds too, so its function must be declared there.
#undef NDEBUG
#include <assert.h>

#include <limits>

namespace {

const int kEthernetHmiPort = 2000;
const int kFirstHmiPort = 1001;

bool isDecimalDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

/// `first` to the end of `text` are digits; ends counting where an int cannot follow any more.
int portFromDigits(const QString& text, int first) {
    const qint64 largest = std::numeric_limits<int>::max();
    qint64 number = 0;
    for (int i = first; i < text.size() && number <= largest; ++i) {
        number = number * 10 + (text.at(i).unicode() - '0');
    }
    return static_cast<int>(qMin(number + kFirstHmiPort, largest));
}

}  // namespace

int DevStrToHmiPort(const QString& dev_str) {
    if (dev_str.startsWith(QLatin1String("ETHERNET"), Qt::CaseInsensitive)) {
        return kEthernetHmiPort;
    }

    int i = dev_str.size() - 1;
    while (i >= 0 && isDecimalDigit(dev_str.at(i))) {
        --i;
    }
    // What the operator's log shows for a bad name is the same for every build and compiler.
    if (!(i >= 0 && (i + 1) < dev_str.size())) {
        __assert_fail("i >= 0 && (i+1) < dev_str.size()", "tools", 1389,
                      "int DevStrToHmiPort(const QString&)");
    }
    return portFromDigits(dev_str, i + 1);
}

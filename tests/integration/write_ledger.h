#ifndef TESTS_INTEGRATION_WRITE_LEDGER_H
#define TESTS_INTEGRATION_WRITE_LEDGER_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <map>
#include <utility>

/// The writes that a host tried, held against those that the controllers carried out. A confirmed
/// one was carried out once, any other at most once. No value is written to a tag twice. Tags go by
/// the number in their names, of one letter and that number; values are DINTs.
class WriteLedger {
 public:
    /// A write that has been tried.
    void note(int tag, int value, bool confirmed);
    /// Takes up the writes in a simulated controller's log, from byte `from` on. Gives back how far
    /// it read: to the end of the last whole line.
    qint64 takeLog(const QString& path, qint64 from = 0);

    /// What does not agree, a line each. To be asked when the logs of all confirmed writes were
    /// taken up. Forgets the writes that were there at the last call, so that a ledger of hours
    /// stays small.
    QStringList settle();

    int confirmed() const { return confirmedCount; }
    int unconfirmed() const { return unconfirmedCount; }

 private:
    struct Write {
        int tried = 0;
        bool isConfirmed = false;
        int carriedOut = 0;
        bool isOld = false;  ///< was there at the last settle()
    };
    std::map<std::pair<int, int>, Write> writes;  ///< by tag and value
    int confirmedCount = 0;
    int unconfirmedCount = 0;
};

#endif

#ifndef APPS_MICRO800_POLLING_POLL_PLAN_H
#define APPS_MICRO800_POLLING_POLL_PLAN_H

#include <QString>
#include <QVector>

#include "apps/micro800/format/address_list.h"

/// The pause of the driver's worker after each entry of its list.
const double kPauseMs = 1;

/// Bytes of values that one request brings: a message of 504 bytes without its sequence count, the
/// reply's header and the data type.
const int kBytesARequest = 504 - 2 - 4 - 2;

/// The driver hands its list to the worker in one line of at most so many bytes, or not at all.
const int kListLimit = 4096;

/// Requests that it takes to read so many elements of a type: an array is read in pieces of whole
/// elements.
int requestsFor(const TagType& type, int count);

/// What a pass over a list, or over a part of one, costs.
struct PollCost {
    int entries = 0;
    int requests = 0;
    int listBytes = 0;  ///< in the line of the list, without what it has for all of them

    double ms(double readMs) const { return requests * readMs + entries * kPauseMs; }
    void add(const PollCost& other);
};

/// One entry of the list that the driver keeps fresh.
struct PollEntry {
    enum class Kind { kTag, kElement, kArray };

    Kind kind = Kind::kTag;
    const TagType* type = nullptr;
    QString name;   ///< as it is sent, in upper case
    QString label;  ///< as a user writes it: DINT0:LEVELS[0..9]
    int count = 1;  ///< elements

    PollCost cost() const;
};

/// The list that the driver makes of what a panel shows, and what polling it costs.
class PollPlan {
 public:
    /// `declared` are the arrays of the project. A range among the addresses counts as declared
    /// with these bounds, unless the project has others.
    PollPlan(const QVector<ListedAddress>& addresses, const QVector<ListedAddress>& declared);

    /// In the order in which they are first named; each once.
    const QVector<PollEntry>& entries() const { return list; }
    PollCost cost() const;
    /// The line as a whole.
    int lineBytes() const;
    bool fits() const { return lineBytes() <= kListLimit; }

 private:
    QVector<PollEntry> list;
};

#endif

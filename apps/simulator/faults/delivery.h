#ifndef APPS_SIMULATOR_FAULTS_DELIVERY_H
#define APPS_SIMULATOR_FAULTS_DELIVERY_H

#include <deque>

#include "apps/simulator/faults/exchange.h"

namespace sim {

/// What becomes of the TCP connection once a segment is out.
enum class AfterSegment { keep, close, reset };

/// Bytes that go out in one piece.
struct Segment {
    Bytes bytes;
    int waitMs = 0;  ///< before it
    AfterSegment after = AfterSegment::keep;
};

/// An answer on its way to the peer.
struct Delivery {
    int holdMs = 0;  ///< later answers may overtake it that long
    std::deque<Segment> segments;
};

/// Distorts the reply by the faults that strike the exchange, and says how it is to go out. The
/// order is fixed: first the fields, then lengths, then the way it is sent.
void applyFaults(Exchange& exchange, Delivery* delivery);

}  // namespace sim

#endif

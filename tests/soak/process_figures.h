#ifndef TESTS_SOAK_PROCESS_FIGURES_H
#define TESTS_SOAK_PROCESS_FIGURES_H

#include <cstddef>
#include <vector>

// What a process takes up, and whether that grows.

struct ProcessFigures {
    double residentKb = 0;
    double heapKb = 0;  ///< what the allocator has handed out
    int descriptors = 0;
    int threads = 0;
};

/// Of this process, now.
ProcessFigures processFigures();

/// A line through measured points.
struct Slope {
    double perSecond = 0;
    /// Half the width of the interval that has the true slope in it with a probability of 95 %, as
    /// far as the deviations of the blocks from the line are independent of each other.
    double uncertainty = 0;
};

/// The line through values that were measured in even steps of so many seconds: a least squares fit
/// to the means of ten blocks. Neighbouring samples of one process depend on each other, so that a
/// fit to all of them would believe itself too much. Needs 20 samples.
Slope slopeOf(const std::vector<double>& values, double stepSeconds);

/// The same for resident memory, which grows in pages and does not go: a run in which one of its
/// steps would make the slope is too short to tell, so the uncertainty has the largest step in it.
Slope slopeOfResident(const std::vector<double>& kilobytes, double stepSeconds);

#endif

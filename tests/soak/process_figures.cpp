#include "soak/process_figures.h"

#include <dirent.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

const int kBlocks = 10;
/// Student's t for 95 % and kBlocks - 2 degrees of freedom.
const double kStudent = 2.306;
/// A single step in the middle of a run tilts the line by so much of its height over the run.
const double kStepWeight = 1.5;

/// Entries of a directory of /proc, without "." and "..".
int entriesOf(const char* path) {
    DIR* const directory = opendir(path);
    int entries = 0;
    while (directory && readdir(directory)) {
        ++entries;
    }
    if (directory) {
        closedir(directory);
    }
    return entries - 2;
}

}  // namespace

ProcessFigures processFigures() {
    ProcessFigures figures;
    long total = 0;
    long resident = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &total, &resident) != 2) {
            resident = 0;
        }
        std::fclose(file);
    }
    figures.residentKb = double(resident) * double(sysconf(_SC_PAGESIZE)) / 1024;
    figures.heapKb = double(mallinfo2().uordblks) / 1024;
    figures.descriptors = entriesOf("/proc/self/fd") - 1;  // the one that it is read through
    figures.threads = entriesOf("/proc/self/task");
    return figures;
}

Slope slopeOf(const std::vector<double>& values, double stepSeconds) {
    const size_t size = values.size() / kBlocks;
    double means[kBlocks] = {};
    double mean = 0;
    for (int block = 0; block < kBlocks; ++block) {
        for (size_t i = 0; i < size; ++i) {
            means[block] += values[size_t(block) * size + i] / double(size);
        }
        mean += means[block] / kBlocks;
    }
    double squares = 0;
    double products = 0;
    for (int block = 0; block < kBlocks; ++block) {
        const double at = block - (kBlocks - 1) / 2.0;
        squares += at * at;
        products += at * (means[block] - mean);
    }
    const double perBlock = products / squares;
    double deviations = 0;
    for (int block = 0; block < kBlocks; ++block) {
        const double at = block - (kBlocks - 1) / 2.0;
        deviations += std::pow(means[block] - mean - perBlock * at, 2);
    }
    const double blockSeconds = double(size) * stepSeconds;
    Slope slope;
    slope.perSecond = perBlock / blockSeconds;
    slope.uncertainty = kStudent * std::sqrt(deviations / (kBlocks - 2) / squares) / blockSeconds;
    return slope;
}

Slope slopeOfResident(const std::vector<double>& kilobytes, double stepSeconds) {
    double largest = 0;
    for (size_t i = 1; i < kilobytes.size(); ++i) {
        largest = std::max(largest, kilobytes[i] - kilobytes[i - 1]);
    }
    Slope slope = slopeOf(kilobytes, stepSeconds);
    slope.uncertainty += kStepWeight * largest / (double(kilobytes.size()) * stepSeconds);
    return slope;
}

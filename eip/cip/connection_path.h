#ifndef EIP_CIP_CONNECTION_PATH_H
#define EIP_CIP_CONNECTION_PATH_H

#include "eip/cip/connection_manager.h"

// Connection paths in Forward Open and Forward Close. Internal to eip/cip.

namespace cip {

/// The size field counts words; a path of odd length is sent with a zero byte after it.
inline int pathWords(int pathLength) {
    return (pathLength + 1) / 2;
}

const int kMaxPaddedPath = (kMaxConnectionPath + 1) / 2 * 2;

/// Whether a path is there and fits a connection record; records (0, -1, 0) or (0, -31, 0) when
/// not.
bool isConnectionPath(const unsigned char* path, int pathLength);

}  // namespace cip

#endif

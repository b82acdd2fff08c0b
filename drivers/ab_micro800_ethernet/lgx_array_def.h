#ifndef DRIVERS_AB_MICRO800_ETHERNET_LGX_ARRAY_DEF_H
#define DRIVERS_AB_MICRO800_ETHERNET_LGX_ARRAY_DEF_H

/// An array tag as the project declares it: up to three dimensions, each lower..upper inclusive.
/// A plain value; all zero means "not declared".
struct LgxArrayDef {
    struct Bounds {
        int lower;
        int upper;
    };
    enum { kMaxDims = 3 };

    LgxArrayDef() : dims(0) {
        for (int i = 0; i < kMaxDims; ++i) {
            bounds[i].lower = 0;
            bounds[i].upper = 0;
        }
    }

    /// Number of elements: 0 without dimensions, else the product of the widths; a product beyond
    /// 2^31-1 is cut to that.
    int size() const;

    int dims;                 ///< 0 (undefined) to 3; a failed parse may leave more
    Bounds bounds[kMaxDims];  ///< valid for the first `dims`
};

#endif

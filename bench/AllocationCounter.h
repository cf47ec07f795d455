// Counts the heap allocations of the process (single-threaded): every global operator new
// is replaced (see AllocationCounter.cpp) and bumps these counters; the live
// and peak byte counts use the allocator's usable block sizes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace allocation {

struct Snapshot {
    std::uint64_t allocations; // calls of operator new since the start
    std::int64_t liveBytes;    // bytes held now
    std::int64_t peakBytes;    // most bytes held at once since the last resetPeak
};

Snapshot snapshot();
// Starts a new peak measurement from the bytes held now.
void resetPeak();

} // namespace allocation

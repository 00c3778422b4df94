// The core library's allocation, taken over by the test executable: blocks are counted, and the n-th allocation can be
// made to fail. The library reaches these definitions through its dynamic symbols.
#pragma once

#include "rvxcore.h"
#include "rvxcv/types.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace support {

struct CountedAlloc {
    static inline std::int64_t live = 0;    // blocks not released
    static inline std::int64_t made = 0;    // allocations asked for since reset
    static inline std::int64_t largest = 0; // the largest of them in bytes
    static inline std::int64_t failAt = 0;  // the allocation that fails, counted from 1; 0: none

    static void reset(std::int64_t fail = 0) {
        made = 0;
        largest = 0;
        failAt = fail;
    }
};

// Makes and frees a record, each allocation of the making failing in turn: the status tells, nothing is kept, the
// pointer stays as it was. Returns how many allocations there are.
template <class Record, class Make, class Free> std::int64_t failEveryAllocation(const Make &make, const Free &free) {
    const std::int64_t live = CountedAlloc::live;
    for (std::int64_t n = 1;; ++n) {
        Record *record = nullptr;
        CountedAlloc::reset(n);
        const StatusCode status = make(&record);
        CountedAlloc::reset();
        if (status == StatusOk) {
            EXPECT_GT(n, 1) << "no allocation failed";
            EXPECT_EQ(free(record), StatusOk);
            EXPECT_EQ(CountedAlloc::live, live);
            return n - 1;
        }
        EXPECT_EQ(status, StatusNoMemory);
        EXPECT_EQ(record, nullptr);
        EXPECT_EQ(CountedAlloc::live, live) << "leaked at allocation " << n;
    }
}

} // namespace support

extern "C" {
[[gnu::used, gnu::visibility("default")]] inline void *rvxMalloc(std::int64_t bytes) {
    using support::CountedAlloc;
    if (bytes < 1 || ++CountedAlloc::made == CountedAlloc::failAt) {
        return nullptr;
    }
    CountedAlloc::largest = std::max(CountedAlloc::largest, bytes);
    if (bytes > INT64_C(1) << 39) { // sanitizers do not answer such requests by null
        return nullptr;
    }
    void *block = std::aligned_alloc(64, (static_cast<std::size_t>(bytes) + 63) / 64 * 64);
    CountedAlloc::live += block != nullptr;
    return block;
}

[[gnu::used, gnu::visibility("default")]] inline void rvxFree(void *block) {
    support::CountedAlloc::live -= block != nullptr;
    std::free(block);
}
}

// Walks a row in whole vectors and finishes its tail without touching a byte outside it.
//
// A row kernel is a small struct whose call operator computes one block: `kernel(x, span)` with span Full (all lanes)
// or Part (the first n lanes; loads give zero in the others, stores leave memory alone). Written once, it serves block
// and tail alike, so results cannot depend on where a block ends. Two tail policies:
//
//   Tail::partial   the tail is a Part block: right for every kernel, also in place and accumulating ones
//   Tail::overlap   the tail is a Full block moved back to end with the row (rows shorter than a block: one Part
//                   block). Pixels are computed twice, so the kernel must never read what it writes: it says so
//                   by `static constexpr bool rereads = false`, and other kernels do not compile.
#pragma once

#include "kernel/base.h"
#include "kernel/vec.h"

namespace rvxcv {

enum class Tail { partial, overlap };

// Whole blocks follow each other `unrolled` at a time, two or four.
template <int lanes, Tail tail = Tail::partial, int unrolled = 2, class Kernel>
RVX_INLINE void walkRow(std::ptrdiff_t width, const Kernel &kernel) {
    static_assert(unrolled == 2 || unrolled == 4);
    std::ptrdiff_t x = 0;
    for (; x + unrolled * lanes <= width; x += unrolled * lanes) {
        kernel(x, Full{});
        kernel(x + lanes, Full{});
        if constexpr (unrolled == 4) {
            kernel(x + 2 * lanes, Full{});
            kernel(x + 3 * lanes, Full{});
        }
    }
    for (; x + lanes <= width; x += lanes) {
        kernel(x, Full{});
    }
    if (x < width) {
        if constexpr (tail == Tail::overlap) {
            static_assert(!Kernel::rereads, "an overlapping tail would compute from results");
            if (width >= lanes) {
                kernel(width - lanes, Full{});
                return;
            }
        }
        kernel(x, Part{static_cast<int>(width - x)});
    }
}

// A pointwise operation may treat an image whose rows follow each other without gaps as one long row: small images then
// cost one row's overhead. `gapless` is whether every step equals its row's bytes.
struct RowShape {
    std::int64_t width;
    std::int64_t height;

    RowShape(std::int64_t rowElements, std::int64_t rows, bool gapless) : width(rowElements), height(rows) {
        if (gapless) {
            width *= height;
            height = 1;
        }
    }
};

} // namespace rvxcv

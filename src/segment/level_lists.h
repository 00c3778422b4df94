// First-in first-out lists of pixels by level, in flat arrays that are exactly as large as they must be.
#pragma once

#include "segment/label_frame.h"

namespace rvxcv {

// The lists of a level that never falls. A pixel with value v is appended once, to the list max(v, current level), so
// one array of as many places as there are pixels serves all lists, sorted by value: the list of level l starts at the
// upper end of the places of value l and grows downward. When its level becomes the current one, everything below is
// free again (lower levels are done), and what is appended now just goes on downward: the list never wraps, and at
// most as many pixels are appended as have a value up to l. Pixels are read in the order in which they lie in memory.
class RisingLists {
public:
    // `starts` holds the number of pixels of each value; `next` as many elements; `places` one per pixel.
    RisingLists(std::uint32_t *starts, std::uint32_t *next, std::uint32_t levels, Place *places)
        : starts_(starts), next_(next), levels_(levels), places_(places) {
        std::uint32_t sum = 0;
        for (std::uint32_t level = 0; level < levels; ++level) {
            sum += starts[level];
            starts[level] = next[level] = sum;
        }
    }

    RVX_INLINE void append(std::uint32_t level, Place place) const { places_[--next_[level]] = place; }

    // Calls take(end, n, waiting, level) for all pixels in their order, `most` at a time: the next n are end[-1] to
    // end[-n], and those that wait in this list reach down to end[-waiting]. take appends to this level or higher ones.
    template <int most, class Take> RVX_INLINE void run(const Take &take) const {
        for (std::uint32_t level = 0; level < levels_; ++level) {
            for (std::uint32_t i = starts_[level]; i != next_[level];) {
                const std::uint32_t n = std::min<std::uint32_t>(i - next_[level], most);
                take(places_ + i, n, i - next_[level], level);
                i -= n;
            }
        }
    }

private:
    std::uint32_t *starts_, *next_;
    std::uint32_t levels_;
    Place *places_;
};

// The lists of 256 levels that may fall, for pixels that move to a lower level while they wait. Nothing is removed from
// the middle of a list: the pixel is appended to its new one, and the entry left behind is passed over when its turn
// comes, since the pixel's level is no longer the list's. A list is a chain of small chunks out of one pool. Should the
// pool run out, the entries that count no longer are dropped; those that do are one per pixel at most, for which it
// must have room: pixels / (chunk - 1) and 256 chunks.
//
// The last slot of a chunk is the place of the next one. `Index` holds places of pixels and of slots.
template <class Index, std::uint32_t chunk> class FallingLists {
public:
    static constexpr std::uint32_t levels = 256;
    static constexpr std::int64_t chunkBytes = std::int64_t{chunk} * sizeof(Index);

    FallingLists(Index *slots, std::int64_t chunks)
        : slots_(slots), end_(static_cast<std::uint32_t>(std::min<std::int64_t>(chunks, UINT32_MAX / chunk) * chunk)) {
        std::fill(heads_, heads_ + levels, none);
        std::fill(tails_, tails_ + levels, none);
    }

    RVX_INLINE bool empty() const { return words_ == 0; }

    // isIn(place, level) says whether an entry counts.
    template <class IsIn> RVX_INLINE void append(std::uint32_t level, Place place, const IsIn &isIn) {
        std::uint32_t tail = tails_[level];
        if (tail % chunk == last) [[unlikely]] {
            tail = grow(level, isIn);
        }
        slots_[tail] = static_cast<Index>(place);
        tails_[level] = tail + 1;
        occupied_[level / 64] |= 1ull << level % 64;
        words_ |= 1u << level / 64;
    }

    // Takes the first entry of the lowest level, where there is one; it may no longer count.
    RVX_INLINE Place takeFirst(std::uint32_t *lowest) {
        const auto word = static_cast<std::uint32_t>(std::countr_zero(words_));
        const std::uint32_t level = word * 64 + static_cast<std::uint32_t>(std::countr_zero(occupied_[word]));
        std::uint32_t head = heads_[level];
        const Place place = slots_[head];
        ++head;
        if (head == tails_[level]) {
            tails_[level] = head = first(head); // the chunk is kept, from its beginning
            clear(level);
        } else if (head % chunk == last) {
            const std::uint32_t done = first(head);
            head = slots_[head];
            release(done);
        }
        heads_[level] = head;
        *lowest = level;
        return place;
    }

    // The place that the lowest level's list holds a few entries later, or any number.
    RVX_INLINE Place later(std::uint32_t level, std::uint32_t entries) const {
        return slots_[std::min(heads_[level] + entries, tails_[level] - 1)];
    }

private:
    static constexpr std::uint32_t last = chunk - 1, none = chunk - 1; // of the first chunk, which holds nothing

    static std::uint32_t first(std::uint32_t slot) { return slot - slot % chunk; }
    RVX_INLINE void clear(std::uint32_t level) {
        occupied_[level / 64] &= ~(1ull << level % 64);
        words_ &= ~(std::uint32_t{occupied_[level / 64] == 0} << level / 64);
    }
    RVX_INLINE void release(std::uint32_t start) {
        slots_[start + last] = static_cast<Index>(free_);
        free_ = start;
    }

    // A further chunk for a list whose last one is full, or which has none. Returns its tail.
    template <class IsIn> [[gnu::noinline]] std::uint32_t grow(std::uint32_t level, const IsIn &isIn) {
        if (free_ == 0 && fresh_ == end_) {
            for (std::uint32_t each = 0; each < levels; ++each) {
                clean(each, isIn);
            }
            if (tails_[level] % chunk != last) {
                return tails_[level];
            }
        }
        std::uint32_t start = free_;
        if (start != 0) {
            free_ = slots_[start + last];
        } else {
            start = fresh_;
            fresh_ += chunk;
        }
        if (heads_[level] == tails_[level]) {
            heads_[level] = start;
        } else {
            slots_[tails_[level]] = static_cast<Index>(start);
        }
        return tails_[level] = start;
    }

    // Drops the entries of a list that no longer count, and gives back the chunks that are not needed.
    template <class IsIn> void clean(std::uint32_t level, const IsIn &isIn) {
        const std::uint32_t head = heads_[level], tail = tails_[level];
        if (tail == none) {
            return;
        }
        std::uint32_t to = first(head);
        heads_[level] = to;
        bool any = false;
        for (std::uint32_t from = head; from != tail; ++from) {
            if (from % chunk == last) {
                from = slots_[from];
            }
            if (isIn(Place{slots_[from]}, level)) {
                if (to % chunk == last) {
                    to = slots_[to];
                }
                slots_[to++] = slots_[from];
                any = true;
            }
        }
        // A tail behind the last slot belongs to the chunk of that slot: first() agrees.
        for (std::uint32_t kept = first(to); kept != first(tail);) {
            const std::uint32_t next = slots_[kept + last];
            slots_[kept + last] = slots_[next + last];
            if (next == first(tail)) {
                release(next);
                break;
            }
            release(next);
        }
        tails_[level] = to;
        if (!any) {
            release(heads_[level]);
            heads_[level] = tails_[level] = none;
            clear(level);
        }
    }

    Index *slots_;
    std::uint32_t end_, fresh_ = chunk;
    std::uint32_t free_ = 0;  // the first free chunk; its last slot leads to the next one
    std::uint32_t words_ = 0; // of occupied_, which are not 0
    std::uint64_t occupied_[levels / 64] = {};
    std::uint32_t heads_[levels], tails_[levels];
};

} // namespace rvxcv

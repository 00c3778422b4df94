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

    // Calls take(places, n, level) for pixels in their order, `most` at a time; take appends to this level or higher
    // ones. `ahead` is called with places that will be taken soon.
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

// The lists of 256 levels that may fall: rings through a head for each level, and a set of the levels that are not
// empty.
class FallingLists {
public:
    static constexpr std::uint32_t levels = 256;
    struct Links {
        Place next, previous;
    };

    // `links` holds `places` elements and one for each level.
    FallingLists(Links *links, std::int64_t places) : links_(links), heads_(static_cast<Place>(places)) {
        for (std::uint32_t level = 0; level < levels; ++level) {
            links_[heads_ + level] = {heads_ + level, heads_ + level};
        }
    }

    RVX_INLINE bool empty() const { return words_ == 0; }

    RVX_INLINE void append(std::uint32_t level, Place place) {
        const Place head = heads_ + level, last = links_[head].previous;
        links_[last].next = place;
        links_[place] = {head, last};
        links_[head].previous = place;
        occupied_[level / 64] |= 1ull << level % 64;
        words_ |= 1u << level / 64;
    }

    // The level may be left empty.
    RVX_INLINE void remove(std::uint32_t level, Place place) {
        const Links links = links_[place];
        links_[links.previous].next = links.next;
        links_[links.next].previous = links.previous;
        settle(level, links.previous == links.next && links.next == heads_ + level);
    }

    // Takes the first place of the lowest level, where there is one.
    RVX_INLINE Place takeFirst() {
        const auto word = static_cast<std::uint32_t>(std::countr_zero(words_));
        const std::uint32_t level = word * 64 + static_cast<std::uint32_t>(std::countr_zero(occupied_[word]));
        const Place head = heads_ + level, place = links_[head].next, next = links_[place].next;
        links_[head].next = next;
        links_[next].previous = head;
        settle(level, next == head);
        return place;
    }

private:
    RVX_INLINE void settle(std::uint32_t level, bool isEmpty) {
        const std::uint64_t rest = occupied_[level / 64] & ~(std::uint64_t{isEmpty} << level % 64);
        occupied_[level / 64] = rest;
        words_ &= ~(std::uint32_t{rest == 0} << level / 64);
    }

    Links *links_;
    Place heads_;
    std::uint64_t occupied_[levels / 64] = {};
    std::uint32_t words_ = 0; // of occupied_, which are not 0
};

} // namespace rvxcv

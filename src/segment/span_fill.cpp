// Flood fill in words of 64 pixels. A row is cut into words; each has three sets of pixels, as bits:
//
//   free      may join, but nothing has reached them yet
//   pending   reached, but what joins from them has not been looked for
//   reached   done
//
// Words with pending pixels are listed by row. Sweeps over the rows, down and up in turn, take the words of each row
// that has any: the pending pixels spread along the row, into the neighbouring words as far as the span goes, and what
// the span touches in the rows above and below moves from free to pending there. All of this is arithmetic on whole
// words. In a sweep everything that reaches a row does so before the row is taken, which keeps the visits of noise and
// ragged regions few.
//
// Painting. A word without free pixels is painted when its last pixels are reached, the others after the sweeps: so the
// image is touched once to learn the members of a word and once to paint it, however often the region comes back.
//
// Time. Every visit of a word reaches at least one pixel more, and costs the same whatever the shape: linear.
//
// Values before the fill. A word learns its members (or the steps that lead out of it) before any of its pixels is
// painted. Steps out of it are judged against neighbouring pixels that may have been painted; those are part of the
// region already, and whether a step leads to them changes nothing.
//
// Scratch. Of W x H pixels, with k = (W + 63) / 64 words in a row: up to 8 columns three sets of a byte, else three of
// 8 bytes and a list of 8, and in a gradient fill eight more sets; the rows' lists (none up to 8 columns), and one bit
// for each row, in whole words.
//
//   members     W <= 8      3 H               + H/8 + 8    <= 6 W H + 8
//               W <= 64    32 H + 4 H         + H/8 + 8    <= 36.2 H + 8           <= 6 W H + 8
//               W >  64    32 (k + 1) R + 4 H + H/8 + 8    <= (W + 131.2) H + 8    <= 6 W H + 8
//   gradient    W <= 8     11 H               + H/8 + 8    <= 16 W H + 8
//               W <= 64    96 H + 4 H         + H/8 + 8    <= 100.2 H + 8          <= 16 W H + 8
//               W >  64    96 (k + 1) R + 4 H + H/8 + 8    <= (3 W + 385.2) H + 8  <= 16 W H + 8
//
// where R < 2 H are the rows, of large images in whole tiles of eight. The 7 bytes that aligning the start may cost
// come with those 8 out of the 32 (64).
#include "frame/api.h"

#include "segment/pixel_words.h"
#include "segment/span_fill.h"

#include "kernel/scratch.h"

#include <algorithm>
#include <bit>

namespace rvxcv {
namespace {

enum Direction { right, left, up, upRight, upLeft, down, downRight, downLeft, directions };
constexpr int columnStep[directions] = {1, -1, 0, 1, -1, 0, 1, -1};
constexpr int rowStep[directions] = {0, 0, -1, -1, -1, 1, 1, 1};

// The pixels of all runs of members that hold a seed. Seeds are members.
RVX_INLINE std::uint64_t runsWith(std::uint64_t members, std::uint64_t seeds) {
    const std::uint64_t starts = members & ~(members << 1), ends = members & ~(members >> 1);
    // Adding the seeds carries out of exactly the runs that hold one, into the bit behind their ends.
    std::uint64_t sum = 0;
    const std::uint64_t carry = __builtin_add_overflow(members, seeds, &sum);
    const std::uint64_t hitEnds = (sum >> 1 | carry << 63) & ends;
    // The k-th start belongs to the k-th end.
    const std::uint64_t hitStarts = scatterBits(gatherBits(hitEnds, ends), starts);
    return (hitEnds << 1) - hitStarts;
}

// Plain and range fills: a pixel joins or it does not, from wherever it is reached.
class MemberRule {
public:
    MemberRule(const FillImage &image, Scratch &, std::int64_t) : image_(image) {}

    template <bool> std::uint64_t open(std::int64_t, std::int64_t x, std::int64_t y, int n) {
        return image_.members(image_, x, y, n);
    }
    RVX_INLINE std::uint64_t spread(std::int64_t, std::uint64_t members, std::uint64_t seeds) const {
        return runsWith(members, seeds);
    }
    template <Direction> RVX_INLINE std::uint64_t leaving(std::int64_t, std::uint64_t pixels) const { return pixels; }

private:
    const FillImage &image_;
};

// Gradient fills: every word knows from which of its pixels which neighbour may be joined.
template <class Word> class GradientRule {
public:
    GradientRule(const FillImage &image, Scratch &scratch, std::int64_t words)
        : image_(image), steps_(scratch.take<Steps>(words)) {}

    template <bool eight> std::uint64_t open(std::int64_t word, std::int64_t x, std::int64_t y, int n) {
        for (int d = 0; d < directions; ++d) {
            const int dx = columnStep[d], dy = rowStep[d];
            std::uint64_t steps = 0;
            const bool wanted = eight || dx == 0 || dy == 0;
            if (wanted && y + dy >= 0 && y + dy < image_.roi.height) {
                const int skipped = dx < 0 && x == 0 ? 1 : 0;
                const int last = dx > 0 && x + n == image_.roi.width ? 1 : 0;
                if (n - skipped - last > 0) {
                    steps = image_.steps(image_, x + skipped, y, n - skipped - last, dx, dy) << skipped;
                }
            }
            steps_[word].to[d] = static_cast<Word>(steps);
        }
        return lowBits(n);
    }
    RVX_INLINE std::uint64_t spread(std::int64_t word, std::uint64_t members, std::uint64_t seeds) const {
        // To the right: adding the seeds with a step to the steps carries into every pixel that is reached.
        const std::uint64_t toRight = steps_[word].to[right], first = seeds & toRight;
        std::uint64_t reached = seeds | ((toRight + first) ^ toRight ^ first);
        // To the left: spans double with every turn.
        std::uint64_t toLeft = std::uint64_t{steps_[word].to[left]} >> 1;
        for (int distance = 1; distance < wordPixels; distance *= 2) {
            reached |= toLeft & reached >> distance;
            toLeft &= toLeft >> distance;
        }
        return reached & members;
    }
    template <Direction d> RVX_INLINE std::uint64_t leaving(std::int64_t word, std::uint64_t pixels) const {
        return pixels & steps_[word].to[d];
    }

private:
    struct Steps {
        Word to[directions];
    };
    const FillImage &image_;
    Steps *steps_;
};

constexpr std::uint32_t unlisted = 0xffffffff, lastInList = 0xfffffffe;

// What a word knows. The first two sets never share a pixel: in words that nothing has looked at all bits are set.
template <class Word> struct Sets {
    Word free, pending, reached;
    std::uint32_t nextInList, padding;
};
template <> struct Sets<std::uint8_t> { // alone in its row: no list
    std::uint8_t free, pending, reached;
};

// The rows that have pending words, as bits.
class RowSet {
public:
    RowSet(Scratch &scratch, std::int64_t rows)
        : words_((rows + 63) / 64), bits_(scratch.take<std::uint64_t>((rows + 63) / 64, 8)) {
        std::fill(bits_, bits_ + words_, 0);
    }

    RVX_INLINE bool has(std::int64_t y) const { return (bits_[y >> 6] >> (y & 63) & 1) != 0; }
    RVX_INLINE void add(std::int64_t y) {
        count_ += has(y) ? 0 : 1;
        bits_[y >> 6] |= 1ull << (y & 63);
    }
    RVX_INLINE void remove(std::int64_t y) {
        count_ -= 1;
        bits_[y >> 6] &= ~(1ull << (y & 63));
    }
    std::int64_t count() const { return count_; }

    // The nearest row of the set below (above) y, or -1.
    std::int64_t after(std::int64_t y) const {
        std::int64_t word = y >> 6;
        std::uint64_t bits = bits_[word] & ~lowBits(static_cast<int>(y & 63) + 1);
        while (bits == 0) {
            if (++word == words_) {
                return -1;
            }
            bits = bits_[word];
        }
        return word * 64 + std::countr_zero(bits);
    }
    std::int64_t before(std::int64_t y) const {
        std::int64_t word = y >> 6;
        std::uint64_t bits = bits_[word] & lowBits(static_cast<int>(y & 63));
        while (bits == 0) {
            if (--word < 0) {
                return -1;
            }
            bits = bits_[word];
        }
        return word * 64 + 63 - std::countl_zero(bits);
    }

private:
    std::int64_t words_, count_ = 0;
    std::uint64_t *bits_;
};

template <class Word, class Rule, bool eight> class SpanFill {
public:
    SpanFill(const FillImage &image, std::uint8_t *buffer, std::uint64_t bytes)
        : image_(image), words_((std::int64_t{image.roi.width} + wordPixels - 1) / wordPixels), pitch_(words_ | 1),
          tile_(tileOf(image.roi.height)), scratch_(buffer, static_cast<std::int64_t>(bytes)),
          active_(scratch_, image.roi.height),
          sets_(scratch_.take<Sets<Word>>(rowAt(roundUp(image.roi.height, std::int64_t{1} << tile_)))),
          rule_(image, scratch_, rowAt(roundUp(image.roi.height, std::int64_t{1} << tile_))),
          lists_(listed ? scratch_.take<std::uint32_t>(image.roi.height) : nullptr) {}

    FilledRegion run(Point2i seed) {
        const std::int64_t column = seed.x / wordPixels;
        const std::uint64_t pixel = 1ull << (seed.x % wordPixels);
        filled_ = {0, seed.x, seed.y, seed.x, seed.y};
        top_ = bottom_ = seed.y;
        openRow(seed.y);
        Sets<Word> &first = opened(seed.y, column);
        first.free = static_cast<Word>(first.free | pixel); // whatever its value
        reach(seed.y, column, pixel);

        std::int64_t y = seed.y;
        bool down = true;
        for (;;) {
            takeRow(y);
            if (active_.count() == 0) {
                break;
            }
            std::int64_t next = ahead(y, down);
            if (next < 0) {
                down = !down;
                next = ahead(y, down);
            }
            y = next;
        }
        paintTheRest();
        return filled_;
    }

private:
    static constexpr bool listed = sizeof(Word) > 1;

    // Of large images the words of eight rows follow each other column by column: corridors run down as often as along,
    // and cross few lines and pages of memory both ways.
    int tileOf(std::int64_t height) const { return words_ > 1 && height >= 8 && words_ * height >= 1 << 16 ? 3 : 0; }
    RVX_INLINE std::int64_t rowAt(std::int64_t y) const {
        return (y >> tile_) * (pitch_ << tile_) + (y & ((1 << tile_) - 1));
    }
    RVX_INLINE std::int64_t at(std::int64_t y, std::int64_t column) const { return rowAt(y) + (column << tile_); }

    // The next row with pending words in a direction, or -1. When there is just one, it is mostly a neighbour.
    RVX_INLINE std::int64_t ahead(std::int64_t y, bool down) const {
        const std::int64_t there = down ? y + 1 : y - 1, back = down ? y - 1 : y + 1;
        if (there >= 0 && there < image_.roi.height && active_.has(there)) {
            return there;
        }
        if (active_.count() == 1 && back >= 0 && back < image_.roi.height && active_.has(back)) {
            return -1;
        }
        return down ? active_.after(y) : active_.before(y);
    }

    void openRow(std::int64_t y) {
        Sets<Word> *const row = sets_ + rowAt(y);
        for (std::int64_t column = 0; column < words_; ++column) {
            std::memset(static_cast<void *>(row + (column << tile_)), 0xff, sizeof(*row));
        }
        if constexpr (listed) {
            lists_[y] = lastInList;
        }
    }

    int pixelsOf(std::int64_t column) const {
        return static_cast<int>(std::min<std::int64_t>(wordPixels, image_.roi.width - column * wordPixels));
    }

    RVX_INLINE Sets<Word> &opened(std::int64_t y, std::int64_t column) {
        Sets<Word> &sets = sets_[at(y, column)];
        if ((sets.free & sets.pending) != 0) {
            open(sets, y, column);
        }
        return sets;
    }
    void open(Sets<Word> &sets, std::int64_t y, std::int64_t column) {
        const int n = pixelsOf(column);
        sets.free =
            static_cast<Word>(rule_.template open<eight>(at(y, column), column * wordPixels, y, n) & lowBits(n));
        sets.pending = sets.reached = 0;
    }

    // Pending pixels spread through the word; pending is then what this visit reached.
    RVX_INLINE void spread(Sets<Word> &sets, std::int64_t word, std::uint64_t seeds) {
        const std::uint64_t pixels = rule_.spread(word, sets.free | seeds, seeds);
        sets.free = static_cast<Word>(sets.free & ~pixels);
        sets.pending = static_cast<Word>(pixels);
    }

    // Goes on with the span into a neighbouring word, through this pixel.
    RVX_INLINE bool enter(std::int64_t y, std::int64_t column, std::uint64_t pixel) {
        Sets<Word> &sets = opened(y, column);
        if (((sets.free | sets.pending) & pixel) == 0) {
            return false;
        }
        spread(sets, at(y, column), sets.pending | pixel);
        return true;
    }

    RVX_INLINE void reach(std::int64_t y, std::int64_t column, std::uint64_t pixels) {
        if (pixels == 0) {
            return;
        }
        Sets<Word> &sets = opened(y, column);
        const std::uint64_t reached = pixels & sets.free;
        if (reached != 0) {
            sets.free = static_cast<Word>(sets.free ^ reached);
            sets.pending = static_cast<Word>(sets.pending | reached);
            active_.add(y);
            if constexpr (listed) {
                if (sets.nextInList == unlisted) {
                    sets.nextInList = lists_[y];
                    lists_[y] = static_cast<std::uint32_t>(column);
                }
            }
        }
    }

    // What the pixels of a word, and of the words beside it, touch in the row above or below.
    template <Direction vertical>
    RVX_INLINE std::uint64_t touched(std::int64_t word, std::uint64_t before, std::uint64_t here,
                                     std::uint64_t after) const {
        std::uint64_t pixels = rule_.template leaving<vertical>(word, here);
        if constexpr (eight) {
            constexpr auto toRight = static_cast<Direction>(vertical + 1),
                           toLeft = static_cast<Direction>(vertical + 2);
            pixels |=
                rule_.template leaving<toRight>(word, here) << 1 | rule_.template leaving<toLeft>(word, here) >> 1;
            if (before >> 63 != 0) {
                pixels |= rule_.template leaving<toRight>(word - (1 << tile_), before) >> 63;
            }
            if ((after & 1) != 0) {
                pixels |= rule_.template leaving<toLeft>(word + (1 << tile_), after) << 63;
            }
        }
        return pixels;
    }

    // Corners of the span's ends that lie in words which the span does not enter.
    template <Direction vertical> RVX_INLINE void reachCorners(std::int64_t y, std::int64_t first, std::int64_t last) {
        const std::int64_t target = y + rowStep[vertical];
        if (first > 0 && (sets_[at(y, first)].pending & 1) != 0) {
            reach(target, first - 1, touched<vertical>(at(y, first - 1), 0, 0, 1));
        }
        if (last + 1 < words_ && std::uint64_t{sets_[at(y, last)].pending} >> 63 != 0) {
            reach(target, last + 1, touched<vertical>(at(y, last + 1), 1ull << 63, 0, 0));
        }
    }

    void takeRow(std::int64_t y) {
        active_.remove(y);
        if (y > 0 && y == top_) {
            openRow(--top_);
        }
        if (y + 1 < image_.roi.height && y == bottom_) {
            openRow(++bottom_);
        }
        if constexpr (listed) {
            std::uint32_t column = lists_[y];
            lists_[y] = lastInList;
            while (column != lastInList) {
                Sets<Word> &sets = sets_[at(y, column)];
                const std::uint32_t next = sets.nextInList;
                sets.nextInList = unlisted;
                if (sets.pending != 0) { // else the span of another word came by
                    take(y, column);
                }
                column = next;
            }
        } else {
            take(y, 0);
        }
    }

    void take(std::int64_t y, std::int64_t column) {
        std::int64_t first = column, last = column;
        spread(sets_[at(y, column)], at(y, column), sets_[at(y, column)].pending);
        while (last + 1 < words_ && rule_.template leaving<right>(at(y, last), sets_[at(y, last)].pending) >> 63 != 0 &&
               enter(y, last + 1, 1)) {
            ++last;
        }
        while (first > 0 && (rule_.template leaving<left>(at(y, first), sets_[at(y, first)].pending) & 1) != 0 &&
               enter(y, first - 1, 1ull << 63)) {
            --first;
        }

        const bool above = y > 0, below = y + 1 < image_.roi.height;
        filled_.top = std::min(filled_.top, y);
        filled_.bottom = std::max(filled_.bottom, y);
        filled_.left =
            std::min(filled_.left, first * wordPixels + std::countr_zero(std::uint64_t{sets_[at(y, first)].pending}));
        filled_.right = std::max(filled_.right, last * wordPixels + wordPixels - 1 -
                                                    std::countl_zero(std::uint64_t{sets_[at(y, last)].pending}));
        if constexpr (eight) {
            if (above) {
                reachCorners<up>(y, first, last);
            }
            if (below) {
                reachCorners<down>(y, first, last);
            }
        }
        std::uint64_t before = 0;
        for (std::int64_t k = first; k <= last; ++k) {
            Sets<Word> &sets = sets_[at(y, k)];
            const std::uint64_t here = sets.pending, after = k < last ? sets_[at(y, k + 1)].pending : 0;
            sets.pending = 0;
            sets.reached = static_cast<Word>(sets.reached | here);
            filled_.area += std::popcount(here);
            if (sets.free == 0) {
                image_.paint(image_, k * wordPixels, y, pixelsOf(k), sets.reached);
            }
            if (above) {
                reach(y - 1, k, touched<up>(at(y, k), before, here, after));
            }
            if (below) {
                reach(y + 1, k, touched<down>(at(y, k), before, here, after));
            }
            before = here;
        }
    }

    // Words that still have free pixels, which nothing will reach.
    void paintTheRest() const {
        const std::int64_t first = filled_.left / wordPixels, last = filled_.right / wordPixels;
        for (std::int64_t y = filled_.top; y <= filled_.bottom; ++y) {
            for (std::int64_t column = first; column <= last; ++column) {
                const Sets<Word> &sets = sets_[at(y, column)];
                if (sets.free != 0 && sets.pending == 0 && sets.reached != 0) {
                    image_.paint(image_, column * wordPixels, y, pixelsOf(column), sets.reached);
                }
            }
        }
    }

    const FillImage &image_;
    const std::int64_t words_; // of a row
    const std::int64_t pitch_; // odd, so that the words of a column do not compete for a few places in the cache
    const int tile_;           // the logarithm of the rows in a tile
    Scratch scratch_;
    RowSet active_;
    Sets<Word> *const sets_;
    Rule rule_;
    std::uint32_t *const lists_;        // by row, the column of the first listed word
    std::int64_t top_ = 0, bottom_ = 0; // rows whose sets are there
    FilledRegion filled_{};
};

constexpr std::int32_t narrowColumns = 8; // sets of one byte up to here

template <class Rule8, class Rule64>
FilledRegion fill(const FillImage &image, Point2i seed, bool eightNeighbours, std::uint8_t *buffer,
                  std::uint64_t bytes) {
    const auto with = [&]<class Fill>() { return Fill(image, buffer, bytes).run(seed); };
    if (image.roi.width <= narrowColumns) {
        return eightNeighbours ? with.template operator()<SpanFill<std::uint8_t, Rule8, true>>()
                               : with.template operator()<SpanFill<std::uint8_t, Rule8, false>>();
    }
    return eightNeighbours ? with.template operator()<SpanFill<std::uint64_t, Rule64, true>>()
                           : with.template operator()<SpanFill<std::uint64_t, Rule64, false>>();
}

} // namespace

FilledRegion fillMembers(const FillImage &image, Point2i seed, bool eightNeighbours, std::uint8_t *buffer) {
    return fill<MemberRule, MemberRule>(image, seed, eightNeighbours, buffer, memberFillBytes(image.roi));
}

FilledRegion fillGradients(const FillImage &image, Point2i seed, bool eightNeighbours, std::uint8_t *buffer) {
    return fill<GradientRule<std::uint8_t>, GradientRule<std::uint64_t>>(image, seed, eightNeighbours, buffer,
                                                                         gradientFillBytes(image.roi));
}

} // namespace rvxcv

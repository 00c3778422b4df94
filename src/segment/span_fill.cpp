// Flood fill in words of 64 pixels. A row is cut into words; each has two sets of pixels, as bits:
//
//   free      may join, but nothing has reached them yet
//   pending   reached, but what joins from them has not been looked for
//
// and a pixel that was painted is in neither. A stack holds the words with pending pixels. Taking one, the engine
// spreads its pending pixels along the row, into the neighbouring words as far as the span goes; then it paints the
// span and moves what it touches in the rows above and below from free to pending. All of this is arithmetic on whole
// words: a row of a plain region costs some 30 instructions for 64 pixels, and a region of noise little more.
//
// Time. A word is taken from the stack once per time that it was pushed, and it is pushed when the first pixels become
// pending: every push has at least one pixel of its own. So the cost is linear in the pixels of the region, whatever
// its shape, and a word is asked for its members once.
//
// Values before the fill. A word learns its members (or the steps that lead out of it) before any of its pixels is
// painted. Steps out of it are judged against neighbouring pixels that may have been painted; those are part of the
// region already, and whether a step leads to them changes nothing.
//
// Scratch. Two sets per word and the stack, an index of four bytes for every push. A word that is alone in its row is
// on the stack exactly while it has pending pixels: H indices are enough. Otherwise pushes are at most as many as
// pixels. Up to 4 columns a set is one byte, else 8. Of W H pixels, with k words of columns, that is
//
//   members     W <= 4         2 H + 4 H                    <= 6 W H
//               W <= 64       16 H + 4 H                    <= 6 W H            (W >= 5)
//               W >  64       16 k H + 4 W H, k < W/64 + 1  <= 6 W H            (W >= 10)
//   gradient    W <= 4        10 H + 4 H                    <= 16 W H
//               W <= 64       80 H + 4 H                    <= (W + 2) H + 16 W H   (W >= 5: 87 H)
//               W >  64       80 k H + 4 W H                <= 16 W H           (W >= 8)
//
// and the 7 bytes that aligning the start may cost come out of the 32 (64). An index of four bytes reaches 2^38 pixels.
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
        : image_(image), steps_(scratch.take<Steps>(words, 8)) {}

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

template <class Word, class Rule, bool eight> class SpanFill {
public:
    SpanFill(const FillImage &image, std::uint8_t *buffer, std::uint64_t bytes)
        : image_(image), words_((std::int64_t{image.roi.width} + wordPixels - 1) / wordPixels),
          scratch_(buffer, static_cast<std::int64_t>(bytes)), sets_(scratch_.take<Sets>(words_ * image.roi.height, 8)),
          rule_(image, scratch_, words_ * image.roi.height),
          stack_(scratch_.take<std::uint32_t>(words_ == 1 ? image.roi.height
                                                          : std::int64_t{image.roi.width} * image.roi.height)) {}

    FilledRegion run(Point2i seed) {
        openRow(seed.y);
        top_ = bottom_ = seed.y;
        filled_ = {0, seed.x, seed.y, seed.x, seed.y};
        const std::int64_t column = seed.x / wordPixels;
        Sets &first = opened(seed.y, column);
        const std::uint64_t pixel = 1ull << (seed.x % wordPixels);
        first.free = static_cast<Word>(first.free & ~pixel);
        first.pending = static_cast<Word>(pixel);
        push(seed.y * words_ + column);
        while (depth_ > 0) {
            const std::int64_t word = stack_[--depth_];
            if (sets_[word].pending != 0) { // else a neighbouring word's span came by
                take(word);
            }
        }
        return filled_;
    }

private:
    struct Sets {
        Word free, pending;
    };

    void push(std::int64_t word) { stack_[depth_++] = static_cast<std::uint32_t>(word); }

    // The two sets never share a pixel: words that do have not been looked at.
    void openRow(std::int64_t y) {
        std::memset(static_cast<void *>(sets_ + y * words_), 0xff, static_cast<std::size_t>(words_) * sizeof(Sets));
    }

    int pixelsOf(std::int64_t column) const {
        return static_cast<int>(std::min<std::int64_t>(wordPixels, image_.roi.width - column * wordPixels));
    }

    RVX_INLINE Sets &opened(std::int64_t y, std::int64_t column) {
        Sets &sets = sets_[y * words_ + column];
        if ((sets.free & sets.pending) != 0) {
            const int n = pixelsOf(column);
            const std::uint64_t pixels =
                rule_.template open<eight>(y * words_ + column, column * wordPixels, y, n) & lowBits(n);
            sets = {static_cast<Word>(pixels), 0};
        }
        return sets;
    }

    RVX_INLINE void spread(Sets &sets, std::int64_t word, std::uint64_t seeds) {
        const std::uint64_t reached = rule_.spread(word, sets.free | seeds, seeds);
        sets.free = static_cast<Word>(sets.free & ~reached);
        sets.pending = static_cast<Word>(reached);
    }

    // Goes on with the span into a neighbouring word, through this pixel.
    RVX_INLINE bool enter(std::int64_t y, std::int64_t column, std::uint64_t pixel) {
        Sets &sets = opened(y, column);
        if (((sets.free | sets.pending) & pixel) == 0) {
            return false;
        }
        spread(sets, y * words_ + column, sets.pending | pixel);
        return true;
    }

    RVX_INLINE void reach(std::int64_t y, std::int64_t column, std::uint64_t pixels) {
        if (pixels == 0) {
            return;
        }
        Sets &sets = opened(y, column);
        const std::uint64_t reached = pixels & sets.free;
        if (reached != 0) {
            if (sets.pending == 0) {
                push(y * words_ + column);
            }
            sets.free = static_cast<Word>(sets.free ^ reached);
            sets.pending = static_cast<Word>(sets.pending | reached);
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
                pixels |= rule_.template leaving<toRight>(word - 1, before) >> 63;
            }
            if ((after & 1) != 0) {
                pixels |= rule_.template leaving<toLeft>(word + 1, after) << 63;
            }
        }
        return pixels;
    }

    template <Direction vertical> RVX_INLINE void reachCorners(std::int64_t y, std::int64_t first, std::int64_t last) {
        const std::int64_t row = y * words_, target = y + rowStep[vertical];
        if (first > 0) {
            reach(target, first - 1, touched<vertical>(row + first - 1, 0, 0, sets_[row + first].pending));
        }
        if (last + 1 < words_) {
            reach(target, last + 1, touched<vertical>(row + last + 1, sets_[row + last].pending, 0, 0));
        }
    }

    void take(std::int64_t word) {
        const std::int64_t y = rowOf(word), row = y * words_;
        std::int64_t first = word - row, last = first;
        spread(sets_[word], word, sets_[word].pending);
        while (last + 1 < words_ && rule_.template leaving<right>(row + last, sets_[row + last].pending) >> 63 != 0 &&
               enter(y, last + 1, 1)) {
            ++last;
        }
        while (first > 0 && (rule_.template leaving<left>(row + first, sets_[row + first].pending) & 1) != 0 &&
               enter(y, first - 1, 1ull << 63)) {
            --first;
        }

        const bool above = y > 0, below = y + 1 < image_.roi.height;
        if (above && y == top_) {
            openRow(--top_);
        }
        if (below && y == bottom_) {
            openRow(++bottom_);
        }
        filled_.top = std::min(filled_.top, y);
        filled_.bottom = std::max(filled_.bottom, y);
        filled_.left =
            std::min(filled_.left, first * wordPixels + std::countr_zero(std::uint64_t{sets_[row + first].pending}));
        filled_.right = std::max(filled_.right, last * wordPixels + wordPixels - 1 -
                                                    std::countl_zero(std::uint64_t{sets_[row + last].pending}));
        if constexpr (eight) {
            if (above) {
                reachCorners<up>(y, first, last);
            }
            if (below) {
                reachCorners<down>(y, first, last);
            }
        }
        std::uint64_t before = 0;
        for (std::int64_t column = first; column <= last; ++column) {
            const std::uint64_t here = sets_[row + column].pending;
            const std::uint64_t after = column < last ? sets_[row + column + 1].pending : 0;
            sets_[row + column].pending = 0;
            filled_.area += std::popcount(here);
            image_.paint(image_, column * wordPixels, y, pixelsOf(column), here);
            if (above) {
                reach(y - 1, column, touched<up>(row + column, before, here, after));
            }
            if (below) {
                reach(y + 1, column, touched<down>(row + column, before, here, after));
            }
            before = here;
        }
    }

    // A short division is several times as fast on older processors.
    std::int64_t rowOf(std::int64_t word) const {
        if (words_ == 1) {
            return word;
        }
        return static_cast<std::uint32_t>(word) / static_cast<std::uint32_t>(words_);
    }

    const FillImage &image_;
    const std::int64_t words_; // of a row
    Scratch scratch_;
    Sets *const sets_;
    Rule rule_;
    std::uint32_t *const stack_;
    std::int64_t depth_ = 0;
    std::int64_t top_ = 0, bottom_ = 0; // rows whose sets are there
    FilledRegion filled_{};
};

constexpr std::int32_t narrowColumns = 4; // sets of one byte up to here

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

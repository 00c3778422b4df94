// Erosion and dilation with a mask whose rows are single runs. Every distinct run length is one running extremum of
// each source row, formed from the next shorter one, whatever the number of mask rows that need it; an output row is
// then the extremum of one such row per mask row.
//
//        . x x x .      length 3: rows 0 and 4
//        x x x x x      length 5: rows 1 to 3, two loads from the extrema of 3
//        x x x x x
//        x x x x x
//        . x x x .
#pragma once

#include "kernel/scratch.h"
#include "morph/row_extrema.h"

#include "rvxcv/morph.h"

namespace rvxcv {

template <class T, class Op> class RunKernel {
    // The extrema of one length (1: the extended source row itself), a ring of as many rows as the mask's lower end and
    // the first mask row of this length lie apart.
    struct Level {
        std::int64_t length;
        std::int64_t firstMaskRow;
        std::uint8_t *ring, *end, *next;
    };

    // One mask row: where the extrema for the current output row lie.
    struct Run {
        const std::uint8_t *at, *ring, *end;
    };

    struct CombineRow {
        using V = Vec<T>;
        const Run *runs;
        std::int64_t count;
        T *dst;

        template <int vectors, class Span> RVX_INLINE void run(std::int64_t x, Span span) const {
            V extremum[vectors];
            const T *row = reinterpret_cast<const T *>(runs[0].at) + x;
            for (int v = 0; v < vectors; ++v) {
                extremum[v] = load<V>(row + v * V::lanes);
            }
            for (std::int64_t k = 1; k < count; ++k) {
                row = reinterpret_cast<const T *>(runs[k].at) + x;
                for (int v = 0; v < vectors; ++v) {
                    extremum[v] = Op::of(extremum[v], load<V>(row + v * V::lanes));
                }
            }
            for (int v = 0; v < vectors; ++v) {
                store(dst + x + v * V::lanes, extremum[v], span);
            }
        }
    };

public:
    RunKernel(const MorphTask<T> &task, const MorphSpec &spec)
        : task_(task), count_(spec.runCount), table_(spec.runsTable) {
        Scratch areas(task.scratch, task.scratchBytes);
        runs_ = areas.take<Run>(count_);
        levels_ = areas.take<Level>(count_ + 1);
        lines_ = areas.take<std::uint8_t>(0, 32);
        room_ = task.scratchBytes - (lines_ - task.scratch);
        firstRow_ = run(0).row;
        lastRow_ = run(count_ - 1).row;
        anchorY_ = spec.anchorY;
        findLevels();
    }

    // Whether fewer steps are taken than by the position kernel.
    bool pays(std::int64_t positions) const { return 2 * positions > 2 * count_ + 5 * levelCount_ + 4; }

    std::int64_t positions() const {
        std::int64_t sum = 0;
        for (std::int64_t k = 0; k < count_; ++k) {
            sum += run(k).length;
        }
        return sum;
    }

    // False, and nothing is written, when the scratch is too small.
    bool filter() {
        const std::int64_t margin = lastStart_ - firstStart_, bytes = task_.pixelBytes(), width = task_.roi.width;
        std::int64_t ringRows = 0;
        for (std::int64_t l = 0; l < levelCount_; ++l) {
            ringRows += ringHeight(levels_[l]);
        }
        const std::int64_t tile = tilePixels(width, room_, ringRows, margin, bytes);
        if (tile < std::min(width, std::max<std::int64_t>(margin / 2, 1))) {
            return false;
        }
        for (std::int64_t x0 = 0; x0 < width; x0 += tile) {
            filterTile(x0, std::min(tile, width - x0), scratchRowStep(tile + margin, bytes));
        }
        return true;
    }

private:
    RowRun run(std::int64_t k) const { return loadScalar(table_ + k); }
    std::int64_t ringHeight(const Level &level) const { return lastRow_ - level.firstMaskRow + 1; }

    // The distinct lengths in ascending order, and the columns that they span: from the first start to lastStart_, the
    // last pixel of the run that ends last.
    void findLevels() {
        levels_[0] = {1, lastRow_, nullptr, nullptr, nullptr};
        levelCount_ = 1;
        firstStart_ = run(0).start;
        lastStart_ = firstStart_;
        for (std::int64_t k = 0; k < count_; ++k) {
            const RowRun r = run(k);
            firstStart_ = std::min<std::int64_t>(firstStart_, r.start);
            lastStart_ = std::max<std::int64_t>(lastStart_, std::int64_t{r.start} + r.length - 1);
            std::int64_t l = levelCount_;
            while (levels_[l - 1].length > r.length) {
                --l;
            }
            Level &found = levels_[l - 1];
            if (found.length == r.length) {
                found.firstMaskRow = std::min<std::int64_t>(found.firstMaskRow, r.row);
                continue;
            }
            std::move_backward(levels_ + l, levels_ + levelCount_, levels_ + levelCount_ + 1);
            levels_[l] = {r.length, r.row, nullptr, nullptr, nullptr};
            ++levelCount_;
        }
    }

    const Level &levelOf(std::int64_t length) const {
        const Level *level = levels_;
        while (level->length != length) {
            ++level;
        }
        return *level;
    }

    void filterTile(std::int64_t x0, std::int64_t pixels, std::int64_t lineStep) {
        std::uint8_t *next = lines_;
        for (std::int64_t l = 0; l < levelCount_; ++l) {
            Level &level = levels_[l];
            level.ring = level.next = next;
            level.end = next += ringHeight(level) * lineStep;
        }
        // The slot that a mask row starts from is its distance from the mask's first row, around the ring.
        for (std::int64_t k = 0; k < count_; ++k) {
            const RowRun r = run(k);
            const Level &level = levelOf(r.length);
            const std::int64_t shift = (r.start - firstStart_) * task_.pixelBytes();
            runs_[k].ring = level.ring + shift;
            runs_[k].end = level.end + shift;
            runs_[k].at = runs_[k].ring + (r.row - firstRow_) % ringHeight(level) * lineStep;
        }
        std::int64_t made = task_.firstRow + firstRow_ - anchorY_;
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; ++y) {
            for (; made <= y + lastRow_ - anchorY_; ++made) {
                makeRow(task_.row(made), x0, pixels, lineStep);
            }
            const std::int64_t n = pixels * task_.channels;
            sweep<Vec<T>::lanes, 4>(n, CombineRow{runs_, count_, task_.dst.row(y) + x0 * task_.channels});
            for (std::int64_t k = 0; k < count_; ++k) {
                Run &r = runs_[k];
                r.at = r.at + lineStep == r.end ? r.ring : r.at + lineStep;
            }
        }
    }

    // Enters a source row into every level's ring.
    void makeRow(const T *row, std::int64_t x0, std::int64_t pixels, std::int64_t lineStep) {
        const std::int64_t span = pixels + lastStart_ - firstStart_;
        const T *shorter = nullptr;
        for (std::int64_t l = 0; l < levelCount_; ++l) {
            Level &level = levels_[l];
            T *line = reinterpret_cast<T *>(level.next);
            level.next = level.next + lineStep == level.end ? level.ring : level.next + lineStep;
            if (l == 0) {
                const Interval interval(task_.border, task_.roi.width, x0 + firstStart_, x0 + firstStart_ + span - 1);
                copyInterval(line, row, interval, task_.channels);
            } else {
                const std::int64_t known = levels_[l - 1].length, channels = task_.channels;
                if (level.length > 6 * known) {
                    std::memcpy(static_cast<void *>(line), shorter,
                                static_cast<std::size_t>(span * task_.pixelBytes()));
                    widenRows<T, Op>(line, span * channels, known, level.length, channels);
                    shorter = line;
                }
                finishRow<T, Op, Store::sloppy>(shorter, line, (span - level.length + 1) * channels,
                                                widenedTo(known, level.length), level.length, channels);
            }
            shorter = line;
        }
    }

    const MorphTask<T> &task_;
    std::int64_t count_;
    const RowRun *table_;
    Run *runs_;
    Level *levels_;
    std::uint8_t *lines_;
    std::int64_t room_, firstRow_, lastRow_, anchorY_;
    std::int64_t levelCount_, firstStart_, lastStart_;
};

} // namespace rvxcv

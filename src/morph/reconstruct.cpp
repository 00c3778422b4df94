// Morphological reconstruction (L. Vincent, Morphological Grayscale Reconstruction in Image Analysis, IEEE Transactions
// on Image Processing 2(2), 1993): scans first, as long as they pay, then lists by level for what is left, as in
// K. Robinson and P. Whelan, Efficient Morphological Reconstruction: a Downhill Filter, Pattern Recognition Letters 25,
// 2004. From the highest level downwards every pixel is raised at most once, at its final value, so the time is
// proportional to the pixels whatever they show.
//
// Pixels that were raised are nodes of the lists. The seeds, from which growth goes on after the scans, cannot be: one
// of them may be raised while it waits. They are bits, and each group of eight bits is a node in the list of the
// highest seed in it.
//
// Scratch: a link of four bytes for each pixel and each group of eight, the bits of the image and of a row, and two
// rows with a vector's space at their ends: at most 4.625 P + 8.125 W + 300 bytes.
#include "frame/api.h"

#include "kernel/checks.h"
#include "morph/growth_queue.h"
#include "morph/reconstruct_rows.h"

namespace rvxcv {
namespace {

constexpr std::int64_t reconstructBytes(RoiSize roi) {
    return saturatedSum(saturatedProduct(5, roi.width, roi.height), 8 * std::int64_t{roi.width} + 2304);
}

// Rows and columns of pixels that are numbered in scan order.
class Numbering {
public:
    explicit Numbering(std::int32_t width)
        : width_(static_cast<std::uint32_t>(width)), reciprocal_(UINT64_MAX / width_ + 1) {}

    // The product's upper half is exact for numbers and widths of 32 bits; a width of 1 has no reciprocal in 64 bits.
    RVX_INLINE std::uint32_t row(std::uint32_t number) const {
        __extension__ using Wide = unsigned __int128;
        return width_ == 1 ? number : static_cast<std::uint32_t>(Wide{reciprocal_} * number >> 64);
    }
    RVX_INLINE std::uint32_t column(std::uint32_t number, std::uint32_t row) const { return number - row * width_; }

private:
    std::uint32_t width_;
    std::uint64_t reciprocal_;
};

template <class G, bool eight> class Spreading {
public:
    using T = typename G::T;

    Spreading(Plane<const T> mask, Plane<T> marker, RoiSize roi, std::uint32_t *links, std::uint8_t *seeds)
        : mask_(mask), marker_(marker), roi_(roi), pixels_(static_cast<Node>(std::int64_t{roi.width} * roi.height)),
          numbering_(roi.width), seeds_(seeds), lists_(links) {}

    void run() {
        for (Node group = 0; group <= pixels_ / 8; ++group) {
            if (seeds_[group] != 0) {
                pushGroup(group);
            }
        }
        const auto keyOf = [this](Node node) { return node < pixels_ ? key(node) : highestSeed(node - pixels_); };
        for (Node node = 0; lists_.pop(&node, keyOf);) {
            if (node < pixels_) {
                spread(node);
            } else {
                spreadGroup(node - pixels_);
            }
        }
    }

private:
    using Node = std::uint32_t;

    RVX_INLINE std::uint32_t key(Node pixel) const {
        const std::uint32_t y = numbering_.row(pixel);
        return G::key(loadScalar(marker_.row(y) + numbering_.column(pixel, y)));
    }

    void pushGroup(Node group) { lists_.push(pixels_ + group, highestSeed(group)); }

    // Seeds above the current level were raised in the meantime: they are done.
    std::uint32_t highestSeed(Node group) {
        std::uint32_t best = 0;
        for (unsigned bits = seeds_[group]; bits != 0; bits &= bits - 1) {
            const std::uint32_t level = key(8 * group + static_cast<Node>(std::countr_zero(bits)));
            if (level > lists_.current()) {
                seeds_[group] &= static_cast<std::uint8_t>(~(bits & -bits));
            } else {
                best = std::max(best, level);
            }
        }
        return best;
    }

    void spreadGroup(Node group) {
        for (unsigned bits = seeds_[group]; bits != 0; bits &= bits - 1) {
            const Node pixel = 8 * group + static_cast<Node>(std::countr_zero(bits));
            if (key(pixel) == lists_.current()) {
                seeds_[group] &= static_cast<std::uint8_t>(~(bits & -bits));
                spread(pixel);
            }
        }
        const std::uint32_t next = highestSeed(group);
        if (seeds_[group] != 0) {
            lists_.push(pixels_ + group, next);
        }
    }

    // Raises the neighbours of a pixel that is done. The pixel's value is taken where it equals the mask's, so that the
    // sign of a zero never lifts a key above the current one.
    RVX_INLINE void spread(Node pixel) {
        const std::uint32_t y = numbering_.row(pixel), x = numbering_.column(pixel, y);
        const bool left = x > 0, right = x + 1 < static_cast<std::uint32_t>(roi_.width);
        T *const marker = marker_.row(y) + x;
        const T *const mask = mask_.row(y) + x;
        const T value = loadScalar(marker);
        const auto raise = [&](std::int64_t dy, std::int64_t dx) {
            T *const p = byteOffset(marker, dy * marker_.step) + dx;
            const T here = loadScalar(p);
            if (!G::isBelow(here, value)) {
                return;
            }
            const T limit = loadScalar(byteOffset(mask, dy * mask_.step) + dx);
            const T raised = G::isBelow(limit, value) ? limit : value;
            if (G::isBelow(here, raised)) {
                storeScalar(p, raised);
                lists_.push(static_cast<Node>(pixel + dy * roi_.width + dx), G::key(raised));
            }
        };
        const auto raiseThree = [&](std::int64_t dy) {
            raise(dy, 0);
            if constexpr (eight) {
                if (left) {
                    raise(dy, -1);
                }
                if (right) {
                    raise(dy, 1);
                }
            }
        };
        if (y > 0) {
            raiseThree(-1);
        }
        if (left) {
            raise(0, -1);
        }
        if (right) {
            raise(0, 1);
        }
        if (y + 1 < static_cast<std::uint32_t>(roi_.height)) {
            raiseThree(1);
        }
    }

    Plane<const T> mask_;
    Plane<T> marker_;
    RoiSize roi_;
    Node pixels_;
    Numbering numbering_;
    std::uint8_t *seeds_;
    GrowthQueue<sizeof(T)> lists_;
};

template <class G, bool eight>
void reconstructPlane(Plane<const typename G::T> mask, Plane<typename G::T> marker, RoiSize roi, std::uint8_t *buffer) {
    using T = typename G::T;
    const std::int64_t pixels = std::int64_t{roi.width} * roi.height, groups = pixels / 8 + 1;
    Scratch scratch(buffer, reconstructBytes(roi));
    auto *const links = scratch.take<std::uint32_t>(pixels + groups);
    auto *const seeds = scratch.take<std::uint8_t>(groups + 16);
    Scans<G, eight> scans(mask, marker, roi, scratch);
    // As long as a scan down and up leaves so many fewer seeds that spreading from them would take longer.
    constexpr int mostScans = 8;
    const std::int64_t worthwhile = pixels / (512 / static_cast<std::int64_t>(sizeof(T)));
    std::int64_t count = 0, before = pixels;
    for (int i = 0; i < mostScans; ++i) {
        scans.down();
        std::fill(seeds, seeds + groups + 16, std::uint8_t{0});
        count = scans.up(seeds);
        if (count <= worthwhile || before - count <= worthwhile) {
            break;
        }
        before = count;
    }
    if (count != 0) {
        Spreading<G, eight>(mask, marker, roi, links, seeds).run();
    }
}

template <class T, bool rises>
StatusCode reconstruct(const T *src, std::int32_t srcStep, T *srcDst, std::int32_t srcDstStep, RoiSize roi,
                       NormKind norm, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, srcDst, buffer).size(roi).steps(rowBytes<T>(roi.width), srcStep, srcDstStep);
    checks.multiples(sizeof(T), srcStep, srcDstStep);
    checks.require(norm == NormInf || norm == NormL1, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane<const T> mask{src, srcStep};
    const Plane<T> marker{srcDst, srcDstStep};
    if (norm == NormInf) {
        reconstructPlane<Growth<T, rises>, true>(mask, marker, roi, buffer);
    } else {
        reconstructPlane<Growth<T, rises>, false>(mask, marker, roi, buffer);
    }
    return StatusOk;
}

StatusCode reconstructSize(RoiSize roi, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi);
    return checks.failed() ? checks.status() : storeSize(reconstructBytes(roi), size);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiMorphReconstructDilate_8u_C1IR(const uint8_t *src, int32_t srcStep, uint8_t *srcDst, int32_t srcDstStep,
                                              RoiSize roi, NormKind norm, uint8_t *buffer) {
    return reconstruct<uint8_t, true>(src, srcStep, srcDst, srcDstStep, roi, norm, buffer);
}
StatusCode rvxiMorphReconstructDilate_16u_C1IR(const uint16_t *src, int32_t srcStep, uint16_t *srcDst,
                                               int32_t srcDstStep, RoiSize roi, NormKind norm, uint8_t *buffer) {
    return reconstruct<uint16_t, true>(src, srcStep, srcDst, srcDstStep, roi, norm, buffer);
}
StatusCode rvxiMorphReconstructDilate_32f_C1IR(const float *src, int32_t srcStep, float *srcDst, int32_t srcDstStep,
                                               RoiSize roi, NormKind norm, uint8_t *buffer) {
    return reconstruct<float, true>(src, srcStep, srcDst, srcDstStep, roi, norm, buffer);
}
StatusCode rvxiMorphReconstructErode_8u_C1IR(const uint8_t *src, int32_t srcStep, uint8_t *srcDst, int32_t srcDstStep,
                                             RoiSize roi, NormKind norm, uint8_t *buffer) {
    return reconstruct<uint8_t, false>(src, srcStep, srcDst, srcDstStep, roi, norm, buffer);
}
StatusCode rvxiMorphReconstructErode_16u_C1IR(const uint16_t *src, int32_t srcStep, uint16_t *srcDst,
                                              int32_t srcDstStep, RoiSize roi, NormKind norm, uint8_t *buffer) {
    return reconstruct<uint16_t, false>(src, srcStep, srcDst, srcDstStep, roi, norm, buffer);
}
StatusCode rvxiMorphReconstructErode_32f_C1IR(const float *src, int32_t srcStep, float *srcDst, int32_t srcDstStep,
                                              RoiSize roi, NormKind norm, uint8_t *buffer) {
    return reconstruct<float, false>(src, srcStep, srcDst, srcDstStep, roi, norm, buffer);
}

StatusCode rvxiMorphReconstructGetBufferSize_8u_C1R(RoiSize roi, int32_t *size) { return reconstructSize(roi, size); }
StatusCode rvxiMorphReconstructGetBufferSize_16u_C1R(RoiSize roi, int32_t *size) { return reconstructSize(roi, size); }
StatusCode rvxiMorphReconstructGetBufferSize_32f_C1R(RoiSize roi, int32_t *size) { return reconstructSize(roi, size); }

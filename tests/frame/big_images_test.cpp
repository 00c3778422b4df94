// Images beyond 2 GiB: rows that lie 2 GiB apart in address space of which only the touched pages cost memory. Every
// family gives what it gives for the same rows close together. A step is the largest multiple of 64 that a caller can
// pass, so row 9 lies beyond 2^34 bytes, and its index beyond 2^32 elements of four bytes: an offset that was formed in
// 32 bits, signed or not, in bytes or in elements, goes astray.
//
// Not here: rows of more than 2^31 bytes (no step covers them), scratch and records beyond 2 GiB (their size queries
// refuse), pictures of more than 2^31 pixels (those cost the memory).
#include "support/random.h"

#include <rvxcv.h>

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <array>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace {

using U8 = std::uint8_t;
using I8 = std::int8_t;
using U16 = std::uint16_t;
using I16 = std::int16_t;
using I32 = std::int32_t;

constexpr I32 farStep = INT32_MAX / 64 * 64, closeStep = 2048;
constexpr int slots = 4;
constexpr std::int64_t firstRow = -4, lastRow = 27;     // of an image with its margins
constexpr std::int64_t firstByte = -64, endByte = 1024; // of a row with its margins
constexpr std::int64_t farRow = 9;
constexpr RoiSize roi{37, 24};

// An argument of a call: an image, which stands for its first pixel and its step. Pixels are `factor` times 0 to
// range - 1, and 0 except for one of `rare`. (The type is that of the parameter; one that is written is no input.)
struct Image {
    int slot;
    int range = 4, factor = 1, rare = 1;
    template <class T> operator T *() const; // NOLINT(google-explicit-constructor)
};
// An array of pointers to the image's rows.
struct RowList {
    Image image;
    template <class Row> operator Row *() const; // NOLINT(google-explicit-constructor)
};
// A pyramid with this image of T alone.
template <class T> struct Level {
    Image image;
    operator const PyramidRecord *() const; // NOLINT(google-explicit-constructor)
};
// Memory for a result that is not an image.
struct Out {
    int number;
    template <class T> operator T *() const; // NOLINT(google-explicit-constructor)
};
// What is read and written: a copy of these bytes for every call.
struct Record {
    std::vector<U8> bytes;
    template <class T> operator T *() const; // NOLINT(google-explicit-constructor)
};
template <class T> Record recordOf(const std::vector<T> &values) {
    const U8 *const bytes = reinterpret_cast<const U8 *>(values.data());
    return {{bytes, bytes + values.size() * sizeof(T)}};
}
struct Scratch {
    operator U8 *() const; // NOLINT(google-explicit-constructor)
};

// The memory behind the arguments, during one call.
class Memory {
public:
    static constexpr std::size_t outBytes = 1 << 14;

    Memory() {
        for (U8 *&origin : origins_) {
            void *const map = mmap(nullptr, (lastRow + 2 - firstRow) * std::size_t{farStep}, PROT_READ | PROT_WRITE,
                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
            if (map == MAP_FAILED) {
                present_ = false;
                return;
            }
            origin = static_cast<U8 *>(map) + (-firstRow * std::int64_t{farStep} + 4096) / 4096 * 4096;
        }
    }

    bool present() const { return present_; }

    // Steps by slot; `changed`: the far rows of images that are only read hold something else.
    void begin(const std::array<I32, slots> &steps, bool changed) {
        steps_ = steps;
        changed_ = changed;
        read_ = written_ = {};
        before_.clear();
        record_.clear();
        out_.assign(4 * outBytes, 0);
        scratch_.assign(1 << 20, 0xa5);
    }

    I32 step(int slot) const { return steps_[slot]; }
    U8 *row(int slot, std::int64_t y) const { return origins_[slot] + y * steps_[slot]; }
    U8 *out(int number) { return out_.data() + static_cast<std::size_t>(number) * outBytes; }
    U8 *scratch() { return scratch_.data(); }
    U8 *record(const std::vector<U8> &bytes) {
        record_.resize((bytes.size() + 7) / 8);
        std::memcpy(record_.data(), bytes.data(), bytes.size());
        return reinterpret_cast<U8 *>(record_.data());
    }

    // The image's pixels, as values of T.
    template <class T> T *fill(const Image &image) {
        constexpr bool input = std::is_const_v<T>;
        using Pixel = std::remove_const_t<T>;
        (input ? read_ : written_)[image.slot] = true;
        for (std::int64_t y = firstRow; y <= lastRow; ++y) {
            support::Rng rng =
                support::makeRng("big image", 100 * image.slot + y + 10000 * (input && changed_ && y >= farRow));
            for (std::int64_t at = firstByte; at < endByte; at += sizeof(Pixel)) {
                const auto pick = rng();
                const auto value = pick % image.rare == 0 ? (pick >> 32) % image.range * image.factor : 0;
                const auto pixel = static_cast<Pixel>(value);
                std::memcpy(row(image.slot, y) + at, &pixel, sizeof pixel);
            }
        }
        if (!input) {
            before_.emplace_back(image.slot, pixels(image.slot, farRow));
        }
        return reinterpret_cast<T *>(row(image.slot, 0));
    }

    // Everything that a call could have written.
    std::vector<U8> outcome() const {
        std::vector<U8> all = out_;
        const U8 *const record = reinterpret_cast<const U8 *>(record_.data());
        all.insert(all.end(), record, record + record_.size() * sizeof record_[0]);
        for (int slot = 0; slot < slots; ++slot) {
            if (written_[slot]) {
                const std::vector<U8> image = pixels(slot, firstRow);
                all.insert(all.end(), image.begin(), image.end());
            }
        }
        return all;
    }

    bool uses(int slot) const { return read_[slot] || written_[slot]; }
    bool readsOnly() const { return read_ != std::array<bool, slots>{}; }
    // Whether the call has changed the far rows of every image that it writes.
    bool farRowsWritten() const {
        for (const auto &[slot, old] : before_) {
            if (old == pixels(slot, farRow)) {
                return false;
            }
        }
        return true;
    }

private:
    std::vector<U8> pixels(int slot, std::int64_t from) const {
        std::vector<U8> all;
        for (std::int64_t y = from; y <= lastRow; ++y) {
            all.insert(all.end(), row(slot, y) + firstByte, row(slot, y) + endByte);
        }
        return all;
    }

    std::array<U8 *, slots> origins_{};
    bool present_ = true, changed_ = false;
    std::array<I32, slots> steps_{};
    std::array<bool, slots> read_{}, written_{};
    std::vector<std::pair<int, std::vector<U8>>> before_;
    std::vector<U8> out_, scratch_;
    std::vector<std::uint64_t> record_;
};
Memory &memory() {
    static Memory all;
    return all;
}

template <class T> Image::operator T *() const { return memory().fill<T>(*this); }
template <class Row> RowList::operator Row *() const {
    using T = std::remove_pointer_t<std::remove_const_t<Row>>;
    static std::vector<std::remove_const_t<T> *> rows;
    rows.clear();
    memory().fill<T>(image);
    for (std::int64_t y = 0; y <= lastRow; ++y) {
        rows.push_back(reinterpret_cast<std::remove_const_t<T> *>(memory().row(image.slot, y)));
    }
    return rows.data();
}
template <class T> Level<T>::operator const PyramidRecord *() const {
    static std::array<void *, slots> images;
    static std::array<I32, slots> steps;
    static RoiSize sizes[] = {roi};
    static double scales[] = {1};
    static std::array<PyramidRecord, slots> records;
    memory().fill<const T>(image);
    images[image.slot] = memory().row(image.slot, 0);
    steps[image.slot] = memory().step(image.slot);
    records[image.slot] = {&images[image.slot], sizes, scales, &steps[image.slot], nullptr, 0};
    return &records[image.slot];
}
template <class T> Out::operator T *() const { return reinterpret_cast<T *>(memory().out(number)); }
template <class T> Record::operator T *() const { return reinterpret_cast<T *>(memory().record(bytes)); }
Scratch::operator U8 *() const { return memory().scratch(); }

std::tuple<Image, I32> spread(const Image &image) { return {image, memory().step(image.slot)}; }
template <class T> auto spread(const T &value) { return std::make_tuple(value); }

std::set<std::string> &called() {
    static std::set<std::string> names;
    return names;
}

// One member, with every image far in turn, then with all of them.
template <class Function, class... Arguments>
void expectSame(const char *name, Function *function, const Arguments &...arguments) {
    called().insert(name);
    const auto call = [&](const std::array<I32, slots> &steps, bool changed = false) {
        memory().begin(steps, changed);
        EXPECT_EQ(std::apply(function, std::tuple_cat(spread(arguments)...)), StatusOk) << name;
        return memory().outcome();
    };
    std::array<I32, slots> close, far;
    close.fill(closeStep);
    far.fill(farStep);
    const std::vector<U8> want = call(close);
    EXPECT_TRUE(memory().farRowsWritten()) << name << " shows nothing: the far rows stay what they were";
    if (memory().readsOnly()) {
        EXPECT_TRUE(call(close, true) != want) << name << " shows nothing: the far rows play no part";
    }
    for (int slot = 0; slot < slots; ++slot) {
        if (memory().uses(slot)) {
            std::array<I32, slots> steps = close;
            steps[slot] = farStep;
            EXPECT_TRUE(call(steps) == want) << name << ", image " << slot << " beyond 2 GiB";
        }
    }
    EXPECT_TRUE(call(far) == want) << name << ", every image beyond 2 GiB";
}
#define SAME(function, ...) expectSame(#function, function, __VA_ARGS__)

// A background model that has seen one frame.
template <class Params, class State>
Record learned(StatusCode (*getSize)(RoiSize, I32, const Params *, I32 *),
               StatusCode (*init)(RoiSize, I32, const Params *, State *),
               StatusCode (*learn)(const U8 *, I32, U8 *, I32, RoiSize, float, State *), const Params &params,
               int channels) {
    I32 bytes;
    EXPECT_EQ(getSize(roi, channels, &params, &bytes), StatusOk);
    std::vector<std::uint64_t> record(static_cast<std::size_t>(bytes / 8 + 1));
    State *const state = reinterpret_cast<State *>(record.data());
    EXPECT_EQ(init(roi, channels, &params, state), StatusOk);
    const std::vector<U8> frame(static_cast<std::size_t>(roi.width * channels * roi.height), 77);
    std::vector<U8> map(frame.size());
    EXPECT_EQ(learn(frame.data(), roi.width * channels, map.data(), roi.width, roi, 1.0f, state), StatusOk);
    return recordOf(record);
}

constexpr Image a{0}, b{1}, c{2}, d{3};
constexpr Image marks{2, 2, 1};    // masks: every second pixel
constexpr Image bright{0, 2, 200}; // contrast
constexpr Image wide{0, 251, 1}, wideB{1, 251, 1};
constexpr Image dots{0, 2, 255, 6}; // a few marked pixels
constexpr Image holes{0, 2, 1, 1};
constexpr Out out0{0}, out1{1}, out2{2}, out3{3};
constexpr Scratch scratch;
const I16 taps16[] = {1, 2, 1};
const float tapsF[] = {0.25f, 0.5f, 0.25f};
const float threeF[] = {1, 2, 3};

TEST(BigImages, GiveWhatCloseRowsGive) {
    if (!memory().present()) {
        GTEST_SKIP() << "no address space for 256 GiB";
    }

    // arith
    SAME(rvxiAdd_8u32f_C1IR, a, b, roi);
    SAME(rvxiAdd_32f_C1IMR, a, marks, b, roi);
    SAME(rvxiAddSquare_16u32f_C1IR, a, b, roi);
    SAME(rvxiAddProduct_8u32f_C1IMR, a, b, marks, d, roi);
    SAME(rvxiAddWeighted_32f_C1R, a, b, c, roi, 0.25f);
    SAME(rvxiAbsDiff_8u_C3R, a, b, c, roi);
    SAME(rvxiAbsDiffC_32f_C1R, a, b, roi, 1.5f);

    // filter: the pipeline
    SAME(rvxiFilterRowBorderPipeline_8u16s_C1R, a, RowList{b}, roi, taps16, 3, 1, BorderReplicate, 0, 1, scratch);
    SAME(rvxiFilterRowBorderPipeline_32f_C3R, a, RowList{b}, roi, tapsF, 3, 1, BorderReplicate, threeF, scratch);
    SAME(rvxiFilterColumnPipeline_16s8u_C1R, RowList{a}, b, roi, taps16, 3, 1, scratch);
    SAME(rvxiFilterColumnPipeline_32f_C3R, RowList{a}, b, roi, tapsF, 3, scratch);
    // filter: derivatives and low-pass
    SAME(rvxiFilterSobelVertBorder_8u8s_C1R, a, b, roi, Mask3x3, BorderReplicate, 0, 1, scratch);
    SAME(rvxiFilterSobelHorizBorder_8u16s_C1R, a, b, roi, Mask5x5, BorderInMemory, 0, scratch);
    SAME(rvxiFilterSobelCrossBorder_32f_C1R, a, b, roi, Mask3x3, BorderConstant, 1.0f, scratch);
    SAME(rvxiFilterScharrHorizBorder_32f_C1R, a, b, roi, BorderReplicate, 0.0f, scratch);
    SAME(rvxiFilterLaplacianBorder_8u16s_C1R, a, b, roi, Mask5x5, BorderReplicate, 0, scratch);
    SAME(rvxiFilterLaplacianBorder_32f_C1R, a, b, roi, Mask3x3, BorderInMemory, 0.0f, scratch);
    SAME(rvxiFilterLowpassBorder_8u_C1R, wide, b, roi, Mask5x5, BorderReplicate, 0, scratch);
    // filter: Gaussian, colour gradient
    const auto gaussian = [](PixelTypeCode type, int channels) {
        I32 specBytes, bufferBytes;
        EXPECT_EQ(rvxiFilterGaussianGetBufferSize(roi, 5, type, channels, &specBytes, &bufferBytes), StatusOk);
        std::vector<U8> spec(specBytes), buffer(bufferBytes);
        EXPECT_EQ(rvxiFilterGaussianInit(roi, 5, BorderReplicate, type, channels,
                                         reinterpret_cast<GaussianSpec *>(spec.data()), buffer.data(), 1.0f),
                  StatusOk);
        return Record{spec};
    };
    SAME(rvxiFilterGaussianBorder_8u_C1R, wide, b, roi, 0, gaussian(PixelType8u, 1), scratch);
    SAME(rvxiFilterGaussianBorder_16u_C3R, wide, b, roi, nullptr, gaussian(PixelType16u, 3), scratch);
    SAME(rvxiFilterGaussBorder_32f_C1R, a, b, roi, 5, BorderReplicate, scratch, 1.0f, 0.0f);
    SAME(rvxiGradientColorToGray_8u_C3C1R, wide, b, roi, NormL2);
    SAME(rvxiGradientColorToGray_32f_C3C1R, a, b, roi, NormL1);

    // pyramid
    constexpr RoiSize half{19, 12};
    SAME(rvxiPyrDown_Gauss5x5_8u_C1R, wide, b, roi, scratch);
    SAME(rvxiPyrDown_Gauss5x5_32f_C3R, a, b, roi, scratch);
    SAME(rvxiPyrUp_Gauss5x5_8u_C3R, wide, b, half, scratch);
    SAME(rvxiPyrUp_Gauss5x5_32f_C1R, a, b, half, scratch);
    for (const float rate : {2.0f, 1.5f}) {
        PyramidLayerDownState *down;
        PyramidLayerUpState *up;
        RoiSize small, least, most;
        ASSERT_EQ(rvxiGetPyramidDownROI(roi, &small, rate), StatusOk);
        ASSERT_EQ(rvxiPyramidLayerDownInitAlloc_8u_C1R(&down, roi, rate, taps16, 3, 2), StatusOk);
        SAME(rvxiPyramidLayerDown_8u_C1R, wide, roi, b, small, down);
        rvxiPyramidLayerDownFree_8u_C1R(down);
        ASSERT_EQ(rvxiPyramidLayerDownInitAlloc_32f_C3R(&down, roi, rate, tapsF, 3, 2), StatusOk);
        SAME(rvxiPyramidLayerDown_32f_C3R, a, roi, b, small, down);
        rvxiPyramidLayerDownFree_32f_C3R(down);
        ASSERT_EQ(rvxiGetPyramidUpROI(half, &least, &most, rate), StatusOk);
        ASSERT_EQ(rvxiPyramidLayerUpInitAlloc_16u_C1R(&up, half, rate, taps16, 3, 2), StatusOk);
        SAME(rvxiPyramidLayerUp_16u_C1R, wide, half, b, most, up);
        rvxiPyramidLayerUpFree_16u_C1R(up);
    }

    // stats
    SAME(rvxiIntegral_8u32s_C1R, a, b, roi, 0);
    SAME(rvxiIntegral_32f_C1R, a, b, roi);
    SAME(rvxiSqrIntegral_8u32s64f_C1R, a, b, c, roi, 0, 0.0);
    SAME(rvxiTiltedIntegral_8u32f_C1R, a, b, roi, 0.0f);
    SAME(rvxiTiltedSqrIntegral_8u32s64f_C1R, a, b, c, roi, 0, 0.0);
    SAME(rvxiRectStdDev_32f_C1R, a, b, c, RoiSize{20, 18}, Rect2i{1, 1, 5, 4});
    SAME(rvxiRectStdDev_32s_C1RSfs, a, b, c, RoiSize{20, 18}, Rect2i{1, 1, 5, 4}, 0);
    SAME(rvxiTiltedRectStdDev_32s32f_C1R, a, b, c, RoiSize{20, 14}, Rect2i{4, 1, 3, 3});
    SAME(rvxiNorm_L2_8u_C1MR, a, marks, roi, out0);
    SAME(rvxiNormDiff_Inf_32f_C3CMR, Image{0, 50000}, b, marks, roi, 2, out0);
    SAME(rvxiNormRel_L1_16u_C1MR, a, b, marks, roi, out0);
    SAME(rvxiMean_8u_C3CMR, a, marks, roi, 3, out0);
    SAME(rvxiMean_StdDev_32f_C1MR, a, marks, roi, out0, out1);
    SAME(rvxiMean_StdDev_16u_C1R, a, roi, out0, out1);
    SAME(rvxiMinMaxIndx_32f_C1R, Image{0, 50000}, roi, out0, out1, out2, out3);
    SAME(rvxiMinMaxIndx_8u_C3CMR, wide, marks, roi, 2, out0, out1, out2, out3);

    // morph: rank filters, erosion and dilation
    for (const RoiSize mask : {RoiSize{3, 3}, {4, 3}, {9, 9}, {1, 4}, {1, 11}}) { // a way of its own each
        SAME(rvxiFilterMinBorderReplicate_8u_C1R, wide, b, roi, mask, Point2i{0, 1}, scratch);
    }
    SAME(rvxiFilterMaxBorderReplicate_32f_C3R, a, b, roi, RoiSize{3, 5}, Point2i{1, 1}, scratch);
    const std::vector<U8> rectangle(9, 1), ellipse{0, 1, 0, 1, 1, 1, 0, 1, 0}, general{1, 0, 1, 0, 1, 0, 1, 0, 1};
    constexpr RoiSize maskSize{3, 3};
    for (const std::vector<U8> &mask : {rectangle, ellipse, general}) {
        std::vector<std::uint64_t> spec(4096);
        const auto morph = reinterpret_cast<MorphSpec *>(spec.data());
        ASSERT_EQ(rvxiMorphologyBorderInit_8u_C1R(roi.width, mask.data(), maskSize, morph, memory().scratch()),
                  StatusOk);
        SAME(rvxiErodeBorder_8u_C1R, a, b, roi, BorderReplicate, 0, morph, scratch);
        SAME(rvxiDilateBorder_8u_C1R, a, b, roi, BorderInMemory, 0, morph, scratch);
        ASSERT_EQ(rvxiMorphologyBorderInit_32f_C3R(roi.width, mask.data(), maskSize, morph, memory().scratch()),
                  StatusOk);
        SAME(rvxiDilateBorder_32f_C3R, a, b, roi, BorderReplicate, 0.0f, morph, scratch);
        ASSERT_EQ(rvxiMorphologyBorderInit_1u_C1R(roi.width, mask.data(), maskSize, morph, memory().scratch()),
                  StatusOk);
        const Image bits{0, 256};
        SAME(rvxiErodeBorder_1u_C1R, bits, 3, b, 5, roi, BorderReplicate, 0, morph, scratch);
        MorphState *state;
        ASSERT_EQ(rvxiMorphologyInitAlloc_8u_C1R(roi.width, mask.data(), maskSize, {1, 1}, &state), StatusOk);
        SAME(rvxiErodeBorderReplicate_8u_C1R, a, b, roi, BorderReplicate, state);
        rvxiMorphologyFree(state);
    }
    // morph: compound operations
    {
        MorphAdvSpec *compound;
        ASSERT_EQ(rvxiMorphAdvInitAlloc_8u_C1R(&compound, roi, ellipse.data(), maskSize), StatusOk);
        SAME(rvxiMorphOpenBorder_8u_C1R, wide, b, roi, BorderReplicate, 0, compound, scratch);
        SAME(rvxiMorphTophatBorder_8u_C1R, wide, b, roi, BorderReplicate, 0, compound, scratch);
        SAME(rvxiMorphGradientBorder_8u_C1R, wide, b, roi, BorderReplicate, 0, compound, scratch);
        rvxiMorphAdvFree(compound);
        // A mask of five rows reaches four rows beyond the region.
        constexpr RoiSize tall{3, 5};
        const std::vector<U8> column(15, 1);
        std::vector<std::uint64_t> spec(4096);
        const auto deep = reinterpret_cast<MorphAdvSpec *>(spec.data());
        ASSERT_EQ(rvxiMorphAdvInit_1u_C1R(roi, column.data(), tall, deep, memory().scratch()), StatusOk);
        SAME(rvxiMorphCloseBorder_1u_C1R, Image{0, 256, 1, 8}, 3, b, 5, roi, BorderInMemory, 0, deep, scratch);
        ASSERT_EQ(rvxiMorphAdvInit_16u_C1R(roi, column.data(), tall, deep, memory().scratch()), StatusOk);
        SAME(rvxiMorphCloseBorder_16u_C1R, wide, b, roi, BorderInMemory, 0, deep, scratch);
        ASSERT_EQ(rvxiMorphAdvInitAlloc_32f_C3R(&compound, roi, rectangle.data(), maskSize), StatusOk);
        SAME(rvxiMorphBlackhatBorder_32f_C3R, wide, b, roi, BorderReplicate, 0.0f, compound, scratch);
        rvxiMorphAdvFree(compound);
    }
    // morph: grey morphology, reconstruction
    {
        std::vector<std::uint64_t> spec(4096);
        const auto gray = reinterpret_cast<GrayMorphSpec *>(spec.data());
        const I32 values8[] = {1, 2, 1, 2, 3, 2, 1, 2, 1};
        const float valuesF[] = {1, 2, 1, 2, 3, 2, 1, 2, 1};
        ASSERT_EQ(rvxiGrayMorphologyInit_8u_C1R(roi.width, values8, maskSize, gray), StatusOk);
        SAME(rvxiGrayErodeBorder_8u_C1R, wide, b, roi, BorderReplicate, 0, gray, scratch);
        ASSERT_EQ(rvxiGrayMorphologyInit_32f_C1R(roi.width, valuesF, maskSize, gray), StatusOk);
        SAME(rvxiGrayDilateBorder_32f_C1R, a, b, roi, BorderInMemory, 0.0f, gray, scratch);
    }
    SAME(rvxiMorphReconstructDilate_8u_C1IR, wide, Image{1, 2, 255, 30}, roi, NormInf, scratch);
    SAME(rvxiMorphReconstructErode_32f_C1IR, wide, Image{1, 9, 30}, roi, NormL1, scratch);

    // feature
    SAME(rvxiCanny_16s8u_C1R, wide, wideB, c, roi, 100.0f, 200.0f, scratch);
    SAME(rvxiCanny_32f8u_C1R, wide, wideB, c, roi, 100.0f, 200.0f, scratch);
    SAME(rvxiCannyBorder_8u_C1R, bright, b, roi, CannyFilterSobel, Mask3x3, BorderReplicate, 0, CannyNormL2, scratch,
         300.0f, 500.0f);
    SAME(rvxiMinEigenVal_8u32f_C1R, wide, b, roi, MinEigenValSobel, 3, 3, scratch);
    SAME(rvxiEigenValsVecs_32f_C1R, a, b, roi, MinEigenValScharr, 3, 5, scratch);
    SAME(rvxiHarrisCorner_8u32f_C1R, wide, b, roi, DerivativeSobel, 3, 3, 0.04f, scratch);
    SAME(rvxiLineSuppression_8u_C1R, wide, wideB, c, roi, DerivativeSobel, 3, 3, 0.1f, scratch);
    SAME(rvxiFindPeaks3x3_32s_C1R, wide, roi, 5, out0, 1000, out1, PeakSquare, 1, scratch);
    SAME(rvxiFindPeaks3x3_32f_C1R, wide, roi, 5.0f, out0, 1000, out1, PeakCross, 1, scratch);
    {
        FastNSpec spec;
        ASSERT_EQ(rvxiFastNInit_8u_C1R(3, 9, 20, FastScore | FastNonMax, &spec), StatusOk);
        const FastNSpec *const fast = &spec;
        SAME(rvxiFastN_8u_C1R, dots, b, roi, out0, fast, scratch);
        SAME(rvxiFastN2DToVec_8u_C1R, a, roi, out0, 1000, out1);
    }
    constexpr HoughResolution resolution{1, 0.1f};
    const HoughLine region[] = {{-100, 0}, {100, 3}};
    SAME(rvxiHoughLine_8u32f_C1R, dots, roi, 6, out0, 1000, out1, scratch, resolution);
    SAME(rvxiHoughLine_Region_8u32f_C1R, dots, roi, 6, out0, 1000, out1, scratch, resolution, region);
    {
        I32 specBytes, bufferBytes;
        ASSERT_EQ(rvxiHoughProbLineGetSize_8u_C1R(roi, resolution, &specBytes, &bufferBytes), StatusOk);
        std::vector<std::uint64_t> memoryOfSpec(specBytes / 8 + 1);
        const auto spec = reinterpret_cast<HoughProbLineSpec *>(memoryOfSpec.data());
        ASSERT_EQ(rvxiHoughProbLineInit_8u32f_C1R(roi, 7, spec, resolution), StatusOk);
        SAME(rvxiHoughProbLine_8u32f_C1R, dots, roi, 4, 4, 3, out0, 100, out1, scratch, spec);
    }

    // segment: distances
    const I32 costs[] = {3, 4, 5};
    const float costsF[] = {1.0f, 1.4f, 2.2f};
    SAME(rvxiDistanceTransform_3x3_8u_C1R, a, b, roi, costs);
    SAME(rvxiDistanceTransform_5x5_8u16u_C1R, a, b, roi, costs);
    SAME(rvxiDistanceTransform_5x5_8u32f_C1R, a, b, roi, costsF);
    SAME(rvxiDistanceTransform_3x3_8u_C1IR, a, roi, costs);
    SAME(rvxiTrueDistanceTransform_8u32f_C1R, a, b, roi, scratch);
    // segment: filling, labelling
    constexpr Image open{0, 4, 1, 5};
    constexpr Point2i seed{20, 20};
    const U8 paint8[] = {9, 8, 7}, delta8[] = {1, 1, 1};
    SAME(rvxiFloodFill_4Con_8u_C1IR, open, roi, seed, 9, out0, scratch);
    SAME(rvxiFloodFill_8Con_32f_C1IR, open, roi, seed, 9.0f, out0, scratch);
    SAME(rvxiFloodFill_8Con_8u_C3IR, Image{0, 4, 1, 40}, roi, seed, paint8, out0, scratch);
    SAME(rvxiFloodFill_Range4Con_16u_C1IR, a, roi, seed, 9, 2, 2, out0, scratch);
    SAME(rvxiFloodFill_Grad8Con_8u_C1IR, a, roi, seed, 1, 1, 9, out0, scratch);
    SAME(rvxiFloodFill_Grad4Con_8u_C3IR, open, roi, seed, delta8, delta8, paint8, out0, scratch);
    SAME(rvxiLabelMarkers_16u_C1IR, holes, roi, 5, 999, NormInf, out0, scratch);
    SAME(rvxiLabelMarkers_8u32s_C1R, holes, b, roi, 5, 999, NormL1, out0, scratch);
    // segment: watershed and gradient segmentation, speckles, bounds
    constexpr Image seeds{1, 9, 1, 30};
    SAME(rvxiSegmentWatershed_8u32s_C1IR, wide, seeds, roi, NormInf, SegmentLines, scratch);
    SAME(rvxiSegmentGradient_8u32s_C1IR, wide, seeds, roi, NormL1, SegmentNoLines, scratch);
    SAME(rvxiSegmentGradient_8u32s_C3C1IR, wide, seeds, roi, NormL1, SegmentLines, scratch);
    SAME(rvxiMarkSpeckles_8u_C1IR, wide, roi, 9, 3, 5, NormL1, scratch);
    SAME(rvxiMarkSpeckles_32f_C1IR, wide, roi, 9.0f, 3, 5.0f, NormL1, scratch);
    SAME(rvxiBoundSegments_8u_C1IR, holes, roi, 9, NormInf);
    SAME(rvxiBoundSegments_32s_C1IR, holes, roi, 9, NormL1);
    // segment: fast marching, inpainting
    SAME(rvxiFastMarching_8u32f_C1R, a, b, roi, scratch);
    SAME(rvxiInpaint_8u_C1MR, wide, marks, b, roi, 2, InpaintMarch, scratch);
    SAME(rvxiInpaint_8u_C3MR, wide, marks, b, roi, 2, InpaintDiffusion, scratch);
    SAME(rvxiInpaint_32f_C1MR, wide, marks, b, roi, 3, InpaintMarch, scratch);

    // motion
    SAME(rvxiUpdateMotionHistory_8u32f_C1IR, a, b, roi, 5.0f, 3.0f);
    SAME(rvxiUpdateMotionHistory_32f_C1IR, a, b, roi, 5.0f, 3.0f);
    SAME(rvxiSampleLine_8u_C3R, wide, roi, out0, Point2i{1, 0}, Point2i{30, 23});
    SAME(rvxiSampleLine_32f_C1R, wide, roi, out0, Point2i{30, 23}, Point2i{28, 1});
    SAME(rvxiCopySubpix_8u_C1R, wide, roi, b, RoiSize{20, 12}, Point2f{15.3f, 17.6f});
    SAME(rvxiCopySubpixIntersect_16u32f_C1R, wide, roi, b, RoiSize{20, 12}, Point2f{15.3f, 15.6f}, out0, out1);
    {
        const std::vector<Point2f> points{{10, 17}, {20, 15}, {12, 12}}; // and guesses
        OpticalFlowState *state;
        ASSERT_EQ(rvxiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, roi, 5, 0), StatusOk);
        SAME(rvxiOpticalFlowPyrLK_8u_C1R, Level<U8>{wide}, Level<U8>{wideB}, points.data(), recordOf(points), out0,
             out1, 3, 5, 0, 5, 0.01f, state);
        rvxiOpticalFlowPyrLKFree_8u_C1R(state);
        ASSERT_EQ(rvxiOpticalFlowPyrLKInitAlloc_32f_C1R(&state, roi, 5, 0), StatusOk);
        SAME(rvxiOpticalFlowPyrLK_32f_C1R, Level<float>{wide}, Level<float>{wideB}, points.data(), recordOf(points),
             out0, out1, 3, 5, 0, 5, 0.01f, state);
        rvxiOpticalFlowPyrLKFree_32f_C1R(state);
    }
    // motion: background models
    const ForegroundGaussianParams gaussian8{3, 225, 16, 1125, 0.1f, 0.5f};
    const FGMMParams mixture{3, 4, 225, 16, 1125, 1, 0.5f, 0.9f, 0};
    const ForegroundHistogramParams histogram{8, 6, 10, 0.8f};
    const Record gaussian1 = learned(rvxiForegroundGaussianGetSize_8u, rvxiForegroundGaussianInit_8u,
                                     rvxiForegroundGaussian_8u_C1R, gaussian8, 1);
    const Record mixture3 = learned(rvxiFGMMGetSize_8u, rvxiFGMMInit_8u, rvxiFGMM_8u_C3R, mixture, 3);
    const Record histogram1 = learned(rvxiForegroundHistogramGetSize_8u, rvxiForegroundHistogramInit_8u,
                                      rvxiForegroundHistogram_8u_C1R, histogram, 1);
    SAME(rvxiForegroundGaussian_8u_C1R, wide, b, roi, 0.1f, gaussian1);
    SAME(rvxiForegroundGaussianUpdate_8u_C1R, wide, b, roi, 0.1f, gaussian1);
    SAME(rvxiForegroundGaussianGetBackground_8u_C1R, b, roi, gaussian1);
    SAME(rvxiFGMM_8u_C3R, wide, b, roi, 0.1f, mixture3);
    SAME(rvxiFGMMUpdate_8u_C3R, wide, b, roi, 0.1f, mixture3);
    SAME(rvxiFGMMGetBackground_8u_C3R, b, roi, mixture3);
    SAME(rvxiForegroundHistogram_8u_C1R, wide, b, roi, 0.1f, histogram1);
    SAME(rvxiForegroundHistogramUpdate_8u_C1R, wide, b, roi, 0.1f, histogram1);
    SAME(rvxiForegroundHistogramGetBackground_8u_C1R, b, roi, histogram1);

    // detect
    {
        const Rect2i rects[] = {{0, 0, 4, 9}, {0, 0, 2, 9}};
        const float weights[] = {-1, 2}, zero[] = {0}, low[] = {-1}, high[] = {1};
        const I32 weights32[] = {-1, 2}, zero32[] = {0}, low32[] = {-1}, high32[] = {1}, counts[] = {2};
        constexpr RoiSize windows{30, 15};
        const Record selected = recordOf(std::vector<I32>{windows.width * windows.height / 2});
        HaarClassifier *stage;
        ASSERT_EQ(rvxiHaarClassifierInitAlloc_32f(&stage, rects, weights, zero, low, high, counts, 1), StatusOk);
        SAME(rvxiApplyHaarClassifier_32f_C1R, wide, b, marks, windows, selected, stage, 0.0f);
        SAME(rvxiApplyMixedHaarClassifier_32s32f_C1R, wide, b, marks, d, windows, out0, stage, 0.0f);
        rvxiHaarClassifierFree_32f(stage);
        ASSERT_EQ(rvxiHaarClassifierInitAlloc_32s(&stage, rects, weights32, zero32, low32, high32, counts, 1),
                  StatusOk);
        SAME(rvxiApplyHaarClassifier_32s_C1RSfs, wide, b, marks, windows, selected, stage, 0, 0);
        rvxiHaarClassifierFree_32s(stage);
    }

    // geometry
    SAME(rvxiUndistortRadial_8u_C1R, wide, b, roi, scratch, 40.0f, 40.0f, 18.0f, 12.0f, 0.1f, 0.01f);
    SAME(rvxiUndistortRadial_32f_C3R, wide, b, roi, scratch, 40.0f, 40.0f, 18.0f, 12.0f, -0.1f, 0.01f);
    SAME(rvxiCreateMapCameraUndistort_32f_C1R, b, c, roi, scratch, 40.0f, 40.0f, 18.0f, 12.0f, 0.1f, 0.01f, 0.01f,
         0.02f);

    // Every group of the list of exported names has been here, except for those without images.
    std::ifstream list(RVXCV_SOURCE_DIR "/src/frame/exports.def");
    std::string line, group;
    std::set<std::string> missing;
    while (std::getline(list, line)) {
        if (line.rfind("// ", 0) == 0) {
            group = line.substr(3);
        } else if (line.rfind("EXPORT(", 0) == 0) {
            missing.insert(group);
        }
    }
    list.clear();
    list.seekg(0);
    while (std::getline(list, line)) {
        if (line.rfind("// ", 0) == 0) {
            group = line.substr(3);
        } else if (line.rfind("EXPORT(", 0) == 0 && called().count(line.substr(7, line.size() - 8)) != 0) {
            missing.erase(group);
        }
    }
    EXPECT_EQ(missing, (std::set<std::string>{"frame", "filter: pyramid descriptor and level sizes"}));
}

} // namespace

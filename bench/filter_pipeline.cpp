// Benchmarks of the separable pipeline. "RowColumn" is a whole blur as a user runs it: strips of rows through both
// stages, the row results in a ring that stays in the cache, replicated borders. The stages alone stand beside it.
#include "harness.h"

#include <algorithm>
#include <memory>

namespace {

constexpr std::int32_t stripRows = 16;

template <class K> std::vector<K> blurTaps(int size) {
    std::vector<K> taps;
    for (int i = 0; i < size; ++i) {
        const int weight = std::min(i, size - 1 - i) + 1;
        taps.push_back(std::is_same_v<K, float> ? static_cast<K>(weight) / static_cast<K>(size)
                                                : static_cast<K>(weight));
    }
    return taps;
}

inline std::int32_t divisorOf(int size) { return ((size + 1) / 2) * ((size + 2) / 2); }

// The functions of one combination of types; wrapped so that all have the same arguments.
template <class S, class M, class D, class K> struct Stages {
    using Row = StatusCode (*)(const S *, std::int32_t, M *const *, RoiSize, const K *, std::int32_t, std::uint8_t *);
    using Column = StatusCode (*)(const M *const *, D *, std::int32_t, RoiSize, const K *, std::int32_t,
                                  std::uint8_t *);
    using Size = StatusCode (*)(RoiSize, std::int32_t, std::int32_t *);
    int channels;
    Row row;
    Column column;
    Size rowSize, columnSize;
};

template <class S, class M, class D, class K> struct Blur {
    Blur(const Stages<S, M, D, K> &s, RoiSize size, int tapCount)
        : stages(s), roi(size), src(bench::image<S>(size, s.channels)), dst(bench::image<D>(size, s.channels)),
          taps(blurTaps<K>(tapCount)), ringRows(stripRows + tapCount - 1),
          ring(bench::image<M>({size.width, ringRows}, s.channels)), rows(static_cast<std::size_t>(ringRows)),
          window(static_cast<std::size_t>(ringRows)) {
        std::int32_t rowBytes = 0, columnBytes = 0;
        stages.rowSize(roi, tapCount, &rowBytes);
        stages.columnSize({roi.width, stripRows}, tapCount, &columnBytes);
        scratch = bench::scratch(std::max(rowBytes, columnBytes));
    }

    M *ringRow(int y) const { return ring->data + std::int64_t{y % ringRows} * roi.width * stages.channels; }
    std::int32_t tapCount() const { return static_cast<std::int32_t>(taps.size()); }

    // Source rows first..last-1 into the ring.
    void filterRows(int first, int last) {
        for (int y = first; y < last; ++y) {
            rows[static_cast<std::size_t>(y - first)] = ringRow(y);
        }
        if (first < last) {
            stages.row(src->data + std::int64_t{first} * roi.width * stages.channels, src->step, rows.data(),
                       {roi.width, last - first}, taps.data(), tapCount(), scratch.get());
        }
    }

    // Output rows first..last-1 from the ring.
    void filterColumns(int first, int last) {
        const int half = tapCount() / 2;
        for (int i = 0; i < last - first + tapCount() - 1; ++i) {
            window[static_cast<std::size_t>(i)] = ringRow(std::clamp(first - half + i, 0, roi.height - 1));
        }
        stages.column(window.data(), dst->data + std::int64_t{first} * roi.width * stages.channels, dst->step,
                      {roi.width, last - first}, taps.data(), tapCount(), scratch.get());
    }

    void run(bool rowStage, bool columnStage) {
        int filtered = 0;
        for (int y = 0; y < roi.height; y += stripRows) {
            const int end = std::min(y + stripRows, roi.height);
            const int needed = std::min(end + tapCount() / 2, roi.height);
            if (rowStage) {
                filterRows(filtered, needed);
            }
            filtered = needed;
            if (columnStage) {
                filterColumns(y, end);
            }
        }
    }

    Stages<S, M, D, K> stages;
    RoiSize roi;
    bench::ImagePointer<S> src;
    bench::ImagePointer<D> dst;
    std::vector<K> taps;
    int ringRows;
    bench::ImagePointer<M> ring;
    std::vector<M *> rows;
    std::vector<const M *> window;
    std::shared_ptr<std::uint8_t> scratch;
};

template <class S, class M, class D, class K>
void add(bench::Registry &rows, const std::string &name, const Stages<S, M, D, K> &stages, std::vector<int> tapCounts) {
    for (const int taps : tapCounts) {
        const std::string suffix = "Pipeline_" + name + "/taps:" + std::to_string(taps);
        const bench::Traffic traffic(1.0 * sizeof(S) * stages.channels, 1.0 * sizeof(D) * stages.channels);
        const auto addRow = [&](const char *stage, bool row, bool column) {
            rows.add(stage + suffix, traffic, [=](RoiSize roi) {
                auto blur = std::make_shared<Blur<S, M, D, K>>(stages, roi, taps);
                return [=] { blur->run(row, column); };
            });
        };
        addRow("RowColumn", true, true);
        addRow("Row", true, false);
        addRow("Column", false, true);
    }
}

template <class S> constexpr S zeros[3] = {};

template <class S, class M, class K, auto function>
StatusCode row1(const S *src, std::int32_t step, M *const *rows, RoiSize roi, const K *taps, std::int32_t count,
                std::uint8_t *buffer) {
    if constexpr (std::is_same_v<K, float>) {
        return function(src, step, rows, roi, taps, count, count / 2, BorderReplicate, 0.0f, buffer);
    } else {
        return function(src, step, rows, roi, taps, count, count / 2, BorderReplicate, 0, divisorOf(count), buffer);
    }
}
template <class S, class M, class K, auto function>
StatusCode row3(const S *src, std::int32_t step, M *const *rows, RoiSize roi, const K *taps, std::int32_t count,
                std::uint8_t *buffer) {
    if constexpr (std::is_same_v<K, float>) {
        return function(src, step, rows, roi, taps, count, count / 2, BorderReplicate, zeros<S>, buffer);
    } else {
        return function(src, step, rows, roi, taps, count, count / 2, BorderReplicate, zeros<S>, divisorOf(count),
                        buffer);
    }
}
template <class M, class D, class K, auto function>
StatusCode column(const M *const *rows, D *dst, std::int32_t step, RoiSize roi, const K *taps, std::int32_t count,
                  std::uint8_t *buffer) {
    if constexpr (std::is_same_v<K, float>) {
        return function(rows, dst, step, roi, taps, count, buffer);
    } else {
        return function(rows, dst, step, roi, taps, count, divisorOf(count), buffer);
    }
}

const bench::Family family([](bench::Registry &rows) {
    using I8 = std::int8_t;
    using U8 = std::uint8_t;
    using I16 = std::int16_t;
    using U16 = std::uint16_t;
    add<float, float, float, float>(rows, "32f_C1R",
                                    {1, row1<float, float, float, rvxiFilterRowBorderPipeline_32f_C1R>,
                                     column<float, float, float, rvxiFilterColumnPipeline_32f_C1R>,
                                     rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R,
                                     rvxiFilterColumnPipelineGetBufferSize_32f_C1R},
                                    {3, 5, 7, 31});
    add<float, float, float, float>(rows, "32f_C3R",
                                    {3, row3<float, float, float, rvxiFilterRowBorderPipeline_32f_C3R>,
                                     column<float, float, float, rvxiFilterColumnPipeline_32f_C3R>,
                                     rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R,
                                     rvxiFilterColumnPipelineGetBufferSize_32f_C3R},
                                    {7, 31});
    add<I16, I16, I16, I16>(rows, "16s_C1R",
                            {1, row1<I16, I16, I16, rvxiFilterRowBorderPipeline_16s_C1R>,
                             column<I16, I16, I16, rvxiFilterColumnPipeline_16s_C1R>,
                             rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R,
                             rvxiFilterColumnPipelineGetBufferSize_16s_C1R},
                            {3, 5, 7, 31});
    add<I16, I16, I16, I16>(rows, "16s_C3R",
                            {3, row3<I16, I16, I16, rvxiFilterRowBorderPipeline_16s_C3R>,
                             column<I16, I16, I16, rvxiFilterColumnPipeline_16s_C3R>,
                             rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R,
                             rvxiFilterColumnPipelineGetBufferSize_16s_C3R},
                            {7});
    add<U8, I16, U8, I16>(rows, "8u16s8u_C1R",
                          {1, row1<U8, I16, I16, rvxiFilterRowBorderPipeline_8u16s_C1R>,
                           column<I16, U8, I16, rvxiFilterColumnPipeline_16s8u_C1R>,
                           rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R,
                           rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R},
                          {3, 7});
    add<U8, I16, U8, I16>(rows, "8u16s8u_C3R",
                          {3, row3<U8, I16, I16, rvxiFilterRowBorderPipeline_8u16s_C3R>,
                           column<I16, U8, I16, rvxiFilterColumnPipeline_16s8u_C3R>,
                           rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R,
                           rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R},
                          {7});
    add<U8, I16, I8, I16>(rows, "8u16s8s_C1R",
                          {1, row1<U8, I16, I16, rvxiFilterRowBorderPipeline_8u16s_C1R>,
                           column<I16, I8, I16, rvxiFilterColumnPipeline_16s8s_C1R>,
                           rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R,
                           rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R},
                          {7});
    add<U16, U16, U16, U16>(rows, "16u_C1R",
                            {1, row1<U16, U16, U16, rvxiFilterRowBorderPipeline_16u_C1R>,
                             column<U16, U16, U16, rvxiFilterColumnPipeline_16u_C1R>,
                             rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R,
                             rvxiFilterColumnPipelineGetBufferSize_16u_C1R},
                            {3, 7});
    add<U16, U16, U16, U16>(rows, "16u_C3R",
                            {3, row3<U16, U16, U16, rvxiFilterRowBorderPipeline_16u_C3R>,
                             column<U16, U16, U16, rvxiFilterColumnPipeline_16u_C3R>,
                             rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R,
                             rvxiFilterColumnPipelineGetBufferSize_16u_C3R},
                            {7});
    add<I16, I16, I16, I16>(rows, "Low_16s_C1R",
                            {1, row1<I16, I16, I16, rvxiFilterRowBorderPipeline_Low_16s_C1R>,
                             column<I16, I16, I16, rvxiFilterColumnPipeline_Low_16s_C1R>,
                             rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R,
                             rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R},
                            {3, 7});
    add<I16, I16, I16, I16>(rows, "Low_16s_C3R",
                            {3, row3<I16, I16, I16, rvxiFilterRowBorderPipeline_Low_16s_C3R>,
                             column<I16, I16, I16, rvxiFilterColumnPipeline_Low_16s_C3R>,
                             rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R,
                             rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R},
                            {7});
});

} // namespace

// Benchmarks of the accumulators and absolute differences. They stream: the memory system is the limit.
#include "harness.h"

namespace {

// One row per member: all images of a size are tight and random.
template <class T, class F> void addUpdate(bench::Registry &rows, const char *name, F function) {
    rows.add(name, bench::Traffic::update(sizeof(T), 4), [=](RoiSize roi) {
        auto src = bench::image<T>(roi);
        auto acc = bench::image<float>(roi);
        return [=] { function(src->data, src->step, acc->data, acc->step, roi); };
    });
}

template <class T, class F> void addMasked(bench::Registry &rows, const char *name, F function) {
    rows.add(name, bench::Traffic::update(1 + sizeof(T), 4), [=](RoiSize roi) {
        auto src = bench::image<T>(roi);
        auto mask = bench::image<std::uint8_t>(roi, 1, 2);
        auto acc = bench::image<float>(roi);
        return [=] { function(src->data, src->step, mask->data, mask->step, acc->data, acc->step, roi); };
    });
}

template <class T, class F, class M>
void addProduct(bench::Registry &rows, const char *name, F function, const char *maskedName, M masked) {
    rows.add(name, bench::Traffic::update(2 * sizeof(T), 4), [=](RoiSize roi) {
        auto a = bench::image<T>(roi), b = bench::image<T>(roi, 1, 3);
        auto acc = bench::image<float>(roi);
        return [=] { function(a->data, a->step, b->data, b->step, acc->data, acc->step, roi); };
    });
    rows.add(maskedName, bench::Traffic::update(1 + 2 * sizeof(T), 4), [=](RoiSize roi) {
        auto a = bench::image<T>(roi), b = bench::image<T>(roi, 1, 3);
        auto mask = bench::image<std::uint8_t>(roi, 1, 2);
        auto acc = bench::image<float>(roi);
        return [=] { masked(a->data, a->step, b->data, b->step, mask->data, mask->step, acc->data, acc->step, roi); };
    });
}

template <class T, class F> void addBinary(bench::Registry &rows, const char *name, F function, int channels = 1) {
    rows.add(name, {2.0 * sizeof(T) * channels, 1.0 * sizeof(T) * channels}, [=](RoiSize roi) {
        auto a = bench::image<T>(roi, channels), b = bench::image<T>(roi, channels, 2);
        auto dst = bench::image<T>(roi, channels);
        return [=] { function(a->data, a->step, b->data, b->step, dst->data, dst->step, roi); };
    });
}

template <class T, class F> void addConstant(bench::Registry &rows, const char *name, F function) {
    rows.add(name, 2.0 * sizeof(T), [=](RoiSize roi) {
        auto src = bench::image<T>(roi);
        auto dst = bench::image<T>(roi);
        return [=] { function(src->data, src->step, dst->data, dst->step, roi); };
    });
}

// Calls with fewer or more arguments, in the shapes above.
constexpr float alpha = 0.05f;

const bench::Family family([](bench::Registry &rows) {
    addUpdate<std::uint8_t>(rows, "Add_8u32f_C1IR", rvxiAdd_8u32f_C1IR);
    addMasked<std::uint8_t>(rows, "Add_8u32f_C1IMR", rvxiAdd_8u32f_C1IMR);
    addUpdate<std::uint8_t>(rows, "AddSquare_8u32f_C1IR", rvxiAddSquare_8u32f_C1IR);
    addMasked<std::uint8_t>(rows, "AddSquare_8u32f_C1IMR", rvxiAddSquare_8u32f_C1IMR);
    addProduct<std::uint8_t>(rows, "AddProduct_8u32f_C1IR", rvxiAddProduct_8u32f_C1IR, "AddProduct_8u32f_C1IMR",
                             rvxiAddProduct_8u32f_C1IMR);
    addUpdate<std::uint8_t>(rows, "AddWeighted_8u32f_C1IR",
                            [](auto *src, auto srcStep, auto *acc, auto accStep, RoiSize roi) {
                                rvxiAddWeighted_8u32f_C1IR(src, srcStep, acc, accStep, roi, alpha);
                            });
    addMasked<std::uint8_t>(
        rows, "AddWeighted_8u32f_C1IMR",
        [](auto *src, auto srcStep, auto *mask, auto maskStep, auto *acc, auto accStep, RoiSize roi) {
            rvxiAddWeighted_8u32f_C1IMR(src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
        });
    addUpdate<std::int8_t>(rows, "Add_8s32f_C1IR", rvxiAdd_8s32f_C1IR);
    addMasked<std::int8_t>(rows, "Add_8s32f_C1IMR", rvxiAdd_8s32f_C1IMR);
    addUpdate<std::int8_t>(rows, "AddSquare_8s32f_C1IR", rvxiAddSquare_8s32f_C1IR);
    addMasked<std::int8_t>(rows, "AddSquare_8s32f_C1IMR", rvxiAddSquare_8s32f_C1IMR);
    addProduct<std::int8_t>(rows, "AddProduct_8s32f_C1IR", rvxiAddProduct_8s32f_C1IR, "AddProduct_8s32f_C1IMR",
                            rvxiAddProduct_8s32f_C1IMR);
    addUpdate<std::int8_t>(rows, "AddWeighted_8s32f_C1IR",
                           [](auto *src, auto srcStep, auto *acc, auto accStep, RoiSize roi) {
                               rvxiAddWeighted_8s32f_C1IR(src, srcStep, acc, accStep, roi, alpha);
                           });
    addMasked<std::int8_t>(
        rows, "AddWeighted_8s32f_C1IMR",
        [](auto *src, auto srcStep, auto *mask, auto maskStep, auto *acc, auto accStep, RoiSize roi) {
            rvxiAddWeighted_8s32f_C1IMR(src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
        });
    addUpdate<std::uint16_t>(rows, "Add_16u32f_C1IR", rvxiAdd_16u32f_C1IR);
    addMasked<std::uint16_t>(rows, "Add_16u32f_C1IMR", rvxiAdd_16u32f_C1IMR);
    addUpdate<std::uint16_t>(rows, "AddSquare_16u32f_C1IR", rvxiAddSquare_16u32f_C1IR);
    addMasked<std::uint16_t>(rows, "AddSquare_16u32f_C1IMR", rvxiAddSquare_16u32f_C1IMR);
    addProduct<std::uint16_t>(rows, "AddProduct_16u32f_C1IR", rvxiAddProduct_16u32f_C1IR, "AddProduct_16u32f_C1IMR",
                              rvxiAddProduct_16u32f_C1IMR);
    addUpdate<std::uint16_t>(rows, "AddWeighted_16u32f_C1IR",
                             [](auto *src, auto srcStep, auto *acc, auto accStep, RoiSize roi) {
                                 rvxiAddWeighted_16u32f_C1IR(src, srcStep, acc, accStep, roi, alpha);
                             });
    addMasked<std::uint16_t>(
        rows, "AddWeighted_16u32f_C1IMR",
        [](auto *src, auto srcStep, auto *mask, auto maskStep, auto *acc, auto accStep, RoiSize roi) {
            rvxiAddWeighted_16u32f_C1IMR(src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
        });
    addMasked<float>(rows, "Add_32f_C1IMR", rvxiAdd_32f_C1IMR);
    addUpdate<float>(rows, "AddSquare_32f_C1IR", rvxiAddSquare_32f_C1IR);
    addMasked<float>(rows, "AddSquare_32f_C1IMR", rvxiAddSquare_32f_C1IMR);
    addProduct<float>(rows, "AddProduct_32f_C1IR", rvxiAddProduct_32f_C1IR, "AddProduct_32f_C1IMR",
                      rvxiAddProduct_32f_C1IMR);
    addUpdate<float>(rows, "AddWeighted_32f_C1IR", [](auto *src, auto srcStep, auto *acc, auto accStep, RoiSize roi) {
        rvxiAddWeighted_32f_C1IR(src, srcStep, acc, accStep, roi, alpha);
    });
    addMasked<float>(rows, "AddWeighted_32f_C1IMR",
                     [](auto *src, auto srcStep, auto *mask, auto maskStep, auto *acc, auto accStep, RoiSize roi) {
                         rvxiAddWeighted_32f_C1IMR(src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
                     });
    addBinary<float>(rows, "AddWeighted_32f_C1R",
                     [](auto *a, auto aStep, auto *b, auto bStep, auto *dst, auto dstStep, RoiSize roi) {
                         rvxiAddWeighted_32f_C1R(a, aStep, b, bStep, dst, dstStep, roi, alpha);
                     });
    addBinary<std::uint8_t>(rows, "AbsDiff_8u_C1R", rvxiAbsDiff_8u_C1R);
    addBinary<std::uint8_t>(rows, "AbsDiff_8u_C3R", rvxiAbsDiff_8u_C3R, 3);
    addBinary<std::uint16_t>(rows, "AbsDiff_16u_C1R", rvxiAbsDiff_16u_C1R);
    addBinary<float>(rows, "AbsDiff_32f_C1R", rvxiAbsDiff_32f_C1R);
    addConstant<std::uint8_t>(rows, "AbsDiffC_8u_C1R",
                              [](auto *src, auto srcStep, auto *dst, auto dstStep, RoiSize roi) {
                                  rvxiAbsDiffC_8u_C1R(src, srcStep, dst, dstStep, roi, 100);
                              });
    addConstant<std::uint16_t>(rows, "AbsDiffC_16u_C1R",
                               [](auto *src, auto srcStep, auto *dst, auto dstStep, RoiSize roi) {
                                   rvxiAbsDiffC_16u_C1R(src, srcStep, dst, dstStep, roi, 100);
                               });
    addConstant<float>(rows, "AbsDiffC_32f_C1R", [](auto *src, auto srcStep, auto *dst, auto dstStep, RoiSize roi) {
        rvxiAbsDiffC_32f_C1R(src, srcStep, dst, dstStep, roi, 100);
    });
});

} // namespace

#include "harness.h"

#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace bench {

std::vector<void (*)(Registry &)> &families() {
    static std::vector<void (*)(Registry &)> list;
    return list;
}

ImagePointer<std::uint8_t> scene(RoiSize roi) {
    auto result = std::make_shared<Image<std::uint8_t>>(roi, 1);
    std::mt19937 rng(7);
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            double v = 110 + 40 * std::sin(x * 0.013) * std::cos(y * 0.017);
            v += ((x / 37 + y / 29) % 5 == 0) ? 60 : 0; // rectangles
            const double dx = std::fmod(x, 160.0) - 80, dy = std::fmod(y, 120.0) - 60;
            v += dx * dx + dy * dy < 900 ? -50 : 0; // discs
            v += 12 * std::sin(x * 0.7 + y * 0.4);  // fine texture
            v += static_cast<double>(rng() % 9) - 4;
            result->data[std::int64_t{y} * roi.width + x] = static_cast<std::uint8_t>(std::clamp(v, 0.0, 255.0));
        }
    }
    return result;
}

namespace {

// Time that this thread ran, so that other work on the machine disturbs as little as possible.
double threadSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double secondsPerCall(const std::function<void()> &operation, std::int64_t calls) {
    const double start = threadSeconds();
    for (std::int64_t i = 0; i < calls; ++i) {
        operation();
        benchmark::ClobberMemory();
    }
    return (threadSeconds() - start) / static_cast<double>(calls);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Calls in a batch of about two milliseconds.
std::int64_t batchSize(const std::function<void()> &operation) {
    const double once = std::max(secondsPerCall(operation, 3), 1e-9);
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(2e-3 / once));
}

// The least that a row's bytes cost: its sources are read, its images in place read and written, its destinations
// written, each as one plain stream. The streams advance together, a few groups of vectors at a time.
class LimitStream {
public:
    LimitStream(Traffic traffic, std::int64_t pixels)
        : blockPixels(pixelsOfBlock(traffic)), blocks((pixels + blockPixels - 1) / blockPixels),
          readGroups(groups(traffic.read)), updatedGroups(groups(traffic.updated)),
          writtenGroups(groups(traffic.written)), source(buffer(readGroups)), inPlace(buffer(updatedGroups)),
          destination(buffer(writtenGroups)) {}

    void operator()() const {
        run(vectors(source), vectors(inPlace), vectors(destination), blocks, readGroups, updatedGroups, writtenGroups);
    }

private:
    static constexpr int group = 4;

    __attribute__((target("avx2"))) static void run(const __m256i *from, __m256i *both, __m256i *to,
                                                    std::int64_t blocks, std::int64_t readGroups,
                                                    std::int64_t updatedGroups, std::int64_t writtenGroups) {
        __m256i bits = _mm256_setzero_si256();
        for (std::int64_t block = 0; block < blocks; ++block) {
            for (std::int64_t i = 0; i < readGroups; ++i, from += group) {
                for (int k = 0; k < group; ++k) {
                    bits = _mm256_xor_si256(bits, _mm256_load_si256(from + k));
                }
            }
            for (std::int64_t i = 0; i < updatedGroups; ++i, both += group) {
                for (int k = 0; k < group; ++k) {
                    _mm256_store_si256(both + k, _mm256_xor_si256(bits, _mm256_load_si256(both + k)));
                }
            }
            for (std::int64_t i = 0; i < writtenGroups; ++i, to += group) {
                for (int k = 0; k < group; ++k) {
                    _mm256_store_si256(to + k, bits);
                }
            }
        }
        asm volatile("" ::"x"(bits)); // stays in its register, and is needed
    }

    // The fewest pixels whose bytes are whole groups in every stream; sixteenths of a byte at the finest.
    static std::int64_t pixelsOfBlock(Traffic traffic) {
        const auto whole = [](double bytes) { return std::fmod(bytes, 32 * group) == 0; };
        std::int64_t pixels = 8;
        while (pixels < 2048 && !(whole(static_cast<double>(pixels) * traffic.read) &&
                                  whole(static_cast<double>(pixels) * traffic.updated) &&
                                  whole(static_cast<double>(pixels) * traffic.written))) {
            pixels *= 2;
        }
        return pixels;
    }
    std::int64_t groups(double bytesPerPixel) const {
        return std::llround(bytesPerPixel * static_cast<double>(blockPixels) / (32 * group));
    }
    std::shared_ptr<std::uint8_t> buffer(std::int64_t groupsOfBlock) const {
        const std::int64_t bytes = groupsOfBlock * blocks * 32 * group;
        auto result = scratch(bytes);
        std::memset(result.get(), 1, static_cast<std::size_t>(bytes));
        return result;
    }
    static __m256i *vectors(const std::shared_ptr<std::uint8_t> &bytes) {
        return reinterpret_cast<__m256i *>(bytes.get());
    }

    std::int64_t blockPixels, blocks, readGroups, updatedGroups, writtenGroups;
    std::shared_ptr<std::uint8_t> source, inPlace, destination;
};

void run(benchmark::State &state, const Registry::Row &row, RoiSize roi) {
    const std::int64_t pixels = std::int64_t{roi.width} * roi.height;
    const std::size_t copyBytes = static_cast<std::size_t>(pixels) * sizeof(float);
    const std::function<void()> operation = row.make(roi);
    const auto from = image<float>(roi), to = image<float>(roi);
    const std::function<void()> copy = [&] {
        std::memcpy(to->data, from->data, copyBytes);
        benchmark::DoNotOptimize(to->data);
    };

    const std::function<void()> stream = LimitStream(row.traffic, pixels);

    const std::int64_t calls = batchSize(operation), copies = batchSize(copy), streams = batchSize(stream);
    std::vector<double> operationTimes, copyTimes, streamTimes;
    for (auto _ : state) {
        copy(); // each batch starts warm
        copyTimes.push_back(secondsPerCall(copy, copies));
        stream();
        streamTimes.push_back(secondsPerCall(stream, streams));
        operation();
        operationTimes.push_back(secondsPerCall(operation, calls));
        state.SetIterationTime(operationTimes.back());
    }
    const double seconds = median(operationTimes), copySeconds = median(copyTimes), limitSeconds = median(streamTimes);
    const Goal *goal = roi.width == 640 && roi.height == 480 ? findGoal(row.name) : nullptr;
    const double goalUnit = goal != nullptr && goal->of == Goal::Of::limit ? limitSeconds : copySeconds;
    state.counters["ns/px"] = seconds * 1e9 / static_cast<double>(pixels);
    state.counters["GB/s"] = row.traffic.bytes() * static_cast<double>(pixels) / seconds * 1e-9;
    state.counters["copies"] = seconds / copySeconds;
    state.counters["limit"] = seconds / limitSeconds;
    state.counters["goal"] = goal != nullptr ? seconds / (goal->factor * goalUnit) : 0;
}

} // namespace
} // namespace bench

// Arguments are Google Benchmark's; a first argument without dashes is a filter.
int main(int argc, char **argv) {
    std::vector<std::string> arguments(argv, argv + argc);
    if (argc > 1 && argv[1][0] != '-') {
        arguments[1] = std::string("--benchmark_filter=") + argv[1];
    }
    arguments.emplace_back("--benchmark_counters_tabular=true");
    std::vector<char *> pointers;
    for (std::string &argument : arguments) {
        pointers.push_back(argument.data());
    }
    int count = static_cast<int>(pointers.size());

    bench::Registry registry;
    for (const auto registerRows : bench::families()) {
        registerRows(registry);
    }
    for (const bench::Registry::Row &row : registry.rows) {
        std::vector<RoiSize> sizes{{16, 16}, {64, 64}, {640, 480}, {1920, 1080}};
        sizes.insert(sizes.end(), row.moreSizes.begin(), row.moreSizes.end());
        for (const RoiSize roi : sizes) {
            const std::string name = row.name + "/" + std::to_string(roi.width) + "x" + std::to_string(roi.height);
            benchmark::RegisterBenchmark(name.c_str(), bench::run, row, roi)
                ->UseManualTime()
                ->Iterations(21)
                ->Unit(benchmark::kMicrosecond);
        }
    }
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

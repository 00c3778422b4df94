// rvxcv foreground FRAMES... -o DIR: what moves before a fixed camera, as a silhouette for every frame, and the
// background without it.
#include "command.h"
#include "film.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

namespace tools {
namespace {

struct Options {
    std::vector<std::string> frames;
    std::string out, model = "mixture";
    std::optional<float> threshold, shadow;
    float rate = 0.005f;
    int teach = 0;
    bool clean = false;
};

// What the library has for a model: of one channel, of three.
template <class P, class S> struct Functions {
    using Params = P;
    using State = S;
    StatusCode (*getSize)(RoiSize, std::int32_t, const P *, std::int32_t *);
    StatusCode (*init)(RoiSize, std::int32_t, const P *, S *);
    StatusCode (*decide[2])(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, float, S *);
    StatusCode (*update[2])(const std::uint8_t *, std::int32_t, const std::uint8_t *, std::int32_t, RoiSize, float,
                            S *);
    StatusCode (*background[2])(std::uint8_t *, std::int32_t, RoiSize, const S *);
};

constexpr Functions<ForegroundGaussianParams, ForegroundGaussianState> gaussian{
    rvxiForegroundGaussianGetSize_8u,
    rvxiForegroundGaussianInit_8u,
    {rvxiForegroundGaussian_8u_C1R, rvxiForegroundGaussian_8u_C3R},
    {rvxiForegroundGaussianUpdate_8u_C1R, rvxiForegroundGaussianUpdate_8u_C3R},
    {rvxiForegroundGaussianGetBackground_8u_C1R, rvxiForegroundGaussianGetBackground_8u_C3R}};
constexpr Functions<FGMMParams, FGMMState> mixture{rvxiFGMMGetSize_8u,
                                                   rvxiFGMMInit_8u,
                                                   {rvxiFGMM_8u_C1R, rvxiFGMM_8u_C3R},
                                                   {rvxiFGMMUpdate_8u_C1R, rvxiFGMMUpdate_8u_C3R},
                                                   {rvxiFGMMGetBackground_8u_C1R, rvxiFGMMGetBackground_8u_C3R}};
constexpr Functions<ForegroundHistogramParams, ForegroundHistogramState> histogram{
    rvxiForegroundHistogramGetSize_8u,
    rvxiForegroundHistogramInit_8u,
    {rvxiForegroundHistogram_8u_C1R, rvxiForegroundHistogram_8u_C3R},
    {rvxiForegroundHistogramUpdate_8u_C1R, rvxiForegroundHistogramUpdate_8u_C3R},
    {rvxiForegroundHistogramGetBackground_8u_C1R, rvxiForegroundHistogramGetBackground_8u_C3R}};

// Opening by 3x3: specks go, what is larger keeps its shape, shadows stay grey.
class Opening {
public:
    explicit Opening(RoiSize roi) : least_(roi.width, roi.height, 1) {
        std::int32_t forMin = 0, forMax = 0;
        check(rvxiFilterMinGetBufferSize_8u_C1R(roi.width, mask, &forMin), "FilterMinGetBufferSize");
        check(rvxiFilterMaxGetBufferSize_8u_C1R(roi.width, mask, &forMax), "FilterMaxGetBufferSize");
        buffer_.resize(static_cast<std::size_t>(std::max(forMin, forMax)));
    }
    void apply(Image &map) {
        check(rvxiFilterMinBorderReplicate_8u_C1R(map.data(), map.step(), least_.data(), least_.step(), map.roi(), mask,
                                                  centre, buffer_.data()),
              "FilterMin");
        check(rvxiFilterMaxBorderReplicate_8u_C1R(least_.data(), least_.step(), map.data(), map.step(), map.roi(), mask,
                                                  centre, buffer_.data()),
              "FilterMax");
    }

private:
    static constexpr RoiSize mask{3, 3};
    static constexpr Point2i centre{1, 1};
    Image least_;
    std::vector<std::uint8_t> buffer_;
};

Image frameOf(const Film &film, int channels) {
    const Image frame = film.picture();
    return frame.channels == channels ? frame : channels == 3 ? toColour(frame) : toGrey(frame);
}

std::string numbered(const std::filesystem::path &folder, int number) {
    char name[40];
    std::snprintf(name, sizeof name, "silhouette-%04d.png", number);
    return (folder / name).string();
}

template <class F> void follow(const Options &options, const F &functions, const typename F::Params &params) {
    Film film(options.frames);
    const int channels = film.picture().channels;
    const std::size_t of = channels == 3 ? 1 : 0;
    Image map(film.grey().width, film.grey().height, 1);
    const RoiSize roi = map.roi();
    std::int32_t bytes = 0;
    check(functions.getSize(roi, channels, &params, &bytes), "ForegroundGetSize");
    std::vector<std::uint64_t> memory(static_cast<std::size_t>(bytes) / 8 + 1);
    auto *const state = reinterpret_cast<typename F::State *>(memory.data());
    check(functions.init(roi, channels, &params, state), "ForegroundInit");

    const std::filesystem::path folder(options.out);
    std::error_code error;
    if (std::filesystem::create_directories(folder, error); !std::filesystem::is_directory(folder, error)) {
        throw Failure(options.out + ": cannot make this folder");
    }
    Opening opening(roi);
    Progress progress("pixels of foreground");
    do {
        const Image frame = frameOf(film, channels);
        const float rate = std::max(1 / static_cast<float>(film.number() + 1), options.rate);
        check(functions.decide[of](frame.data(), frame.step(), map.data(), map.step(), roi, options.clean ? 0 : rate,
                                   state),
              "Foreground");
        if (options.clean) {
            opening.apply(map);
            check(functions.update[of](frame.data(), frame.step(), map.data(), map.step(), roi, rate, state),
                  "ForegroundUpdate");
        }
        if (film.number() >= options.teach) {
            writeImage(numbered(folder, film.number()), map);
        }
        progress.show(film.number(), static_cast<std::size_t>(std::count(map.pixels.begin(), map.pixels.end(), 255)));
    } while (film.next());
    Image picture(roi.width, roi.height, channels);
    check(functions.background[of](picture.data(), picture.step(), roi, state), "ForegroundGetBackground");
    writeImage((folder / "background.png").string(), picture);
    const auto percent = [&](std::uint8_t value) {
        return 100 * static_cast<double>(std::count(map.pixels.begin(), map.pixels.end(), value)) /
               static_cast<double>(map.pixels.size());
    };
    std::printf("%d frames, in the last one foreground on %.1f %% of the pixels, shadow on %.1f %%\n",
                film.number() + 1, percent(ForegroundYes), percent(ForegroundShadow));
}

void run(const Options &options) {
    const float shadow = options.shadow.value_or(0.5f);
    if (options.model == "mixture") {
        follow(options, mixture, {3, options.threshold.value_or(4), 225, 16, 1125, 1, shadow, 0.9f, 0});
    } else if (options.model == "gaussian") {
        follow(options, gaussian, {options.threshold.value_or(3), 225, 16, 1125, 0.1f, shadow});
    } else {
        if (options.shadow) {
            throw UsageError("--shadow", "the histogram knows no shadows");
        }
        const float tolerance = options.threshold.value_or(10);
        follow(options, histogram, {8, 6, static_cast<std::int32_t>(std::lround(std::min(tolerance, 255.0f))), 0.8f});
    }
}

} // namespace

void addForeground(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("foreground", "Tell what moves before a fixed camera from the background");
    addFrames(command, options->frames);
    command
        .option("-o,--output", options->out,
                "Folder to write: silhouette-0000.png and so on, with shadows in grey, and background.png")
        .required();
    command.option("--model", options->model, "What is remembered of each pixel")
        .oneOf({"mixture", "gaussian", "histogram"})
        .showDefault();
    command.option("--rate", options->rate, "How fast new things become background: the weight of a frame")
        .range(1e-6, 1.0)
        .showDefault();
    command
        .option("--threshold", options->threshold,
                "Standard deviations from the background (mixture: 4, gaussian: 3), or grey levels (histogram: 10)")
        .range(0.01, 1000.0);
    command
        .option("--shadow", options->shadow,
                "A shadow leaves at least this part of the light; 0: no shadows (default 0.5)")
        .range(0.0, 0.99);
    command.option("--teach", options->teach, "So many first frames teach the background only: no silhouettes of them")
        .range(0, 1000000)
        .showDefault();
    command.flag("--clean", options->clean, "Remove specks, and learn from what is left");
    command.action([options] { run(*options); });
}

} // namespace tools

// rvxcv morph OP PHOTO -o OUT: flat morphology with a rectangle, an ellipse, a cross or the mask of a PBM file; the
// background removed with a ball; holes filled, the border cleared and domes found by reconstruction.
#include "command.h"
#include "reconstruction.h"
#include "rolling_ball.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string operation, photo, out, mask = "rect:5x5";
    int height = 20;
    int radius = 25;
    bool light = false;
};

struct Mask {
    RoiSize size;
    std::vector<std::uint8_t> bytes;
};

Mask parseMask(const std::string &text) {
    char shape[16] = {};
    int width = 0, height = 0, used = 0;
    if (std::sscanf(text.c_str(), "%15[a-z]:%dx%d%n", shape, &width, &height, &used) == 3 &&
        used == static_cast<int>(text.size())) {
        const std::string name = shape;
        if (width < 1 || height < 1 || width > 999 || height > 999) {
            throw Failure("mask " + text + ": sides must be 1 to 999");
        }
        Mask mask{{width, height}, {}};
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double u = (2.0 * x + 1) / width - 1, v = (2.0 * y + 1) / height - 1;
                const bool cross = x == (width - 1) / 2 || y == (height - 1) / 2;
                mask.bytes.push_back(name == "ellipse" ? u * u + v * v <= 1 : name == "cross" ? cross : 1);
            }
        }
        if (name == "rect" || name == "ellipse" || name == "cross") {
            return mask;
        }
    }
    if (text.find(':') != std::string::npos) {
        throw Failure("mask " + text + ": neither rect:WxH, ellipse:WxH, cross:WxH nor a PBM file");
    }
    const Image picture = toGrey(readImage(text));
    Mask mask{picture.roi(), {}};
    for (const std::uint8_t sample : picture.pixels) {
        mask.bytes.push_back(sample < 128); // in PBM, 1 is black
    }
    return mask;
}

using Basic = StatusCode (*)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, BorderKind,
                             std::uint8_t, const MorphSpec *, std::uint8_t *);
using Compound = StatusCode (*)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, BorderKind,
                                std::uint8_t, const MorphAdvSpec *, std::uint8_t *);

// An operation for one and for three channels: a single step or a compound one.
struct Operation {
    Basic basic[2] = {};
    Compound compound[2] = {};
};

const std::map<std::string, Operation> operations{
    {"erode", {{rvxiErodeBorder_8u_C1R, rvxiErodeBorder_8u_C3R}, {}}},
    {"dilate", {{rvxiDilateBorder_8u_C1R, rvxiDilateBorder_8u_C3R}, {}}},
    {"open", {{}, {rvxiMorphOpenBorder_8u_C1R, rvxiMorphOpenBorder_8u_C3R}}},
    {"close", {{}, {rvxiMorphCloseBorder_8u_C1R, rvxiMorphCloseBorder_8u_C3R}}},
    {"tophat", {{}, {rvxiMorphTophatBorder_8u_C1R, rvxiMorphTophatBorder_8u_C3R}}},
    {"blackhat", {{}, {rvxiMorphBlackhatBorder_8u_C1R, rvxiMorphBlackhatBorder_8u_C3R}}},
    {"gradient", {{}, {rvxiMorphGradientBorder_8u_C1R, rvxiMorphGradientBorder_8u_C3R}}},
};

// Operations without a mask.
using Special = Image (*)(const Image &, const Options &);
const std::map<std::string, Special> specials{
    {"rolling-ball", [](const Image &image, const Options &o) { return withoutBackground(image, o.radius, o.light); }},
    {"fill-holes", [](const Image &image, const Options &) { return fillHoles(image); }},
    {"clear-border", [](const Image &image, const Options &) { return clearBorder(image); }},
    {"domes", [](const Image &image, const Options &o) { return domes(image, o.height); }},
};

void run(const Options &options) {
    const Image image = readImage(options.photo);
    if (const auto found = specials.find(options.operation); found != specials.end()) {
        writeImage(options.out, found->second(image, options));
        return;
    }
    const Mask mask = parseMask(options.mask);
    const Operation &operation = operations.at(options.operation);
    const int colour = image.channels == 3;
    Image result(image.width, image.height, image.channels);
    std::int32_t specBytes = 0, bufferBytes = 0;
    const auto allocate = [&](std::vector<std::uint8_t> &spec, std::vector<std::uint8_t> &buffer) {
        spec.resize(static_cast<std::size_t>(specBytes));
        buffer.resize(static_cast<std::size_t>(bufferBytes));
    };
    std::vector<std::uint8_t> spec, buffer;
    if (const Basic basic = operation.basic[colour]; basic != nullptr) {
        check((colour ? rvxiMorphologyBorderGetSize_8u_C3R
                      : rvxiMorphologyBorderGetSize_8u_C1R)(image.width, mask.size, &specBytes, &bufferBytes),
              "MorphologyBorderGetSize");
        allocate(spec, buffer);
        auto *record = reinterpret_cast<MorphSpec *>(spec.data());
        check((colour ? rvxiMorphologyBorderInit_8u_C3R : rvxiMorphologyBorderInit_8u_C1R)(
                  image.width, mask.bytes.data(), mask.size, record, buffer.data()),
              "MorphologyBorderInit");
        check(basic(image.data(), image.step(), result.data(), result.step(), image.roi(), BorderReplicate, 0, record,
                    buffer.data()),
              options.operation.c_str());
    } else {
        check((colour ? rvxiMorphAdvGetSize_8u_C3R : rvxiMorphAdvGetSize_8u_C1R)(image.roi(), mask.size, &specBytes,
                                                                                 &bufferBytes),
              "MorphAdvGetSize");
        allocate(spec, buffer);
        auto *record = reinterpret_cast<MorphAdvSpec *>(spec.data());
        check((colour ? rvxiMorphAdvInit_8u_C3R : rvxiMorphAdvInit_8u_C1R)(image.roi(), mask.bytes.data(), mask.size,
                                                                           record, buffer.data()),
              "MorphAdvInit");
        check(operation.compound[colour](image.data(), image.step(), result.data(), result.step(), image.roi(),
                                         BorderReplicate, 0, record, buffer.data()),
              options.operation.c_str());
    }
    writeImage(options.out, result);
}

} // namespace

void addMorph(Program &program) {
    std::vector<std::string> names;
    for (const auto &entry : operations) {
        names.push_back(entry.first);
    }
    for (const auto &entry : specials) {
        names.push_back(entry.first);
    }
    auto options = std::make_shared<Options>();
    Command command = program.command("morph", "Erode, dilate or combine both with a flat mask; remove the background, "
                                               "fill holes, clear the border, find domes");
    command.option("OP", options->operation, "Operation").required().oneOf(names);
    command.option("PHOTO", options->photo, "Picture to read").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--mask", options->mask, "rect:WxH, ellipse:WxH, cross:WxH or a PBM file (black takes part)")
        .showDefault();
    command.option("--height", options->height, "Of domes: levels below a top that still belong to it")
        .range(1, 255)
        .showDefault();
    command.option("--radius", options->radius, "rolling-ball: the ball's, in pixels").range(1, 255).showDefault();
    command.flag("--light", options->light, "rolling-ball: dark things on a light background");
    command.action([options] { run(*options); });
}

} // namespace tools

// rvxcv inpaint PHOTO --mask MASK -o OUT: scratches, spots and logos away.
#include "command.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, mask, out, show, method = "march";
    int radius = 5;
};

Image inpainted(const Image &photo, const Image &mask, const Options &options) {
    const bool grey = photo.channels == 1;
    const InpaintMethod method = options.method == "march" ? InpaintMarch : InpaintDiffusion;
    std::int32_t bytes = 0;
    check((grey ? rvxiInpaintGetBufferSize_8u_C1MR : rvxiInpaintGetBufferSize_8u_C3MR)(photo.roi(), options.radius,
                                                                                       &bytes),
          "InpaintGetBufferSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    Image out(photo.width, photo.height, photo.channels);
    check((grey ? rvxiInpaint_8u_C1MR : rvxiInpaint_8u_C3MR)(photo.data(), photo.step(), mask.data(), mask.step(),
                                                             out.data(), out.step(), photo.roi(), options.radius,
                                                             method, buffer.data()),
          "Inpaint");
    return out;
}

// The picture with what is missing in magenta.
Image holePicture(const Image &photo, const Image &mask) {
    Image shown = toColour(photo);
    for (std::size_t i = 0; i < mask.pixels.size(); ++i) {
        if (mask.pixels[i] != 0) {
            const std::uint8_t magenta[] = {255, 0, 255};
            std::copy(magenta, magenta + 3, shown.data() + 3 * i);
        }
    }
    return shown;
}

void run(const Options &options) {
    checkPictureName(options.out);
    const Image photo = readImage(options.photo), mask = toGrey(readImage(options.mask));
    checkSameSize(options.photo, photo, options.mask, mask);
    const auto known = std::count(mask.pixels.begin(), mask.pixels.end(), 0);
    const auto missing = static_cast<std::ptrdiff_t>(mask.pixels.size()) - known;
    if (known == 0) {
        throw Failure(options.mask + ": nothing is left to fill the picture from: no pixel of the mask is black");
    }
    writeImage(options.out, inpainted(photo, mask, options));
    if (!options.show.empty()) {
        writeImage(options.show, holePicture(photo, mask));
    }
    std::printf("%td of %zu pixels filled (%.1f %%)\n", missing, mask.pixels.size(),
                100 * static_cast<double>(missing) / static_cast<double>(mask.pixels.size()));
}

} // namespace

void addInpaint(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("inpaint", "Fill scratches, spots or logos from what is around them");
    command.option("PHOTO", options->photo, "Picture to repair").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command
        .option("--mask", options->mask,
                "Picture of the same size, black where the photo is good; use PNG, since JPEG blurs black")
        .required();
    command
        .option("--method", options->method,
                "march: continues slopes, best for most; diffusion: a smooth membrane, best for small holes")
        .oneOf({"march", "diffusion"})
        .showDefault();
    command.option("--radius", options->radius, "How far march looks for pixels, 1 to 100").range(1, 100).showDefault();
    command.option("--show", options->show, "Also write the photo with what is missing in magenta");
    command.action([options] {
        if (!options->show.empty()) {
            checkPictureName(options->show);
        }
        run(*options);
    });
}

} // namespace tools

// rvxcv diff A B OUT: the absolute difference of two images.
#include "command.h"

#include <memory>

namespace tools {
namespace {

struct Options {
    std::string first, second, out;
};

void run(const Options &options) {
    Image a = readImage(options.first), b = readImage(options.second);
    matchShapes(options.first, a, options.second, b);
    Image difference(a.width, a.height, a.channels);
    const auto absDiff = a.channels == 3 ? rvxiAbsDiff_8u_C3R : rvxiAbsDiff_8u_C1R;
    check(absDiff(a.data(), a.step(), b.data(), b.step(), difference.data(), difference.step(), a.roi()), "AbsDiff");
    writeImage(options.out, difference);
}

} // namespace

void addDiff(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("diff", "Write the absolute difference of two images of one size");
    command.option("A", options->first, "First image").required();
    command.option("B", options->second, "Second image").required();
    command.option("OUT", options->out, "Picture to write").required();
    command.action([options] { run(*options); });
}

} // namespace tools

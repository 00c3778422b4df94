#include "plot.h"

#include "text_file.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

constexpr double left = 48, top = 36, width = 720, height = 280;

// File names may hold anything.
std::string escaped(const std::string &text) {
    std::string result;
    for (const char c : text) {
        if (c == '&' || c == '<' || c == '>') {
            result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : "&gt;";
        } else {
            result += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
    }
    return result;
}

// A round number (1, 2 or 5 times a power of ten) that fits about eight times into the length.
double tick(double length) {
    const double power = std::pow(10.0, std::floor(std::log10(length / 8)));
    const double part = length / 8 / power;
    return std::max(1.0, power * (part < 1.5 ? 1 : part < 3.5 ? 2 : part < 7.5 ? 5 : 10));
}

} // namespace

void writePlot(const std::string &path, const std::string &title, double length, const std::vector<Curve> &curves) {
    TextFile file(path);
    file.print("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %g %g\" font-family=\"sans-serif\" "
               "font-size=\"12\">\n<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n",
               left + width + 24, top + height + 44);
    file.print("<text x=\"%g\" y=\"22\" font-size=\"14\">%s</text>\n", left, escaped(title).c_str());
    const auto x = [&](double at) { return left + (length > 0 ? at / length : 0.5) * width; };
    const auto y = [](double value) { return top + (1 - value / 255) * height; };
    for (const int value : {0, 64, 128, 192, 255}) {
        file.print("<path d=\"M%g %.2fh%g\" stroke=\"#ccc\"/><text x=\"%g\" y=\"%.2f\" text-anchor=\"end\">%d</text>\n",
                   left, y(value), width, left - 6, y(value) + 4, value);
    }
    for (double at = 0; at <= length; at += tick(length)) {
        file.print(
            "<path d=\"M%.2f %gv5\" stroke=\"#444\"/><text x=\"%.2f\" y=\"%g\" text-anchor=\"middle\">%g</text>\n",
            x(at), top + height, x(at), top + height + 19, at);
        if (length <= 0) {
            break;
        }
    }
    file.print("<text x=\"%g\" y=\"%g\" text-anchor=\"middle\">pixels from the first point</text>\n", left + width / 2,
               top + height + 37);
    double legend = left + width;
    for (auto curve = curves.rbegin(); curve != curves.rend(); ++curve) {
        const Rgb c = curve->colour;
        file.print("<text x=\"%g\" y=\"22\" text-anchor=\"end\" fill=\"#%02x%02x%02x\">%s</text>\n", legend, c.r, c.g,
                   c.b, curve->name.c_str());
        legend -= 52;
    }
    for (const Curve &curve : curves) {
        const std::size_t last = curve.values.size() - 1;
        file.print("<polyline fill=\"none\" stroke=\"#%02x%02x%02x\" stroke-width=\"1.5\" points=\"", curve.colour.r,
                   curve.colour.g, curve.colour.b);
        for (std::size_t i = 0; i <= last; ++i) {
            const double at = last > 0 ? length * static_cast<double>(i) / static_cast<double>(last) : 0;
            file.print("%.2f,%.2f ", x(at), y(curve.values[i]));
        }
        file.print("\"/>\n");
    }
    file.print("</svg>\n");
    file.keep();
}

} // namespace tools

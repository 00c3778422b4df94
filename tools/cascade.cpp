#include "cascade.h"

#include "text_file.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tools {
namespace {

using Json = nlohmann::json;

constexpr char formatName[] = "rvxcv cascade 1";
constexpr int largestWindow = 1024, mostRects = 16;

[[noreturn]] void fail(const std::string &place, const std::string &message) { throw Failure(place + ": " + message); }

std::string stagePlace(const std::string &path, std::size_t stage) {
    return path + ": stage " + std::to_string(stage + 1);
}

std::string stumpPlace(const std::string &path, std::size_t stage, std::size_t stump) {
    return stagePlace(path, stage) + ", stump " + std::to_string(stump + 1);
}

// ------------------------------------------------------------------------------------------------------- reading

const Json &member(const Json &object, const char *key, const std::string &place) {
    if (!object.is_object()) {
        fail(place, "not an object");
    }
    const auto found = object.find(key);
    if (found == object.end()) {
        fail(place, std::string("\"") + key + "\" is missing");
    }
    return *found;
}

const Json &list(const Json &value, const std::string &what, const std::string &place, std::size_t length = 0) {
    if (!value.is_array() || value.empty() || (length != 0 && value.size() != length)) {
        fail(place, what + " is not a list" + (length == 0 ? "" : " of " + std::to_string(length) + " numbers"));
    }
    return value;
}

double number(const Json &value, const std::string &what, const std::string &place) {
    if (!value.is_number()) {
        fail(place, what + " is not a number");
    }
    return value.get<double>();
}

int integer(const Json &value, const std::string &what, const std::string &place) {
    const double v = number(value, what, place);
    if (v != std::floor(v) || std::fabs(v) > 1e6) {
        fail(place, what + " is not a whole number up to 1000000");
    }
    return static_cast<int>(v);
}

// Beyond float it becomes infinite, which checkCascade() refuses.
float single(const Json &value, const std::string &what, const std::string &place) {
    const double v = number(value, what, place);
    return std::fabs(v) > 3e38 ? HUGE_VALF : static_cast<float>(v);
}

Rect2i rectangle(const Json &value, const std::string &what, const std::string &place) {
    return {integer(value[0], what, place), integer(value[1], what, place), integer(value[2], what, place),
            integer(value[3], what, place)};
}

CascadeStump readStump(const Json &json, const std::string &place) {
    CascadeStump stump;
    for (const Json &rect : list(member(json, "rects", place), "\"rects\"", place)) {
        list(rect, "a rectangle", place, 5);
        stump.rects.push_back({rectangle(rect, "a rectangle's side", place), single(rect[4], "a weight", place)});
    }
    if (const auto tilted = json.find("tilted"); tilted != json.end()) {
        if (!tilted->is_boolean()) {
            fail(place, "\"tilted\" is neither true nor false");
        }
        stump.tilted = tilted->get<bool>();
    }
    stump.threshold = single(member(json, "threshold", place), "\"threshold\"", place);
    const Json &values = list(member(json, "values", place), "\"values\"", place, 2);
    stump.below = single(values[0], "a value", place);
    stump.above = single(values[1], "a value", place);
    return stump;
}

Cascade parseJson(const std::string &text, const std::string &path) {
    Json json;
    try {
        json = Json::parse(text);
    } catch (const Json::exception &error) {
        // Its place in the file follows the library's own number of the error.
        const std::string message = error.what();
        const std::size_t begin = message.find("] ");
        fail(path, begin == std::string::npos ? message : message.substr(begin + 2));
    }
    if (const Json &format = member(json, "format", path); format != formatName) {
        fail(path, std::string("\"format\" is not \"") + formatName + "\"");
    }
    Cascade cascade;
    if (const auto object = json.find("object"); object != json.end() && object->is_string()) {
        cascade.object = object->get<std::string>();
    }
    const Json &window = list(member(json, "window", path), "\"window\"", path, 2);
    cascade.window = {integer(window[0], "the width", path), integer(window[1], "the height", path)};
    cascade.deviation =
        rectangle(list(member(json, "deviation", path), "\"deviation\"", path, 4), "\"deviation\"", path);
    cascade.contrast = number(member(json, "contrast", path), "\"contrast\"", path);
    cascade.tip = integer(member(json, "tip", path), "\"tip\"", path);
    for (const Json &stage : list(member(json, "stages", path), "\"stages\"", path)) {
        const std::string place = stagePlace(path, cascade.stages.size());
        CascadeStage &next = cascade.stages.emplace_back();
        next.threshold = single(member(stage, "threshold", place), "\"threshold\"", place);
        for (const Json &stump : list(member(stage, "stumps", place), "\"stumps\"", place)) {
            next.stumps.push_back(readStump(stump, stumpPlace(path, cascade.stages.size() - 1, next.stumps.size())));
        }
    }
    return cascade;
}

// Of a rectangle in the window, all pixels and integral elements lie in every window of a picture.
bool inWindow(const CascadeStump &stump, Rect2i r, RoiSize window, int tip) {
    if (r.x < 0 || r.y < 0 || r.width < 1 || r.height < 1 || r.width > window.width || r.height > window.height) {
        return false;
    }
    if (stump.tilted) {
        const int left = r.x - r.height, room = tip == 2 ? 1 : 0;
        return left >= -room && r.x + r.width <= window.width && r.y + r.width + r.height <= window.height;
    }
    return r.x + r.width <= window.width && r.y + r.height <= window.height;
}

// ------------------------------------------------------------------------------------------------------- writing

// The shortest digits that give the same float again, whatever the locale.
std::string text(float value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

std::string text(const CascadeStump &stump) {
    std::string line = "{\"rects\": [";
    for (const CascadeRect &rect : stump.rects) {
        line += line.back() == '[' ? "[" : ", [";
        for (const int side : {rect.box.x, rect.box.y, rect.box.width, rect.box.height}) {
            line += std::to_string(side) + ", ";
        }
        line += text(rect.weight) + "]";
    }
    return line + "]" + (stump.tilted ? ", \"tilted\": true" : "") + ", \"threshold\": " + text(stump.threshold) +
           ", \"values\": [" + text(stump.below) + ", " + text(stump.above) + "]}";
}

} // namespace

bool Cascade::tilted() const {
    for (const CascadeStage &stage : stages) {
        for (const CascadeStump &stump : stage.stumps) {
            if (stump.tilted) {
                return true;
            }
        }
    }
    return false;
}

std::size_t Cascade::stumpCount() const {
    std::size_t count = 0;
    for (const CascadeStage &stage : stages) {
        count += stage.stumps.size();
    }
    return count;
}

void checkCascade(const Cascade &cascade, const std::string &path) {
    const RoiSize window = cascade.window;
    if (window.width < 1 || window.height < 1 || window.width > largestWindow || window.height > largestWindow) {
        fail(path, "the window's sides are not from 1 to " + std::to_string(largestWindow));
    }
    const Rect2i inner = cascade.deviation;
    if (!inWindow({}, inner, window, 1)) {
        fail(path, "the part for the deviation does not lie in the window");
    }
    if (!(cascade.contrast >= 0 && cascade.contrast <= 255)) {
        fail(path, "the contrast is not from 0 to 255");
    }
    if (cascade.tip != 1 && cascade.tip != 2) {
        fail(path, "the tip is neither 1 nor 2");
    }
    if (cascade.stages.empty()) {
        fail(path, "no stages");
    }
    for (std::size_t i = 0; i < cascade.stages.size(); ++i) {
        const CascadeStage &stage = cascade.stages[i];
        if (stage.stumps.empty() || !std::isfinite(stage.threshold)) {
            fail(stagePlace(path, i), stage.stumps.empty() ? "no stumps" : "the threshold is no number");
        }
        for (std::size_t j = 0; j < stage.stumps.size(); ++j) {
            const CascadeStump &stump = stage.stumps[j];
            bool finite = std::isfinite(stump.threshold) && std::isfinite(stump.below) && std::isfinite(stump.above);
            if (stump.rects.empty() || stump.rects.size() > mostRects) {
                fail(stumpPlace(path, i, j), "not from 1 to " + std::to_string(mostRects) + " rectangles");
            }
            for (const CascadeRect &rect : stump.rects) {
                finite = finite && std::isfinite(rect.weight);
                if (!inWindow(stump, rect.box, window, cascade.tip)) {
                    fail(stumpPlace(path, i, j), "a rectangle does not lie in the window");
                }
            }
            if (!finite) {
                fail(stumpPlace(path, i, j), "a number is too large");
            }
        }
    }
}

Cascade readCascade(const std::string &path) {
    std::error_code ignored;
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path, ignored)) {
        throw Failure(path + ": cannot read");
    }
    const std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::size_t first = content.find_first_not_of("\xef\xbb\xbf \t\r\n");
    const bool xml = first != std::string::npos && content[first] == '<';
    Cascade cascade = xml ? parseCascadeXml(content, path) : parseJson(content, path);
    if (cascade.object.empty()) {
        cascade.object = std::filesystem::path(path).stem().string();
    }
    checkCascade(cascade, path);
    return cascade;
}

void writeCascade(const std::string &path, const Cascade &cascade) {
    checkCascade(cascade, path);
    TextFile file(path);
    const Rect2i d = cascade.deviation;
    file.print("{\"format\": \"%s\",\n \"object\": %s,\n \"window\": [%d, %d],\n \"deviation\": [%d, %d, %d, %d],\n",
               formatName, Json(cascade.object).dump(-1, ' ', true, Json::error_handler_t::replace).c_str(),
               cascade.window.width, cascade.window.height, d.x, d.y, d.width, d.height);
    file.print(" \"contrast\": %s,\n \"tip\": %d,\n \"stages\": [", text(static_cast<float>(cascade.contrast)).c_str(),
               cascade.tip);
    const char *separator = "\n";
    for (const CascadeStage &stage : cascade.stages) {
        file.print("%s  {\"threshold\": %s, \"stumps\": [", separator, text(stage.threshold).c_str());
        separator = "\n";
        for (const CascadeStump &stump : stage.stumps) {
            file.print("%s    %s", separator, text(stump).c_str());
            separator = ",\n";
        }
        file.print("]}");
    }
    file.print("\n]}\n");
    file.keep();
}

std::string findCascade(const std::string &name) {
    namespace fs = std::filesystem;
    std::error_code error;
    if ((fs::exists(name, error) && !fs::is_directory(name, error)) || name.empty() ||
        name.find_first_of("/.") != std::string::npos) {
        return name;
    }
    // Beside the program, in a build tree as well as where it is installed.
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    const fs::path folder = program.parent_path().parent_path() / "share" / "rvxcv" / "cascades";
    std::string path = (folder / (name + ".json")).lexically_normal().string();
    if (error || !fs::exists(path, error)) {
        throw Failure(name + ": neither a file nor a cascade in " + folder.lexically_normal().string());
    }
    return path;
}

} // namespace tools

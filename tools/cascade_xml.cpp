// The XML files in which trained cascades are passed around, of both generations:
//
//     older   stages/_/trees/_/_ with feature/rects/_ ("x y width height weight"), feature/tilted, threshold, left_val,
//             right_val; stages/_/stage_threshold; size
//     newer   stageType, featureType, width, height; stages/_ with stageThreshold and weakClassifiers/_ with
//             internalNodes ("left right feature threshold") and leafValues; features/_ with rects/_ and tilted
//
// Both scale a stump's threshold by the area of the window, inset by a pixel, times its deviation there. The area is
// multiplied into the threshold here.
#include "cascade.h"

#include <pugixml.hpp>

#include <charconv>
#include <cmath>
#include <cstring>

namespace tools {
namespace {

// What files of each generation allow a stage to fall short by, since their numbers are rounded.
constexpr double olderSlack = 1e-4, newerSlack = 1e-5;
constexpr std::size_t mostStumps = 1000000;

class Reader {
public:
    Reader(pugi::xml_node root, std::string path) : root_(root), path_(std::move(path)) {}

    Cascade read() {
        const bool newer = root_.child("stageType") || root_.child("featureType");
        newer ? readNewerHead() : readOlderHead();
        if (cascade_.window.width < 3 || cascade_.window.height < 3) {
            fail("the window is smaller than 3x3");
        }
        cascade_.deviation = {1, 1, cascade_.window.width - 2, cascade_.window.height - 2};
        cascade_.tip = 1;
        area_ = double(cascade_.window.width - 2) * (cascade_.window.height - 2);
        int index = 0;
        for (const pugi::xml_node stage : root_.child("stages").children("_")) {
            place_ = ": stage " + std::to_string(++index);
            newer ? readNewerStage(stage) : readOlderStage(stage, index);
        }
        return cascade_;
    }

private:
    [[noreturn]] void fail(const std::string &message) const { throw Failure(path_ + place_ + ": " + message); }

    // The numbers of an element's text, which must be as many as asked for; 0: any number.
    std::vector<double> numbers(pugi::xml_node parent, const char *name, std::size_t count) const {
        const pugi::xml_node node = name == nullptr ? parent : parent.child(name);
        const std::string what = name == nullptr ? parent.name() : name;
        if (!node) {
            fail("<" + what + "> is missing");
        }
        std::vector<double> values;
        const char *at = node.child_value(), *const end = at + std::strlen(at);
        for (;;) {
            at += std::strspn(at, " \t\r\n");
            if (at == end) {
                break;
            }
            double value = 0;
            const auto [next, error] = std::from_chars(at, end, value);
            if (error != std::errc() || !std::isfinite(value) ||
                (next != end && std::strchr(" \t\r\n", *next) == nullptr)) {
                fail("<" + what + "> holds something that is not a number");
            }
            values.push_back(value);
            at = next;
        }
        if (count != 0 && values.size() != count) {
            fail("<" + what + "> does not hold " + std::to_string(count) + " numbers");
        }
        return values;
    }

    int integer(double value) const {
        if (value != std::floor(value) || std::fabs(value) > 1e6) {
            fail("a number is not a whole one up to 1000000");
        }
        return static_cast<int>(value);
    }

    // Too large for a float becomes infinite, which the check of every cascade refuses.
    static float single(double value) { return std::fabs(value) > 3e38 ? HUGE_VALF : static_cast<float>(value); }

    CascadeStump feature(pugi::xml_node node) const {
        CascadeStump stump;
        for (const pugi::xml_node rect : node.child("rects").children("_")) {
            const std::vector<double> v = numbers(rect, nullptr, 5);
            stump.rects.push_back({{integer(v[0]), integer(v[1]), integer(v[2]), integer(v[3])}, single(v[4])});
        }
        stump.tilted = node.child("tilted") && numbers(node, "tilted", 1)[0] != 0;
        return stump;
    }

    void setThreshold(CascadeStump &stump, double threshold, double below, double above) const {
        stump.threshold = single(threshold * area_);
        stump.below = single(below);
        stump.above = single(above);
    }

    void add(CascadeStage &stage, CascadeStump stump) {
        if (++stumps_ > mostStumps) {
            fail("too many stumps");
        }
        stage.stumps.push_back(std::move(stump));
    }

    void readOlderHead() {
        const std::vector<double> size = numbers(root_, "size", 2);
        cascade_.window = {integer(size[0]), integer(size[1])};
    }

    void readOlderStage(pugi::xml_node node, int index) {
        if (node.child("parent") && numbers(node, "parent", 1)[0] != index - 2) {
            fail("the stages do not follow each other in a line");
        }
        CascadeStage &stage = cascade_.stages.emplace_back();
        stage.threshold = single(numbers(node, "stage_threshold", 1)[0] - olderSlack);
        for (const pugi::xml_node tree : node.child("trees").children("_")) {
            const pugi::xml_node root = tree.child("_");
            if (root.child("left_node") || root.child("right_node") || root.next_sibling("_")) {
                fail("a tree is deeper than one comparison; only stumps can be used");
            }
            CascadeStump stump = feature(root.child("feature"));
            setThreshold(stump, numbers(root, "threshold", 1)[0], numbers(root, "left_val", 1)[0],
                         numbers(root, "right_val", 1)[0]);
            balance(stump);
            add(stage, std::move(stump));
        }
    }

    // The first weight of older files stands for whatever makes the feature 0 on an even surface.
    static void balance(CascadeStump &stump) {
        double others = 0;
        for (std::size_t i = 1; i < stump.rects.size(); ++i) {
            others += double(stump.rects[i].weight) * stump.rects[i].box.width * stump.rects[i].box.height;
        }
        if (stump.rects.size() > 1) {
            const Rect2i first = stump.rects[0].box;
            if (const double area = double(first.width) * first.height; area > 0) {
                stump.rects[0].weight = single(-others / area);
            }
        }
    }

    void readNewerHead() {
        if (const std::string type = root_.child_value("stageType"); type != "BOOST") {
            fail("stages of type " + type + " cannot be used, only BOOST");
        }
        if (const std::string type = root_.child_value("featureType"); type != "HAAR") {
            fail("features of type " + type + " cannot be used, only HAAR");
        }
        cascade_.window = {integer(numbers(root_, "width", 1)[0]), integer(numbers(root_, "height", 1)[0])};
        for (const pugi::xml_node node : root_.child("features").children("_")) {
            features_.push_back(feature(node));
        }
    }

    void readNewerStage(pugi::xml_node node) {
        CascadeStage &stage = cascade_.stages.emplace_back();
        stage.threshold = single(numbers(node, "stageThreshold", 1)[0] - newerSlack);
        for (const pugi::xml_node weak : node.child("weakClassifiers").children("_")) {
            const std::vector<double> nodes = numbers(weak, "internalNodes", 0);
            if (nodes.size() > 4) {
                fail("a tree is deeper than one comparison; only stumps can be used");
            }
            if (nodes.size() < 4) {
                fail("<internalNodes> does not hold 4 numbers");
            }
            const std::vector<double> leaves = numbers(weak, "leafValues", 2);
            // Children that are not above 0 are leaves: 0 is the first, -1 the second.
            const int left = -integer(nodes[0]), right = -integer(nodes[1]), index = integer(nodes[2]);
            if (left < 0 || left > 1 || right < 0 || right > 1) {
                fail("<internalNodes> does not lead to the two leaves");
            }
            if (index < 0 || static_cast<std::size_t>(index) >= features_.size()) {
                fail("there is no feature " + std::to_string(index));
            }
            CascadeStump stump = features_[static_cast<std::size_t>(index)];
            setThreshold(stump, nodes[3], leaves[static_cast<std::size_t>(left)],
                         leaves[static_cast<std::size_t>(right)]);
            add(stage, std::move(stump));
        }
    }

    pugi::xml_node root_;
    std::string path_, place_;
    Cascade cascade_;
    double area_ = 1;
    std::size_t stumps_ = 0;
    std::vector<CascadeStump> features_;
};

} // namespace

Cascade parseCascadeXml(const std::string &text, const std::string &path) {
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(text.data(), text.size());
    if (!result) {
        throw Failure(path + ": " + result.description() + " at byte " + std::to_string(result.offset));
    }
    // Whatever the elements around it are called.
    const pugi::xml_node root = document.find_node([](pugi::xml_node node) { return bool(node.child("stages")); });
    if (!root) {
        throw Failure(path + ": no cascade: <stages> is missing");
    }
    return Reader(root, path).read();
}

} // namespace tools

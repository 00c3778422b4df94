#include "training.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <system_error>

namespace tools {
namespace {

// ------------------------------------------------------------------------------------------------------- folders

std::vector<std::string> split(const std::string &line) {
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c == ',') {
            fields.emplace_back();
        } else if (c != '\r') {
            fields.back() += c;
        }
    }
    return fields;
}

std::vector<Box> readBoxes(const std::string &path, const std::string &object) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) {
        throw Failure(path + ": cannot read");
    }
    const std::vector<std::string> head = split(line);
    const auto column = [&](const char *name) {
        return static_cast<std::size_t>(std::find(head.begin(), head.end(), name) - head.begin());
    };
    const std::size_t columns[4] = {column("x"), column("y"), column("width"), column("height")};
    if (std::count(std::begin(columns), std::end(columns), head.size()) != 0) {
        throw Failure(path + ": the first line does not name x, y, width and height");
    }
    std::vector<Box> boxes;
    for (int number = 2; std::getline(file, line); ++number) {
        const std::vector<std::string> fields = split(line);
        if (fields == std::vector<std::string>{""}) {
            continue;
        }
        double values[4];
        bool good = fields.size() == head.size();
        for (int i = 0; i < 4 && good; ++i) {
            const std::string &field = fields[columns[i]];
            const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), values[i]);
            good = error == std::errc() && end == field.data() + field.size() && std::fabs(values[i]) < 1e6;
        }
        if (!good || values[2] <= 0 || values[3] <= 0) {
            throw Failure(path + ": line " + std::to_string(number) + " is not a box");
        }
        const std::size_t kind = column("object");
        if (object.empty() || kind == head.size() || fields[kind] == object) {
            boxes.push_back({values[0], values[1], values[2], values[3]});
        }
    }
    return boxes;
}

} // namespace

std::vector<TrainingPicture> readPictures(const std::string &folder, const std::string &object) {
    namespace fs = std::filesystem;
    std::error_code error;
    std::vector<fs::path> paths;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::string ending = entry->path().extension().string();
        std::transform(ending.begin(), ending.end(), ending.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        for (const char *known : {".png", ".jpg", ".jpeg", ".pgm", ".ppm", ".pnm", ".pbm"}) {
            if (ending == known) {
                paths.push_back(entry->path());
            }
        }
    }
    if (error) {
        throw Failure(folder + ": " + error.message());
    }
    if (paths.empty()) {
        throw Failure(folder + ": no pictures");
    }
    std::sort(paths.begin(), paths.end());
    std::vector<TrainingPicture> pictures;
    for (const fs::path &path : paths) {
        TrainingPicture picture{path.string(), toGrey(readImage(path.string())), false, {}};
        fs::path list = path;
        if (fs::exists(list.replace_extension(".csv"), error)) {
            picture.listed = true;
            picture.boxes = readBoxes(list.string(), object);
        }
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

namespace {

// ------------------------------------------------------------------------------------------------------- windows

using Pictures = std::vector<TrainingPicture>;

Image mirrored(Image image) {
    for (int y = 0; y < image.height; ++y) {
        std::reverse(image.pixel(0, y), image.pixel(0, y) + image.width);
    }
    return image;
}

// The box with the window's proportions, grown on two sides.
Box withProportions(Box box, RoiSize window) {
    const double width = std::max(box.width, box.height * window.width / window.height);
    const double height = width * window.height / window.width;
    return {box.x + (box.width - width) / 2, box.y + (box.height - height) / 2, width, height};
}

std::vector<Box> objectsOf(const TrainingPicture &picture) {
    return picture.listed ? picture.boxes
                          : std::vector<Box>{{0, 0, double(picture.grey.width), double(picture.grey.height)}};
}

// Each object as it stands and, since the detector's steps meet none exactly, in copies a little beside and of another
// size; every second one mirrored.
void addObjects(const TrainingPicture &picture, const TrainingSettings &settings, Random &random, ShapeValues &values) {
    for (const Box &object : objectsOf(picture)) {
        const Box exact = withProportions(object, settings.window);
        for (int i = 0; i < settings.copies; ++i) {
            Box box = exact;
            if (i > 0) {
                const double scale = random.between(0.94, 1.06);
                box.x += box.width * (random.between(-0.03, 0.03) + (1 - scale) / 2);
                box.y += box.height * (random.between(-0.05, 0.05) + (1 - scale) / 2);
                box.width *= scale;
                box.height *= scale;
            }
            Image sample = resample(picture.grey, box, settings.window);
            values.add(settings.mirror && i % 2 == 1 ? mirrored(std::move(sample)) : sample);
        }
    }
}

struct Mined {
    double searched = 0, mistaken = 0; // windows
    std::vector<Image> samples;
};

Image cut(const Image &level, Point2i corner, RoiSize window) {
    Image sample(window.width, window.height, 1);
    for (int y = 0; y < window.height; ++y) {
        std::copy_n(level.pixel(corner.x, corner.y + y), window.width, sample.pixel(0, y));
    }
    return sample;
}

// Windows of the background that pass all stages so far.
Mined mine(const Pictures &pictures, const Cascade &cascade, const TrainingSettings &settings, Random &random) {
    constexpr int mostOfLevel = 20;
    constexpr double objectOverlap = 0.35; // from here on a window may pass for the object
    const Detector detector(cascade);
    const RoiSize window = settings.window;
    Mined mined;
    for (const TrainingPicture &picture : pictures) {
        DetectorSettings search;
        search.scaleStep = 1.25;
        search.smallest = static_cast<int>(random.between(1, 1.25) * window.width);
        detector.search(picture.grey, search, [&](const Image &level, std::vector<Point2i> corners) {
            const double sx = double(picture.grey.width) / level.width, sy = double(picture.grey.height) / level.height;
            const auto isObject = [&](Point2i corner) {
                const Box box{corner.x * sx, corner.y * sy, window.width * sx, window.height * sy};
                return std::any_of(picture.boxes.begin(), picture.boxes.end(), [&](const Box &object) {
                    return overlap(box, withProportions(object, window)) > objectOverlap;
                });
            };
            corners.erase(std::remove_if(corners.begin(), corners.end(), isObject), corners.end());
            mined.searched += double(level.width - window.width + 1) * (level.height - window.height + 1);
            mined.mistaken += static_cast<double>(corners.size());
            for (int i = 0; i < mostOfLevel && !corners.empty(); ++i) {
                std::swap(corners[static_cast<std::size_t>(random.below(static_cast<int>(corners.size())))],
                          corners.back());
                mined.samples.push_back(cut(level, corners.back(), window));
                corners.pop_back();
            }
        });
    }
    random.shuffle(mined.samples);
    mined.samples.resize(std::min(mined.samples.size(), static_cast<std::size_t>(settings.negatives)));
    return mined;
}

// Takes a part of the pictures out, at random.
Pictures holdOut(Pictures &pictures, double part, Random &random) {
    random.shuffle(pictures);
    const auto kept = static_cast<std::ptrdiff_t>(pictures.size()) -
                      static_cast<std::ptrdiff_t>(part * static_cast<double>(pictures.size()));
    Pictures taken(std::make_move_iterator(pictures.begin() + kept), std::make_move_iterator(pictures.end()));
    pictures.resize(static_cast<std::size_t>(kept));
    return taken;
}

TrainingReport validate(const Pictures &positives, const Pictures &negatives, const Cascade &cascade) {
    const Detector detector(cascade);
    TrainingReport report;
    const auto search = [&](const TrainingPicture &picture) {
        const Score one = score(detector.detect(picture.grey, {}), picture.boxes);
        ++report.pictures;
        report.score.objects += one.objects;
        report.score.found += one.found;
        report.score.falseBoxes += one.falseBoxes;
    };
    for (const TrainingPicture &picture : positives) {
        if (picture.listed) {
            search(picture);
        } else {
            const Box box = withProportions(objectsOf(picture)[0], cascade.window);
            ++report.samples;
            report.passed += !detector.windows(resample(picture.grey, box, cascade.window)).empty();
        }
    }
    std::for_each(negatives.begin(), negatives.end(), search);
    return report;
}

std::string joined(std::initializer_list<std::string> parts) {
    std::string text;
    for (const std::string &part : parts) {
        text += part;
    }
    return text;
}

std::string percent(double part) {
    char text[32];
    std::snprintf(text, sizeof text, part < 0.01 ? "%.3g %%" : "%.1f %%", 100 * part);
    return text;
}

} // namespace

Cascade trainCascade(Pictures positives, Pictures negatives, const TrainingSettings &settings, const Progress &progress,
                     TrainingReport &report) {
    constexpr std::size_t fewestWindows = 50;
    Random random(settings.seed);
    const Pictures heldPositives = holdOut(positives, settings.holdOut, random);
    const Pictures heldNegatives = holdOut(negatives, settings.holdOut, random);

    Cascade cascade;
    cascade.object = settings.object;
    cascade.window = settings.window;
    cascade.deviation = {1, 1, settings.window.width - 2, settings.window.height - 2};
    cascade.contrast = settings.contrast;

    const std::vector<HaarShape> shapes = pickShapes(settings.window, settings.shapes, settings.tilted, random);
    ShapeValues objects(shapes, cascade.window, cascade.deviation);
    Pictures background = std::move(negatives);
    for (TrainingPicture &picture : positives) {
        addObjects(picture, settings, random, objects);
        if (picture.listed) {
            background.push_back(std::move(picture));
        }
    }
    if (objects.samples() == 0 || shapes.empty()) {
        throw Failure(shapes.empty() ? "train: the window is too small" : "train: no objects to learn from");
    }
    progress(std::to_string(objects.samples()) + " windows with the object, " + std::to_string(shapes.size()) +
             " features to choose from");

    while (static_cast<int>(cascade.stages.size()) < settings.stages) {
        const std::string number = "stage " + std::to_string(cascade.stages.size() + 1);
        const Mined mined = mine(background, cascade, settings, random);
        const std::string mistaken = mined.searched > 0 ? percent(mined.mistaken / mined.searched) : "none";
        if (mined.samples.size() < fewestWindows) {
            progress(
                joined({number, ": ", mistaken, " of the background is still mistaken, too few windows to go on"}));
            break;
        }
        ShapeValues others(shapes, cascade.window, cascade.deviation);
        for (const Image &sample : mined.samples) {
            others.add(sample);
        }
        TrainedStage trained = trainStage(shapes, objects, others, settings.stage);
        if (trained.stage.stumps.empty() || trained.falseAlarm >= 1) {
            progress(number + ": the windows cannot be told apart any further");
            break;
        }
        objects.keep(trained.passed);
        progress(joined({number, ": ", mistaken, " of the background is still mistaken; ",
                         std::to_string(trained.stage.stumps.size()), " stumps keep ", percent(trained.hitRate),
                         " of the objects and ", percent(trained.falseAlarm), " of ", std::to_string(others.samples()),
                         " other windows"}));
        cascade.stages.push_back(std::move(trained.stage));
    }
    if (cascade.stages.empty()) {
        throw Failure("train: no stage could be trained; are the negative pictures larger than the window?");
    }
    report = validate(heldPositives, heldNegatives, cascade);
    return cascade;
}

} // namespace tools

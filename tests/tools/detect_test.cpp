// Training and detection as a user has them, and the cascade that comes with the program.
#include "detector.h"
#include "draw.h"
#include "program.h"
#include "random.h"
#include "scene.h"
#include "training.h"

#include <cmath>

namespace {

using namespace tools;
using program::Folder;
using program::run;

// ------------------------------------------------------------------------------------------------------- streets

TEST(Streets, BoxesEncloseTheCars) {
    int cars = 0;
    for (unsigned number = 1; number <= 6; ++number) {
        const Street street = makeStreet(number), empty = makeStreet(number, 0);
        ASSERT_TRUE(empty.cars.empty());
        const Image with = renderScene(street, 640, 480, 0, 1), without = renderScene(empty, 640, 480, 0, 1);
        std::vector<ObjectBox> boxes;
        for (const ObjectBox &box : objectBoxes(street, 0)) {
            if (box.kind == "car") {
                boxes.push_back({box.kind, 1e9, 1e9, 0, 0});
            }
        }
        for (int y = 0; y < 480; ++y) {
            for (int x = 0; x < 640; ++x) {
                if (std::equal(with.pixel(x, y), with.pixel(x, y) + 3, without.pixel(x, y))) {
                    continue;
                }
                std::size_t i = 0; // the car whose pixel it is
                for (const ObjectBox &box : objectBoxes(street, 0)) {
                    if (box.kind != "car") {
                        continue;
                    }
                    if (x + 1 > box.left && x < box.right && y + 1 > box.top && y < box.bottom) {
                        boxes[i] = {"car", std::min(boxes[i].left, double(x)), std::min(boxes[i].top, double(y)),
                                    std::max(boxes[i].right, x + 1.0), std::max(boxes[i].bottom, y + 1.0)};
                        break;
                    }
                    ++i;
                }
                ASSERT_LT(i, boxes.size()) << "a car's pixel outside of all boxes: " << x << "," << y;
            }
        }
        std::size_t i = 0;
        for (const ObjectBox &box : objectBoxes(street, 0)) {
            if (box.kind == "car") {
                // A ball may hide some pixels.
                EXPECT_LT(std::fabs(boxes[i].left - box.left) + std::fabs(boxes[i].right - box.right), 4) << number;
                EXPECT_LT(std::fabs(boxes[i].top - box.top) + std::fabs(boxes[i].bottom - box.bottom), 4) << number;
                ++i;
                ++cars;
            }
        }
    }
    EXPECT_GE(cars, 8);
}

TEST(Streets, ListsScaleWithThePicture) {
    const Folder folder;
    ASSERT_EQ(run("scene " + folder / "a.png" + " --width 320 --height 240 --boxes " + folder / "a.csv").exitCode, 0);
    EXPECT_EQ(program::readText(folder / "a.csv"), "object,x,y,width,height\nperson,211,133,8,37\n"
                                                   "car,30,171,60,29\ncar,220,195,81,39\nball,120,180,11,11\n");
    ASSERT_EQ(run("scene " + folder / "b.png" + " --width 320 --height 240 --frame 30 --cars 1 --boxes -").output,
              "object,x,y,width,height\nperson,136,133,8,37\ncar,240,171,60,29\nball,255,174,11,11\n")
        << "what has left the picture is not listed";
}

// The cascade that comes along, in streets that it was not trained on (tools/cascades/car.sh).
TEST(CarCascade, FindsCarsInUnknownStreets) {
#ifdef RVXCV_SANITIZED
    constexpr int streets = 6;
#else
    constexpr int streets = 50;
#endif
    const Cascade cascade = readCascade(findCascade("car"));
    EXPECT_EQ(cascade.object, "car");
    const Detector detector(cascade);
    Score total;
    int mostFalse = 0;
    for (unsigned number = 1001; number < 1001 + streets; ++number) {
        const Street street = makeStreet(number);
        std::vector<Box> truth;
        for (const ObjectBox &box : objectBoxes(street, 0)) {
            if (box.kind == "car") {
                truth.push_back({box.left, box.top, box.right - box.left, box.bottom - box.top});
            }
        }
        const Score one = score(detector.detect(toGrey(renderScene(street, 640, 480, 0, number)), {}), truth);
        total = {total.objects + one.objects, total.found + one.found, total.falseBoxes + one.falseBoxes};
        mostFalse = std::max(mostFalse, one.falseBoxes);
    }
    EXPECT_GE(total.objects, 2 * streets);
    EXPECT_GE(total.found, 0.95 * total.objects) << total.found << " of " << total.objects;
    EXPECT_LE(mostFalse, 1) << "false boxes in one street, " << total.falseBoxes << " in all";
    std::printf("%d of %d cars found, %d false boxes in %d streets\n", total.found, total.objects, total.falseBoxes,
                streets);
}

// ------------------------------------------------------------------------------------------------------ training

void drawTarget(Image &image, double x, double y, double radius) {
    const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
    drawLine(image, {fx, fy}, {fx, fy}, 2 * radius, {40, 40, 40});
    drawCircle(image, {fx, fy}, radius * 0.6, radius * 0.35, {235, 235, 235});
}

Image clutter(Random &random, int width, int height) {
    Image image(width, height, 3);
    std::fill(image.pixels.begin(), image.pixels.end(), static_cast<std::uint8_t>(120));
    for (int i = 0; i < 25; ++i) {
        const auto x = static_cast<float>(random.between(0, width)), y = static_cast<float>(random.between(0, height));
        const auto grey = static_cast<std::uint8_t>(random.below(256));
        drawLine(image, {x, y}, {x + static_cast<float>(random.between(-40, 40)), y + 9}, random.between(1, 12),
                 {grey, grey, grey});
    }
    for (std::uint8_t &pixel : image.pixels) {
        pixel = static_cast<std::uint8_t>(std::clamp(pixel + random.below(17) - 8, 0, 255));
    }
    return image;
}

TEST(TrainCommand, LearnsTargetsFromFolders) {
    const Folder folder;
    Random random(3);
    for (const char *name : {"listed", "plain", "without"}) {
        std::filesystem::create_directory(folder / name);
    }
    for (int i = 0; i < 24; ++i) {
        const std::string name = std::to_string(i);
        writeImage(folder / "without/" + name + ".png", clutter(random, 120, 90));
        Image picture = clutter(random, 120, 90), small = clutter(random, 40, 40);
        const double r = random.between(10, 20), x = random.between(r, 120 - r), y = random.between(r, 90 - r);
        drawTarget(picture, x, y, r);
        writeImage(folder / "listed/" + name + ".png", picture);
        // The box is too narrow: the window's proportions make it as wide as the target again.
        std::string list = "kind,object,width,height,x,y\r\na,target";
        for (const double value : {1.6 * r, 2 * r, x - 0.8 * r, y - r}) {
            list += "," + std::to_string(value);
        }
        program::writeText(folder / "listed/" + name + ".csv", list + "\r\nb,nothing,5,5,0,0\r\n");
        drawTarget(small, 19.5, 19.5, 19);
        writeImage(folder / "plain/" + name + ".png", small);
    }
    const std::string options = " --object target --window 16x16 --features 500 --negatives 400 --stages 6 "
                                "--hit-rate 1 --false-alarm 0.2 ";
    for (const std::string kind : {"listed", "plain"}) {
        const std::string call = "train " + folder / kind + " " + folder / "without" + options + "-o " + folder / kind;
        const auto first = run(call + "-1.json");
        ASSERT_EQ(first.exitCode, 0) << first.output;
        EXPECT_NE(first.output.find("stage 1: "), std::string::npos) << first.output;
        EXPECT_NE(first.output.find(kind == "plain" ? "objects pass (" : "objects found ("), std::string::npos);
        if (kind == "listed") {
            ASSERT_EQ(run(call + "-2.json").exitCode, 0);
            EXPECT_EQ(program::readText(folder / kind + "-1.json"), program::readText(folder / kind + "-2.json"));
        }

        Score total;
        double aside = 0;
        for (int i = 0; i < 10; ++i) {
            Image picture = clutter(random, 200, 150);
            drawTarget(picture, 60, 50, 12 + i);
            drawTarget(picture, 150, 100, 25 - i);
            const std::vector<Box> truth = {{48.0 - i, 38.0 - i, 24.0 + 2 * i, 24.0 + 2 * i},
                                            {125.0 + i, 75.0 + i, 50.0 - 2 * i, 50.0 - 2 * i}};
            const Detector detector(readCascade(folder / kind + "-1.json"));
            const std::vector<Detection> found = detector.detect(toGrey(picture), {});
            for (const Detection &detection : found) {
                for (const Box &box : truth) {
                    const double shift = detection.box.x + detection.box.width / 2 - box.x - box.width / 2;
                    aside += overlap(detection.box, box) >= 0.5 ? shift / box.width : 0;
                }
            }
            const Score one = score(found, truth);
            total = {0, total.found + one.found, total.falseBoxes + one.falseBoxes};
        }
        EXPECT_GE(total.found, 18) << kind << ", of 20";
        EXPECT_LE(total.falseBoxes, 4) << kind;
        EXPECT_NEAR(aside / total.found, 0, 0.04) << kind;
    }
    const auto refused = [&](const std::string &arguments, int exitCode, const std::string &message) {
        const auto result = run("train " + arguments + " -o " + folder / "out.json");
        EXPECT_EQ(result.exitCode, exitCode) << result.output;
        EXPECT_NE(result.output.find(message), std::string::npos) << result.output;
        EXPECT_FALSE(std::filesystem::exists(folder / "out.json"));
    };
    const std::string without = folder / "without";
    refused(folder / "no" + " " + without, 1, "No such file");
    refused(folder / "listed" + " " + without + " --window 4x4", 2, "smaller than 8x8");
    const auto nowhere = run("train " + folder / "listed" + " " + without + " -o " + folder / "no/such/a.json");
    EXPECT_EQ(nowhere.output, "rvxcv: " + folder / "no/such/a.json" + ": no such folder\n");
    refused(folder / "listed" + " " + without + " --object unknown", 1, "no objects to learn from");
    program::writeText(folder / "listed/3.csv", "x,y,width,height\n1,2,3\n");
    refused(folder / "listed" + " " + without, 1, "3.csv: line 2 is not a box");
    program::writeText(folder / "listed/3.csv", "x,y,w,h\n");
    refused(folder / "listed" + " " + without, 1, "does not name x, y, width and height");
    std::filesystem::create_directory(folder / "none");
    refused(folder / "none" + " " + without, 1, "no pictures");
}

// ----------------------------------------------------------------------------------------------------- detection

TEST(DetectCommand, DrawsAndListsWhatItFinds) {
    const Folder folder;
    ASSERT_EQ(run("scene " + folder / "a.png" + " --street 1003").exitCode, 0);
    const auto result = run("detect car " + folder / "a.png" + " -o " + folder / "out.png --csv " + folder / "out.csv");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const std::string list = program::readText(folder / "out.csv");
    EXPECT_EQ(run("detect car " + folder / "a.png" + " --csv -").output, list);
    const auto lines = std::count(list.begin(), list.end(), '\n');
    EXPECT_EQ(result.output, "car: " + std::to_string(lines - 1) + " found\n");
    ASSERT_GT(lines, 1);
    double x = 0, y = 0, width = 0, height = 0;
    ASSERT_EQ(std::sscanf(list.c_str(), "x,y,width,height,hits\n%lf,%lf,%lf,%lf", &x, &y, &width, &height), 4);
    const Image photo = readImage(folder / "a.png"), out = readImage(folder / "out.png");
    const auto changed = [&](double u, double v) {
        const int i = static_cast<int>(u), j = static_cast<int>(v);
        return !std::equal(out.pixel(i, j), out.pixel(i, j) + 3, photo.pixel(i, j));
    };
    EXPECT_TRUE(changed(x + width / 2, y + 1) && changed(x + 1, y + height / 2) && changed(x + width - 1.5, y + 9));
    EXPECT_FALSE(changed(x + width / 2, y + height / 2) || changed(x + width / 2, y - 3) || changed(x - 3, y + 5));
    EXPECT_EQ(run("detect car " + folder / "a.png" + " --csv - --hits 100000").output, "x,y,width,height,hits\n");
    const auto large = run("detect car " + folder / "a.png" + " --csv - --smallest 300");
    EXPECT_EQ(large.output, "x,y,width,height,hits\n") << "no car is as wide";
}

TEST(DetectCommand, MistakesAreRefused) {
    const Folder folder;
    writeImage(folder / "a.png", program::pattern(50, 40, 1));
    EXPECT_EQ(run("detect car " + folder / "a.png").exitCode, 1) << "neither a picture nor a list";
    const auto unknown = run("detect lorry " + folder / "a.png" + " --csv -");
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.output.find("neither a file nor a cascade in"), std::string::npos) << unknown.output;
    EXPECT_EQ(run("detect " + folder / "a.png" + " " + folder / "a.png" + " --csv -").exitCode, 1);
    EXPECT_EQ(run("detect car " + folder / "no.png" + " --csv -").exitCode, 1);
    EXPECT_EQ(run("detect car " + folder / "a.png" + " --csv - --scale-step 1").exitCode, 2);
    EXPECT_EQ(run("detect car " + folder / "a.png" + " -o " + folder / "a.txt").exitCode, 1);
    writeImage(folder / "tiny.png", program::pattern(5, 4, 3));
    EXPECT_EQ(run("detect car " + folder / "tiny.png" + " --csv -").output, "x,y,width,height,hits\n");
}

} // namespace

// Trains a cascade from folders of pictures.
#pragma once

#include "boosting.h"
#include "detector.h"

#include <functional>

namespace tools {

// A picture of a training folder. With a list of boxes beside it (NAME.csv for NAME.png) the boxes are what is meant,
// and all else counts as background; otherwise the whole picture is.
struct TrainingPicture {
    std::string path;
    Image grey;
    bool listed = false;
    std::vector<Box> boxes;
};

// All pictures of a folder by name. Of the lists, lines of other objects are left out; without a column `object`, or
// for an empty name, every line counts.
std::vector<TrainingPicture> readPictures(const std::string &folder, const std::string &object);

struct TrainingSettings {
    std::string object;
    RoiSize window{32, 16};
    StageSettings stage;
    int stages = 15, shapes = 5000, negatives = 2000, copies = 4;
    double contrast = 6, holdOut = 0.2;
    bool tilted = true, mirror = true;
    unsigned seed = 1;
};

struct TrainingReport {
    Score score;                 // held-out pictures with lists, and all held-out negatives
    int pictures = 0;            // these
    int samples = 0, passed = 0; // held-out pictures that show an object each
};

using Progress = std::function<void(const std::string &line)>;

// Stops early when hardly any window of the background is mistaken any more.
Cascade trainCascade(std::vector<TrainingPicture> positives, std::vector<TrainingPicture> negatives,
                     const TrainingSettings &settings, const Progress &progress, TrainingReport &report);

} // namespace tools

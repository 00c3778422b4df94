// Calls every exported function on fixed arguments and prints `name hash`, a line for each, sorted by name:
//
//     rvxcv_contract [--threads N] [--only TEXT] [--values FILE] [--statuses yes] [--trace yes] [--guards no]
//
// --statuses tells how often each status came back from legal and from faulty calls, --trace every call and the hash
// after it. --guards no does without unmapped pages around the images. Members whose documentation gives a bound
// instead of bits have their values in FILE: `name bound value...`.
#include "contract/contract.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <thread>

namespace {

using contract::Member;
using contract::Members;

const char *const exported[] = {
#define EXPORT(name) #name,
#include "frame/exports.def"
#undef EXPORT
    // the companion library's
    "rvxGetCpuFeatures", "rvxGetEnabledCpuFeatures", "rvxMalloc", "rvxFree", "rvxGetMaxCacheSizeB"};

Members allMembers() {
    Members members;
    for (const auto add : {contract::addCore, contract::addArith, contract::addFilter, contract::addGeometry,
                           contract::addDetect, contract::addMotion, contract::addSegment, contract::addFeature,
                           contract::addPyramid, contract::addMorph, contract::addStats}) {
        add(members);
    }
    std::sort(members.begin(), members.end(),
              [](const Member &a, const Member &b) { return std::strcmp(a.name, b.name) < 0; });
    return members;
}

// Every exported name has one driver, every driver an exported name.
bool complete(const Members &members) {
    std::set<std::string> missing(std::begin(exported), std::end(exported));
    bool good = true;
    for (const Member &member : members) {
        if (missing.erase(member.name) == 0) {
            std::fprintf(stderr, "not exported, or listed twice: %s\n", member.name);
            good = false;
        }
    }
    for (const std::string &name : missing) {
        std::fprintf(stderr, "no driver: %s\n", name.c_str());
        good = false;
    }
    return good;
}

struct Result {
    std::uint64_t hash = 0;
    std::map<StatusCode, int> statuses[2];
    std::vector<contract::BoundedValue> values;
    bool operator==(const Result &other) const {
        const auto same = [](const contract::BoundedValue &a, const contract::BoundedValue &b) {
            return std::memcmp(&a.value, &b.value, sizeof a.value) == 0;
        };
        return hash == other.hash &&
               std::equal(values.begin(), values.end(), other.values.begin(), other.values.end(), same);
    }
};

Result resultOf(const Member &member) {
    contract::Run run(member.name);
    member.run(run);
    return {run.digest.value(), {run.statuses[0], run.statuses[1]}, std::move(run.values)};
}

// All members, in an order of the thread's own: the thread's number is the place to start and the way to go on.
std::vector<Result> runAll(const Members &members, unsigned thread) {
    std::vector<Result> results(members.size());
    const std::size_t start = members.size() * thread / 8;
    for (std::size_t i = 0; i < members.size(); ++i) {
        const std::size_t step = (start + i) % members.size();
        const std::size_t at = thread % 2 == 0 ? step : members.size() - 1 - step;
        results[at] = resultOf(members[at]);
    }
    return results;
}

} // namespace

int main(int argc, char **argv) {
    unsigned threads = 1;
    bool statuses = false;
    const char *only = "", *valuesFile = nullptr;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--threads") {
            threads = static_cast<unsigned>(std::atoi(argv[i + 1]));
        } else if (option == "--only") {
            only = argv[i + 1];
        } else if (option == "--guards") {
            contract::Memory::guarded = std::strcmp(argv[i + 1], "no") != 0;
        } else if (option == "--trace") {
            contract::Run::traced = true;
        } else if (option == "--statuses") {
            statuses = true;
        } else if (option == "--values") {
            valuesFile = argv[i + 1];
        } else {
            std::fprintf(stderr, "unknown option: %s\n", argv[i]);
            return 2;
        }
    }
    Members members = allMembers();
    bool good = complete(members);
    std::erase_if(members, [&](const Member &member) { return std::strstr(member.name, only) == nullptr; });

    std::vector<std::vector<Result>> results(std::max(threads, 1U));
    if (threads <= 1) {
        results[0] = runAll(members, 0);
    } else {
        std::vector<std::thread> running;
        for (unsigned t = 0; t < threads; ++t) {
            running.emplace_back([&, t] { results[t] = runAll(members, t); });
        }
        for (std::thread &thread : running) {
            thread.join();
        }
    }
    std::FILE *values = valuesFile != nullptr ? std::fopen(valuesFile, "w") : nullptr;
    if (valuesFile != nullptr && values == nullptr) {
        std::perror(valuesFile);
        return 1;
    }
    for (std::size_t i = 0; i < members.size(); ++i) {
        for (unsigned t = 1; t < threads; ++t) {
            if (!(results[t][i] == results[0][i])) {
                std::fprintf(stderr, "threads disagree: %s\n", members[i].name);
                good = false;
            }
        }
        std::printf("%s %016" PRIx64 "\n", members[i].name, results[0][i].hash);
        for (int faulty = 0; statuses && faulty < 2; ++faulty) {
            std::printf("   %s", faulty != 0 ? "faulty:" : "legal: ");
            for (const auto &[status, count] : results[0][i].statuses[faulty]) {
                std::printf(" %d x %d", count, status);
            }
            std::printf("\n");
        }
        double bound = -1;
        for (const contract::BoundedValue &value : results[0][i].values) {
            if (values != nullptr && value.bound != bound) {
                bound = value.bound;
                std::fprintf(values, "%s%s %.3g", &value == results[0][i].values.data() ? "" : "\n", members[i].name,
                             bound);
            }
            if (values != nullptr) {
                std::fprintf(values, " %.9g", value.value);
            }
        }
        if (values != nullptr && !results[0][i].values.empty()) {
            std::fprintf(values, "\n");
        }
    }
    if (values != nullptr) {
        good &= std::fclose(values) == 0;
    }
    return good ? 0 : 1;
}

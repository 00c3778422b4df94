// Runs the command-line program and a folder for its files.
#pragma once

#include "image.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace program {

struct Result {
    int exitCode;
    std::string output; // standard output and standard error
};

inline Result run(const std::string &arguments) {
    std::FILE *pipe = popen((std::string(RVXCV_TOOL_PATH) + " " + arguments + " 2>&1").c_str(), "r");
    Result result{-1, {}};
    if (pipe == nullptr) {
        return result;
    }
    std::array<char, 4096> block;
    for (std::size_t n; (n = std::fread(block.data(), 1, block.size(), pipe)) > 0;) {
        result.output.append(block.data(), n);
    }
    const int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

// A folder that is removed with its files.
class Folder {
public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "rvxcv-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    std::string operator/(const std::string &name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

inline void writeText(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string readText(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A small picture with structure in it.
inline tools::Image pattern(int width, int height, int channels, unsigned salt = 0) {
    tools::Image image(width, height, channels);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        image.pixels[i] = static_cast<std::uint8_t>((i * 37 + salt * 101 + i / 11) & 255);
    }
    return image;
}

} // namespace program

#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "ZML/HeadlessAnswers.h"

namespace zmltest {

// Sets an environment variable for the life of the guard and restores it afterwards.
class EnvGuard {
public:
    EnvGuard(std::string name, const std::string& value) : name(std::move(name)) {
        if (const char* old = std::getenv(this->name.c_str())) {
            previous = old;
        }
        ::setenv(this->name.c_str(), value.c_str(), 1);
    }
    ~EnvGuard() {
        if (previous) {
            ::setenv(name.c_str(), previous->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    EnvGuard(const EnvGuard&) = delete;
    EnvGuard& operator=(const EnvGuard&) = delete;

private:
    std::string name;
    std::optional<std::string> previous;
};

// A fresh folder in the build tree, removed with the guard.
class ScratchDir {
public:
    explicit ScratchDir(const std::string& name)
        : path(std::filesystem::path(LATTIX_BINARY_DIR) / "test-scratch" /
               (name + "-" + std::to_string(::getpid()))) {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~ScratchDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::filesystem::path Write(const std::string& relative, const std::string& text) const {
        auto file = path / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }

    const std::filesystem::path path;
};

// Clears the headless answers before and after each test, so that one test's leftovers never
// answer another's questions.
struct HeadlessReset {
    HeadlessReset() { ZML::HeadlessAnswers::Reset(); }
    ~HeadlessReset() { ZML::HeadlessAnswers::Reset(); }
};

}  // namespace zmltest

#include "core/resources.h"

#include <dlfcn.h>

#include <cstdlib>

namespace ZML::detail {

std::optional<std::string> GetEnv(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return std::string(value);
}

namespace {

std::filesystem::path InstalledRoot() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&InstalledRoot), &info) != 0 && info.dli_fname != nullptr) {
        std::filesystem::path library(info.dli_fname);
        return library.parent_path().parent_path() / "share" / "lattix";
    }
    return std::filesystem::path("/usr/local/share/lattix");
}

}  // namespace

std::filesystem::path ResourceRoot() {
    if (auto path = GetEnv("LATTIX_RESOURCE_PATH")) {
        return *path;
    }
    if (auto path = GetEnv("TAMARIN_HOME")) {
        return *path;
    }
    return InstalledRoot();
}

std::vector<std::filesystem::path> ScriptSearchPath() {
    std::vector<std::filesystem::path> folders;
    if (auto list = GetEnv("LATTIX_ZML_PATH")) {
        std::string::size_type start = 0;
        while (start <= list->size()) {
            auto end = list->find(':', start);
            if (end == std::string::npos) {
                end = list->size();
            }
            if (end > start) {
                folders.emplace_back(list->substr(start, end - start));
            }
            start = end + 1;
        }
    }
    folders.push_back(ResourceRoot() / "dialogs");
    return folders;
}

std::string AsciiLower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

}  // namespace ZML::detail

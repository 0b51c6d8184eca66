#include "core/resources.h"

#include "qstr/qstr.h"
#include "qtxt/Text.h"

namespace ZML::detail {

std::optional<std::string> GetEnv(const std::string& name) {
    std::wstring value = qstr_GetEnv(qtxt::UTF8toDefaultWide(name));
    if (value.empty()) {
        return std::nullopt;
    }
    return qtxt::DefaultWideToUTF8(value);
}

std::filesystem::path ResourceRoot() {
    if (auto path = GetEnv("LATTIX_RESOURCE_PATH")) {
        return *path;
    }
    return std::filesystem::path(qtxt::DefaultWideToUTF8(qstr_TamarinHome()));
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

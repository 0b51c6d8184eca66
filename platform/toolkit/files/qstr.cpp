#include "qstr/qstr.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#include "qtxt/Text.h"

namespace fs = std::filesystem;

namespace {

bool IsNameStart(wchar_t c) {
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c == L'_';
}

bool IsNameChar(wchar_t c) {
    return IsNameStart(c) || (c >= L'0' && c <= L'9');
}

// The value of a known variable, or false when `name` is not one.
bool Lookup(const std::wstring& name, std::wstring& value) {
    if (name == L"PERSONAL") {
        value = qstr_PersonalDir();
        return true;
    }
    if (name == L"TAMARIN_HOME") {
        value = qstr_TamarinHome();
        return true;
    }
    return false;
}

std::string EnvOrEmpty(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

std::wstring qstr_GetEnv(const std::wstring& name) {
    return qtxt::UTF8toDefaultWide(EnvOrEmpty(qtxt::DefaultWideToUTF8(name).c_str()));
}

std::wstring qstr_PersonalDir() {
    std::string data = EnvOrEmpty("XDG_DATA_HOME");
    if (data.empty()) data = EnvOrEmpty("HOME") + "/.local/share";
    return qtxt::UTF8toDefaultWide(data + "/lattix");
}

std::wstring qstr_TamarinHome() {
    const std::string home = EnvOrEmpty("TAMARIN_HOME");
    if (!home.empty()) return qtxt::UTF8toDefaultWide(home);
    // Installed: share/lattix under the prefix the library lives in (lib/ or lib/<arch>/).
    fs::path installed;
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&qstr_TamarinHome), &info) != 0 &&
        info.dli_fname != nullptr) {
        std::error_code error;
        fs::path folder = fs::weakly_canonical(info.dli_fname, error).parent_path();
        for (int up = 0; up < 3 && folder.has_relative_path(); ++up) {
            folder = folder.parent_path();
            const fs::path candidate = folder / "share" / "lattix";
            if (installed.empty()) installed = candidate;
            if (fs::is_directory(candidate, error)) {
                return qtxt::UTF8toDefaultWide(candidate.string());
            }
        }
    }
    const fs::path sourceResources = fs::path(LATTIX_SOURCE_DIR) / "resources";
    std::error_code error;
    if (fs::is_directory(sourceResources, error)) {
        return qtxt::UTF8toDefaultWide(sourceResources.string());
    }
    return qtxt::UTF8toDefaultWide(installed.string());
}

std::wstring qstr_PathExpand(const std::wstring& path) {
    std::wstring out;
    out.reserve(path.size());
    for (std::size_t i = 0; i < path.size();) {
        const wchar_t c = path[i];
        if (c == L'\\') {
            out.push_back(L'/');
            ++i;
            continue;
        }
        if (c != L'$' || i + 1 >= path.size()) {
            out.push_back(c);
            ++i;
            continue;
        }
        const bool braced = path[i + 1] == L'{';
        std::size_t start = i + (braced ? 2 : 1);
        std::size_t end = start;
        if (end < path.size() && IsNameStart(path[end])) {
            while (end < path.size() && IsNameChar(path[end])) ++end;
        }
        std::wstring value;
        const bool closed = !braced || (end < path.size() && path[end] == L'}');
        if (end > start && closed && Lookup(path.substr(start, end - start), value)) {
            for (wchar_t v : value) out.push_back(v == L'\\' ? L'/' : v);
            i = end + (braced ? 1 : 0);
            continue;
        }
        out.push_back(c);
        ++i;
    }
    return out;
}

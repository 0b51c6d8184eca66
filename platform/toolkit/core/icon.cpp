#include <fstream>
#include <mutex>
#include <set>
#include <sstream>

#include "QuarnLog/Log.h"
#include "ZML/Icon.h"
#include "core/resources.h"
#include "qtxt/Text.h"
#include "qzml/Icons.h"

namespace ZML {

struct iconData {
    std::wstring requested;
    std::wstring path;
};

Icon::Icon(std::wstring requested, std::wstring path) : iconRecord(std::make_shared<iconData>()) {
    iconRecord->requested = std::move(requested);
    iconRecord->path = std::move(path);
}
Icon::~Icon() = default;

const std::wstring& Icon::RequestedName() const {
    return iconRecord->requested;
}
const std::wstring& Icon::Path() const {
    return iconRecord->path;
}
bool Icon::IsPlaceholder() const {
    return iconRecord->path.empty();
}

std::string Icon::SvgText() const {
    if (IsPlaceholder()) {
        return PlaceholderSvg();
    }
    std::filesystem::path file(qtxt::DefaultWideToUTF8(iconRecord->path));
    if (detail::AsciiLower(file.extension().string()) != ".svg") {
        return {};
    }
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

const std::string& Icon::PlaceholderSvg() {
    static const std::string svg =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"16\" height=\"16\" viewBox=\"0 0 16 "
        "16\"><rect x=\"0.5\" y=\"0.5\" width=\"15\" height=\"15\" fill=\"#ff00ff\" "
        "stroke=\"#000000\"/><text x=\"8\" y=\"12.5\" font-family=\"sans-serif\" "
        "font-size=\"12\" font-weight=\"bold\" text-anchor=\"middle\" "
        "fill=\"#ffffff\">?</text></svg>";
    return svg;
}

}  // namespace ZML

namespace {

// The candidate stems for a requested name, most specific first.
std::vector<std::string> StemsFor(const std::string& name) {
    std::string stem = std::filesystem::path(name).stem().string();
    std::vector<std::string> stems{ZML::detail::AsciiLower(stem)};
    const std::string prefix = "opcategory_";
    if (stems.front().rfind(prefix, 0) == 0 && stems.front().size() > prefix.size()) {
        stems.push_back(stems.front().substr(prefix.size()));
    }
    return stems;
}

std::filesystem::path FindIconFile(const std::string& name) {
    const std::filesystem::path folder = ZML::detail::ResourceRoot() / "icons";
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        return {};
    }
    // Extensions in order of preference: a drawing scales, a bitmap does not.
    const std::vector<std::string> extensions{".svg", ".png", ".ico"};
    for (const auto& stem : StemsFor(name)) {
        std::filesystem::path best;
        std::size_t bestRank = extensions.size();
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            if (!entry.is_regular_file(error)) {
                continue;
            }
            const auto& path = entry.path();
            if (ZML::detail::AsciiLower(path.stem().string()) != stem) {
                continue;
            }
            std::string ext = ZML::detail::AsciiLower(path.extension().string());
            for (std::size_t rank = 0; rank < bestRank; ++rank) {
                if (ext == extensions[rank]) {
                    best = path;
                    bestRank = rank;
                    break;
                }
            }
        }
        if (!best.empty()) {
            return best;
        }
    }
    return {};
}

}  // namespace

qzml_Icon qzml_IconCreateFromFile(const std::string& name) {
    auto file = FindIconFile(name);
    if (!file.empty()) {
        return std::make_shared<ZML::Icon>(qtxt::UTF8toDefaultWide(name),
                                           qtxt::UTF8toDefaultWide(file.string()));
    }
    // One record per missing name: a tree full of nodes sharing a missing icon must not flood
    // the log.
    static std::mutex reportedLock;
    static std::set<std::string> reported;
    bool first = false;
    {
        std::lock_guard<std::mutex> lock(reportedLock);
        first = reported.insert(name).second;
    }
    if (first) {
        QuarnLog::Write(QuarnLog::Level::Warning, "qzml_IconCreateFromFile", __FILE__,
                        "Icon \"" + name + "\" not found in " +
                            (ZML::detail::ResourceRoot() / "icons").string() +
                            "; a placeholder is shown.");
    }
    return std::make_shared<ZML::Icon>(qtxt::UTF8toDefaultWide(name), std::wstring{});
}

qzml_Icon qzml_IconCreateFromFile(const std::wstring& name) {
    return qzml_IconCreateFromFile(qtxt::DefaultWideToUTF8(name));
}

void qzml_IconFree(qzml_Icon& icon) {
    icon.reset();
}

#include "qzml/Help.h"

#include <filesystem>

#include "ZML/Backend.h"
#include "core/resources.h"
#include "qtxt/Text.h"

namespace fs = std::filesystem;

namespace {

// The entry of `folder` whose name equals `name` without regard to case, or empty.
fs::path FindEntry(const fs::path& folder, const std::string& name) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        return {};
    }
    const std::string wanted = ZML::detail::AsciiLower(name);
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (ZML::detail::AsciiLower(entry.path().filename().string()) == wanted) {
            return entry.path();
        }
    }
    return {};
}

fs::path HelpSetFolder(const std::wstring& helpSet) {
    return FindEntry(ZML::detail::ResourceRoot() / "help", qtxt::DefaultWideToUTF8(helpSet));
}

// A key names a page, never a path: separators and parent references are refused.
bool IsPlainName(const std::string& name) {
    return !name.empty() && name.find('/') == std::string::npos &&
           name.find('\\') == std::string::npos && name != "." && name != "..";
}

std::string FileUri(const fs::path& file) {
    static const char* hex = "0123456789ABCDEF";
    std::string uri = "file://";
    for (unsigned char c : file.string()) {
        if (std::isalnum(c) || c == '/' || c == '-' || c == '_' || c == '.' || c == '~') {
            uri.push_back(static_cast<char>(c));
        } else {
            uri.push_back('%');
            uri.push_back(hex[c >> 4]);
            uri.push_back(hex[c & 15]);
        }
    }
    return uri;
}

}  // namespace

std::wstring qzml_LXHelpTopicUri(const std::wstring& helpSet, const std::wstring& key,
                                 const std::wstring& subKey) {
    const std::string name = qtxt::DefaultWideToUTF8(key);
    const std::string sub = qtxt::DefaultWideToUTF8(subKey);
    fs::path folder = HelpSetFolder(helpSet);
    if (folder.empty() || !IsPlainName(name) || (!sub.empty() && !IsPlainName(sub))) {
        return {};
    }
    if (!sub.empty()) {
        fs::path subFolder = FindEntry(folder, name);
        fs::path page = subFolder.empty() ? fs::path{} : FindEntry(subFolder, sub + ".html");
        if (!page.empty()) {
            return qtxt::UTF8toDefaultWide(FileUri(page));
        }
    }
    fs::path page = FindEntry(folder, name + ".html");
    if (page.empty()) {
        return {};
    }
    std::string uri = FileUri(page);
    if (!sub.empty()) {
        uri += "#" + sub;
    }
    return qtxt::UTF8toDefaultWide(uri);
}

int qzml_LXHelpIsAvailable(const std::wstring& helpSet, const std::wstring& key,
                           const std::wstring& subKey, QuarnLog::ErrorContext& errors) {
    if (HelpSetFolder(helpSet).empty()) {
        errors.Add(L"No help set \"" + helpSet + L"\" in " +
                   qtxt::UTF8toDefaultWide((ZML::detail::ResourceRoot() / "help").string()) + L".");
        return 0;
    }
    return qzml_LXHelpTopicUri(helpSet, key, subKey).empty() ? 0 : 1;
}

int qzml_LXHelp(const std::wstring& helpSet, const std::wstring& key, const std::wstring& subKey,
                QuarnLog::ErrorContext& errors) {
    std::wstring uri = qzml_LXHelpTopicUri(helpSet, key, subKey);
    if (!uri.empty()) {
        ZML::Backend::Current()->OpenDocument(uri);
        return 1;
    }
    std::wstring topic = subKey.empty() ? key : key + L"/" + subKey;
    errors.Add(L"Help topic \"" + topic + L"\" is not in help set \"" + helpSet + L"\".");
    std::wstring missing = qzml_LXHelpTopicUri(helpSet, L"missing", {});
    if (!missing.empty()) {
        std::string query;
        for (unsigned char c : qtxt::DefaultWideToUTF8(topic)) {
            if (std::isalnum(c) || c == '_' || c == '-' || c == '.') {
                query.push_back(static_cast<char>(c));
            } else {
                char escaped[4];
                std::snprintf(escaped, sizeof escaped, "%%%02X", c);
                query += escaped;
            }
        }
        ZML::Backend::Current()->OpenDocument(missing + L"?topic=" +
                                              qtxt::UTF8toDefaultWide(query));
    }
    return 0;
}

bool qzml_ShowDevelopmentInfo() {
    auto value = ZML::detail::GetEnv("LATTIX_DEVELOPMENT_INFO");
    if (!value) {
        return false;
    }
    std::string lower = ZML::detail::AsciiLower(*value);
    return lower == "1" || lower == "yes" || lower == "true" || lower == "on";
}

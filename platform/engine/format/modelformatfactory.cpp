#include "Velmar/Lattix/ModelFormatFactory.h"

#include <algorithm>
#include <cwctype>
#include <mutex>
#include <string>
#include <vector>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "format/formats.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix {

namespace {

struct formatRegistry {
    std::mutex lock;
    std::vector<std::shared_ptr<const ModelFormat>> formats{
        std::make_shared<format::SpatialModelFormat>(),
        std::make_shared<format::EncryptedSpatialModelFormat>()};
};

formatRegistry& Registry() {
    static formatRegistry registry;
    return registry;
}

std::wstring Lower(std::wstring text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return text;
}

// The user operator folder holds saved models: the factory reads them through this format
// registry. Installed once, when the library is loaded and again on first use (a static build
// may leave the initializer below out).
void InstallUserOperatorLoader() {
    static std::once_flag once;
    std::call_once(once, [] {
        OperatorFactory::SetUserOperatorLoader(
            [](const std::wstring& path) { return ModelFormatFactory::Open(path); });
    });
}

[[maybe_unused]] const bool loaderInstalled = (InstallUserOperatorLoader(), true);

std::shared_ptr<const ModelFormat> FormatByName(const std::wstring& formatName) {
    auto format = ModelFormatFactory::GetFormat(formatName);
    if (!format) QUARN_THROW(L"Unknown model format \"" + formatName + L"\".");
    return format;
}

std::shared_ptr<const ModelFormat> Detect(std::string_view bytes, const std::wstring& source) {
    std::vector<std::shared_ptr<const ModelFormat>> formats;
    {
        auto& registry = Registry();
        std::lock_guard guard(registry.lock);
        formats = registry.formats;
    }
    for (const auto& format : formats)
        if (format->Recognizes(bytes)) return format;
    if (bytes.empty()) QUARN_THROW(L"Cannot read " + source + L": it is empty.");
    QUARN_THROW(L"Cannot read " + source + L": it is not a model in any known format.");
}

int HexDigit(wchar_t c) {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
}

}  // namespace

std::wstring ModelFormatFactory::PathFromUri(const std::wstring& uri) {
    static const std::wstring scheme = L"file://";
    if (Lower(uri.substr(0, scheme.size())) != scheme) {
        auto colon = uri.find(L"://");
        if (colon != std::wstring::npos && colon > 1 &&
            std::all_of(
                uri.begin(), uri.begin() + static_cast<std::ptrdiff_t>(colon),
                [](wchar_t c) { return std::iswalnum(c) || c == L'+' || c == L'-' || c == L'.'; }))
            QUARN_THROW(L"Model URI \"" + uri + L"\" is not a file path or a file:// URI.");
        return uri;
    }
    auto rest = uri.substr(scheme.size());
    if (Lower(rest.substr(0, 10)) == L"localhost/") rest = rest.substr(9);
    if (rest.empty() || rest.front() != L'/')
        QUARN_THROW(L"Model URI \"" + uri + L"\" names no absolute path.");
    // Percent escapes stand for UTF-8 bytes.
    std::string bytes;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (rest[i] == L'%') {
            int high = i + 2 < rest.size() ? HexDigit(rest[i + 1]) : -1;
            int low = high >= 0 ? HexDigit(rest[i + 2]) : -1;
            if (low < 0) QUARN_THROW(L"Model URI \"" + uri + L"\" has a bad % escape.");
            bytes += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            bytes += qtxt::DefaultWideToUTF8(std::wstring(1, rest[i]));
        }
    }
    return qtxt::UTF8toDefaultWide(bytes);
}

void ModelFormatFactory::Save(const std::shared_ptr<Model>& model, const std::wstring& uri,
                              const std::wstring& formatName) {
    InstallUserOperatorLoader();
    if (!model) QUARN_THROW(L"There is no model to save to \"" + uri + L"\".");
    auto path = PathFromUri(uri);
    std::shared_ptr<const ModelFormat> format;
    if (formatName.empty()) {
        format = GetFormatForPath(path);
        if (!format) format = FormatByName(PlainFormatName);
    } else {
        format = FormatByName(formatName);
    }
    format::WriteFileAtomically(path, format->Write(*model));
}

std::shared_ptr<Model> ModelFormatFactory::Open(const std::wstring& uri,
                                                const std::wstring& formatName) {
    InstallUserOperatorLoader();
    auto path = PathFromUri(uri);
    auto bytes = format::ReadWholeFile(path);
    std::wstring source = L"model file \"" + path + L"\"";
    auto format = formatName.empty() ? Detect(bytes, source) : FormatByName(formatName);
    return format->Read(bytes, source);
}

std::wstring ModelFormatFactory::SaveToBuffer(const std::shared_ptr<Model>& model,
                                              const std::wstring& formatName) {
    InstallUserOperatorLoader();
    if (!model) QUARN_THROW("There is no model to save.");
    auto format = FormatByName(formatName.empty() ? std::wstring(PlainFormatName) : formatName);
    return format->BytesToText(format->Write(*model));
}

std::shared_ptr<Model> ModelFormatFactory::OpenFromBuffer(const std::wstring& text,
                                                          const std::wstring& formatName) {
    InstallUserOperatorLoader();
    std::wstring source = L"model text";
    if (!formatName.empty()) {
        auto format = FormatByName(formatName);
        return format->Read(format->TextToBytes(text), source);
    }
    auto bytes = qtxt::DefaultWideToUTF8(text);
    auto format = Detect(bytes, source);
    return format->Read(format->TextToBytes(text), source);
}

std::shared_ptr<const ModelFormat> ModelFormatFactory::GetFormat(const std::wstring& formatName) {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    for (const auto& format : registry.formats)
        if (format->GetName() == formatName) return format;
    return nullptr;
}

std::shared_ptr<const ModelFormat> ModelFormatFactory::GetFormatForPath(const std::wstring& path) {
    auto lowered = Lower(path);
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    for (const auto& format : registry.formats) {
        auto extension = Lower(format->GetExtension());
        if (lowered.size() > extension.size() &&
            lowered.compare(lowered.size() - extension.size(), extension.size(), extension) == 0)
            return format;
    }
    return nullptr;
}

std::vector<std::wstring> ModelFormatFactory::GetFormatNames() {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    std::vector<std::wstring> names;
    for (const auto& format : registry.formats) names.push_back(format->GetName());
    return names;
}

void ModelFormatFactory::Register(std::shared_ptr<const ModelFormat> format) {
    if (!format) QUARN_THROW("Cannot register an empty model format.");
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    auto name = format->GetName();
    for (auto& existing : registry.formats) {
        if (existing->GetName() == name) {
            existing = std::move(format);
            return;
        }
    }
    registry.formats.push_back(std::move(format));
}

}  // namespace Velmar::Lattix

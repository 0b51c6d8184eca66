#include "quarn/os/Clipboard.h"

#include <mutex>

#include "quarn/os/FileClipboardBackend.h"

namespace quarn::os {

namespace {

std::mutex backendMutex;
std::shared_ptr<ClipboardBackend>& InstalledBackend() {
    static std::shared_ptr<ClipboardBackend> backend;
    return backend;
}

}  // namespace

void SetClipboardBackend(std::shared_ptr<ClipboardBackend> backend) {
    std::lock_guard lock(backendMutex);
    InstalledBackend() = std::move(backend);
}

std::shared_ptr<ClipboardBackend> GetClipboardBackend() {
    std::lock_guard lock(backendMutex);
    auto& backend = InstalledBackend();
    if (!backend) backend = std::make_shared<FileClipboardBackend>();
    return backend;
}

ClipboardFormat RegisterClipboardFormat(const std::wstring& name) {
    return GetClipboardBackend()->RegisterFormat(name);
}

void OpenClipboard() {
    GetClipboardBackend()->Open();
}

void EmptyClipboard() {
    GetClipboardBackend()->Empty();
}

void SetClipboardData(ClipboardFormat format, std::span<const std::uint8_t> bytes) {
    GetClipboardBackend()->SetData(format, bytes);
}

std::optional<std::vector<std::uint8_t>> GetClipboardData(ClipboardFormat format) {
    return GetClipboardBackend()->GetData(format);
}

void CloseClipboard() {
    GetClipboardBackend()->Close();
}

ClipboardSession::ClipboardSession() : clipboardSession(GetClipboardBackend()) {
    clipboardSession->Open();
}

ClipboardSession::~ClipboardSession() {
    clipboardSession->Close();
}

}  // namespace quarn::os

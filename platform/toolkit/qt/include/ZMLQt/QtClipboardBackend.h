#pragma once

#include <memory>

#include "quarn/os/ClipboardBackend.h"

namespace ZML::Qt6 {

struct qtClipboardData;

// The desktop clipboard (QClipboard) behind the clipboard interface of the OS services. Each
// registered format name travels as its own MIME type, "application/x-lattix-<name>", so that
// every process of the suite that registers the same name reads the same bytes. Writes made
// between Open and Close are handed to the desktop at Close, all formats at once.
// Needs a QGuiApplication; calls from other threads are carried out on the application's thread.
class QtClipboardBackend : public quarn::os::ClipboardBackend {
public:
    using ClipboardFormat = quarn::os::ClipboardFormat;

    QtClipboardBackend();
    ~QtClipboardBackend() override;

    ClipboardFormat RegisterFormat(const std::wstring& name) override;
    void Open() override;
    void Empty() override;
    void SetData(ClipboardFormat format, std::span<const std::uint8_t> bytes) override;
    std::optional<std::vector<std::uint8_t>> GetData(ClipboardFormat format) override;
    void Close() override;

    // The MIME type a format name travels as.
    static std::string MimeType(const std::wstring& formatName);

private:
    std::shared_ptr<qtClipboardData> qtClipboardRecord;
};

}  // namespace ZML::Qt6

#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "quarn/os/ClipboardBackend.h"

// The system clipboard of the process, reached through the installed backend (by default the
// headless FileClipboardBackend, shared across the user's processes). The calls follow the usual
// sequence: register the format by name, open, empty and set (or get), close.
namespace quarn::os {

// Installs `backend` as the process's clipboard; an empty pointer goes back to the headless
// default. The previous backend should not be open.
void SetClipboardBackend(std::shared_ptr<ClipboardBackend> backend);
// The installed backend, creating the headless default on first use.
std::shared_ptr<ClipboardBackend> GetClipboardBackend();

ClipboardFormat RegisterClipboardFormat(const std::wstring& name);
void OpenClipboard();
void EmptyClipboard();
void SetClipboardData(ClipboardFormat format, std::span<const std::uint8_t> bytes);
std::optional<std::vector<std::uint8_t>> GetClipboardData(ClipboardFormat format);
void CloseClipboard();

// Opens the clipboard for the life of the object and closes it on every path out of a scope.
class ClipboardSession {
public:
    ClipboardSession();
    ~ClipboardSession();
    ClipboardSession(const ClipboardSession&) = delete;
    ClipboardSession& operator=(const ClipboardSession&) = delete;

private:
    std::shared_ptr<ClipboardBackend> clipboardSession;
};

}  // namespace quarn::os

#pragma once

#include <memory>
#include <string>

#include "quarn/os/ClipboardBackend.h"

namespace quarn::os {

struct fileClipboardData;

// The headless clipboard, shared by every process of the user: one file per format, named after
// the format's name (percent-encoded), in a private folder. A write replaces the file atomically
// (temporary file and rename); Open takes an exclusive flock on the folder's ".lock" file, so a
// reader never sees half a write and Empty and SetData of one process are not interleaved with
// another's. Errors name the Linux call that failed.
class FileClipboardBackend : public ClipboardBackend {
public:
    // `folder` empty: $XDG_RUNTIME_DIR/lattix/clipboard, or /tmp/lattix-<uid>/clipboard when
    // XDG_RUNTIME_DIR is unset. The folder is created (mode 0700) on first use; a fallback folder
    // under /tmp must belong to the user and be closed to others.
    explicit FileClipboardBackend(std::string folder = {});
    ~FileClipboardBackend() override;

    // The folder holding the formats' files.
    const std::string& Folder() const;

    ClipboardFormat RegisterFormat(const std::wstring& name) override;
    void Open() override;
    void Empty() override;
    void SetData(ClipboardFormat format, std::span<const std::uint8_t> bytes) override;
    std::optional<std::vector<std::uint8_t>> GetData(ClipboardFormat format) override;
    void Close() override;

    // The default folder, as described above (not created).
    static std::string DefaultFolder();

private:
    std::shared_ptr<fileClipboardData> fileClipboard;
};

}  // namespace quarn::os

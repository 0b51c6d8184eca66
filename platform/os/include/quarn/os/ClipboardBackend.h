#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quarn::os {

// A clipboard format id as RegisterFormat hands it out. Ids are meaningful inside one process only:
// processes agree on a format by its name, which is why callers register the name again before
// every read and every write.
using ClipboardFormat = std::uint32_t;

// Where the clipboard's contents live. The headless backend keeps them in files shared by every
// process of the user (FileClipboardBackend); a desktop backend installs itself with
// SetClipboardBackend. Implementations must be safe to call from any thread.
class ClipboardBackend {
public:
    virtual ~ClipboardBackend() = default;

    // The id of the format called `name`; the same name always gives the same id. Never 0.
    virtual ClipboardFormat RegisterFormat(const std::wstring& name) = 0;
    // Takes the clipboard for this process until Close. Raises QuarnLog::Exception when it cannot
    // be had (for example another process holds it for too long).
    virtual void Open() = 0;
    // Removes every format's contents. Requires Open.
    virtual void Empty() = 0;
    // Replaces the contents of `format` with `bytes`. Requires Open.
    virtual void SetData(ClipboardFormat format, std::span<const std::uint8_t> bytes) = 0;
    // The contents of `format`, or nothing when the clipboard holds none. Requires Open.
    virtual std::optional<std::vector<std::uint8_t>> GetData(ClipboardFormat format) = 0;
    // Gives the clipboard back. Closing a clipboard that is not open does nothing.
    virtual void Close() = 0;
};

}  // namespace quarn::os

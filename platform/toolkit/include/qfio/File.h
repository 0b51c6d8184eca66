#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace qfio {

struct fileData;

// An open file as qfio_Open returns it; closed when destroyed (or by qfio_Close). Text is UTF-8 on
// disk and wide in memory. One thread at a time.
class File {
public:
    // Takes ownership of `stream`, which must not be null.
    File(std::FILE* stream, std::wstring path);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const std::wstring& Path() const;
    // The underlying stream, or null once closed. Owned by this object.
    std::FILE* Stream() const;

    // Reads the next line without its line end ("\n" or "\r\n"). A line longer than `maxChars`
    // characters is handed out in pieces of `maxChars`, as fgets would. False at the end of the
    // file (or when closed); malformed UTF-8 becomes U+FFFD.
    bool ReadLine(std::wstring& line, std::size_t maxChars);
    // Writes `text` as UTF-8; false when the write failed.
    bool Write(std::wstring_view text);
    // Closes the stream; returns the error number of a failed close, or 0.
    int Close();

private:
    std::shared_ptr<qfio::fileData> fileData;
};

}  // namespace qfio

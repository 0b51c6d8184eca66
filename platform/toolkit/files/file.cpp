#include "qfio/File.h"

#include <cassert>
#include <cerrno>

#include "qtxt/Text.h"

namespace qfio {

struct fileData {
    std::FILE* stream = nullptr;
    std::wstring path;
    std::wstring pending;  // rest of a line longer than the last ReadLine's limit
};

File::File(std::FILE* stream, std::wstring path) : fileData(std::make_shared<struct fileData>()) {
    assert(stream != nullptr);
    fileData->stream = stream;
    fileData->path = std::move(path);
}

File::~File() {
    Close();
}

const std::wstring& File::Path() const {
    return fileData->path;
}

std::FILE* File::Stream() const {
    return fileData->stream;
}

bool File::ReadLine(std::wstring& line, std::size_t maxChars) {
    auto& d = *fileData;
    if (maxChars == 0) maxChars = 1;
    line.clear();
    if (d.pending.empty()) {
        if (!d.stream) return false;
        // A piece is read in bytes; at most four bytes per character, finished at a character
        // boundary so that no sequence is split.
        const std::size_t byteLimit = maxChars * 4;
        std::string bytes;
        bool sawEnd = false;
        int c = 0;
        while ((c = std::getc(d.stream)) != EOF) {
            if (c == '\n') {
                sawEnd = true;
                break;
            }
            bytes.push_back(static_cast<char>(c));
            if (bytes.size() >= byteLimit) {
                int next = 0;
                while ((next = std::getc(d.stream)) != EOF && (next & 0xC0) == 0x80) {
                    bytes.push_back(static_cast<char>(next));
                }
                if (next != EOF) std::ungetc(next, d.stream);
                break;
            }
        }
        if (c == EOF && bytes.empty()) return false;
        if (sawEnd && !bytes.empty() && bytes.back() == '\r') bytes.pop_back();
        d.pending = qtxt::UTF8toDefaultWide(bytes);
        if (d.pending.empty()) return true;  // an empty line
    }
    const std::size_t take = std::min(maxChars, d.pending.size());
    line.assign(d.pending, 0, take);
    d.pending.erase(0, take);
    return true;
}

bool File::Write(std::wstring_view text) {
    if (!fileData->stream) return false;
    const std::string bytes = qtxt::DefaultWideToUTF8(text);
    return std::fwrite(bytes.data(), 1, bytes.size(), fileData->stream) == bytes.size();
}

int File::Close() {
    if (!fileData->stream) return 0;
    const int result = std::fclose(fileData->stream);
    fileData->stream = nullptr;
    fileData->pending.clear();
    return result == 0 ? 0 : errno;
}

}  // namespace qfio

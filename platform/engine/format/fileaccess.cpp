#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuarnLog/Exception.h"
#include "format/formats.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix::format {

namespace {

std::wstring SystemError(const char* call, int error) {
    return qtxt::widen(std::string(call) + ": " + std::strerror(error));
}

// Closes a descriptor on every path out of a function.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd(fd) {}
    ~FileDescriptor() {
        if (fd >= 0) ::close(fd);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int Get() const { return fd; }
    int Release() {
        int result = fd;
        fd = -1;
        return result;
    }

private:
    int fd;
};

}  // namespace

std::string ReadWholeFile(const std::wstring& path) {
    auto narrowPath = qtxt::DefaultWideToUTF8(path);
    FileDescriptor file(::open(narrowPath.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0)
        QUARN_THROW(L"Cannot open model file \"" + path + L"\" (" + SystemError("open", errno) +
                    L").");
    struct stat info {};
    if (::fstat(file.Get(), &info) == 0 && S_ISDIR(info.st_mode))
        QUARN_THROW(L"Cannot open model file \"" + path + L"\": it is a folder.");
    // Read straight into a buffer one byte larger than the file, so that the read meeting its end
    // needs no more room; a file that grows meanwhile (or reports no size) is read on in chunks.
    std::string bytes;
    std::size_t used = 0;
    if (info.st_size > 0) bytes.resize(static_cast<std::size_t>(info.st_size) + 1);
    for (;;) {
        if (used == bytes.size()) bytes.resize(std::max<std::size_t>(bytes.size() * 2, 65536));
        auto got = ::read(file.Get(), bytes.data() + used, bytes.size() - used);
        if (got < 0) {
            if (errno == EINTR) continue;
            QUARN_THROW(L"Cannot read model file \"" + path + L"\" (" + SystemError("read", errno) +
                        L").");
        }
        if (got == 0) break;
        used += static_cast<std::size_t>(got);
    }
    bytes.resize(used);
    return bytes;
}

void WriteFileAtomically(const std::wstring& path, std::string_view bytes) {
    if (sodium_init() < 0) QUARN_THROW("The random source could not be started.");
    auto target = qtxt::DefaultWideToUTF8(path);
    unsigned char random[6];
    randombytes_buf(random, sizeof random);
    char suffix[sizeof random * 2 + 1];
    sodium_bin2hex(suffix, sizeof suffix, random, sizeof random);
    auto temporary = target + ".tmp-" + suffix;

    auto fail = [&](const char* call, int error) {
        ::unlink(temporary.c_str());
        QUARN_THROW(L"Cannot save model file \"" + path + L"\" (" + SystemError(call, error) +
                    L").");
    };
    FileDescriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.Get() < 0)
        QUARN_THROW(L"Cannot save model file \"" + path + L"\" (" + SystemError("open", errno) +
                    L").");
    // A file saved over keeps its permissions.
    struct stat existing {};
    if (::stat(target.c_str(), &existing) == 0) ::fchmod(file.Get(), existing.st_mode & 07777);
    std::size_t written = 0;
    while (written < bytes.size()) {
        auto put = ::write(file.Get(), bytes.data() + written, bytes.size() - written);
        if (put < 0) {
            if (errno == EINTR) continue;
            fail("write", errno);
        }
        written += static_cast<std::size_t>(put);
    }
    if (::fsync(file.Get()) != 0) fail("fsync", errno);
    if (::close(file.Release()) != 0) fail("close", errno);
    if (::rename(temporary.c_str(), target.c_str()) != 0) fail("rename", errno);
}

}  // namespace Velmar::Lattix::format

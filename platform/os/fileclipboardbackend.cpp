#include "quarn/os/FileClipboardBackend.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

#include "QuarnLog/Exception.h"
#include "qtxt/Text.h"

namespace quarn::os {

namespace {

constexpr const char* kFunctionPrefix = "quarn::os::FileClipboardBackend::";
// How long Open waits for another process (or thread) to close the clipboard.
constexpr auto kOpenTimeout = std::chrono::seconds(5);
// Registered formats start where the desktop's registered formats start, away from the
// predefined ones.
constexpr ClipboardFormat kFirstFormat = 0xC000;

[[noreturn]] void Fail(const char* function, const std::string& call, const std::string& what,
                       int error) {
    throw QuarnLog::Exception(std::string(kFunctionPrefix) + function, __FILE__,
                              call + " failed for '" + what + "': " + std::strerror(error));
}

// Creates `path` and its missing parents as private folders; the last must be a real folder.
void MakePrivateFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string part = path.substr(0, slash);
        if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) Fail("Open", "mkdir", part, errno);
        if (slash == std::string::npos) break;
    }
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) Fail("Open", "lstat", path, errno);
    if (!S_ISDIR(st.st_mode)) Fail("Open", "mkdir", path, ENOTDIR);
}

// The parent of the fallback folder lives in the shared /tmp: it must be ours and closed to others.
void CheckOwnedPrivate(const std::string& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) Fail("Open", "lstat", path, errno);
    if (!S_ISDIR(st.st_mode) || st.st_uid != ::getuid() || (st.st_mode & 077) != 0) {
        throw QuarnLog::Exception(std::string(kFunctionPrefix) + "Open", __FILE__,
                                  "lstat: '" + path +
                                      "' is not a private folder of this user; refusing to keep "
                                      "the clipboard there");
    }
}

// Format names become file names: letters, digits, '_', '-' and '.' (not leading) stay, every
// other byte of the UTF-8 name is written %XX.
std::string FileNameOf(const std::wstring& name) {
    const std::string utf8 = qtxt::DefaultWideToUTF8(name);
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string out = "fmt-";
    for (unsigned char c : utf8) {
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
            c == '_' || c == '-' || c == '.') {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back('%');
            out.push_back(hex[c >> 4]);
            out.push_back(hex[c & 15]);
        }
    }
    return out;
}

class Fd {
public:
    explicit Fd(int fd) : fd(fd) {}
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd; }
    int release() {
        int f = fd;
        fd = -1;
        return f;
    }

private:
    int fd;
};

}  // namespace

struct fileClipboardData {
    std::string folder;
    std::mutex mutex;  // guards everything below
    std::map<std::wstring, ClipboardFormat> ids;
    std::map<ClipboardFormat, std::string> files;  // id -> file name inside the folder
    int lockFd = -1;                               // >= 0 while open
    bool busy = false;                             // open by a thread of this process
    bool folderReady = false;
};

FileClipboardBackend::FileClipboardBackend(std::string folder)
    : fileClipboard(std::make_shared<fileClipboardData>()) {
    fileClipboard->folder = folder.empty() ? DefaultFolder() : std::move(folder);
}

FileClipboardBackend::~FileClipboardBackend() {
    Close();
}

const std::string& FileClipboardBackend::Folder() const {
    return fileClipboard->folder;
}

std::string FileClipboardBackend::DefaultFolder() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime) return std::string(runtime) + "/lattix/clipboard";
    return "/tmp/lattix-" + std::to_string(::getuid()) + "/clipboard";
}

ClipboardFormat FileClipboardBackend::RegisterFormat(const std::wstring& name) {
    if (name.empty()) {
        throw QuarnLog::Exception(std::string(kFunctionPrefix) + "RegisterFormat", __FILE__,
                                  "a clipboard format needs a name");
    }
    std::lock_guard lock(fileClipboard->mutex);
    auto [it, added] = fileClipboard->ids.try_emplace(
        name, kFirstFormat + static_cast<ClipboardFormat>(fileClipboard->ids.size()));
    if (added) fileClipboard->files[it->second] = FileNameOf(name);
    return it->second;
}

void FileClipboardBackend::Open() {
    auto& d = *fileClipboard;
    const auto deadline = std::chrono::steady_clock::now() + kOpenTimeout;
    std::unique_lock lock(d.mutex);
    while (d.busy) {
        lock.unlock();
        if (std::chrono::steady_clock::now() > deadline) {
            Fail("Open", "OpenClipboard", d.folder, EBUSY);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        lock.lock();
    }
    if (!d.folderReady) {
        MakePrivateFolders(d.folder);
        const char* runtime = std::getenv("XDG_RUNTIME_DIR");
        if (d.folder == DefaultFolder() && !(runtime && *runtime)) {
            CheckOwnedPrivate(d.folder.substr(0, d.folder.rfind('/')));
        }
        d.folderReady = true;
    }
    const std::string lockPath = d.folder + "/.lock";
    Fd fd(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (fd.get() < 0) Fail("Open", "open", lockPath, errno);
    while (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) Fail("Open", "flock", lockPath, errno);
        if (std::chrono::steady_clock::now() > deadline) Fail("Open", "flock", lockPath, EBUSY);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    d.lockFd = fd.release();
    d.busy = true;
}

void FileClipboardBackend::Close() {
    std::lock_guard lock(fileClipboard->mutex);
    if (fileClipboard->lockFd >= 0) {
        ::flock(fileClipboard->lockFd, LOCK_UN);
        ::close(fileClipboard->lockFd);
    }
    fileClipboard->lockFd = -1;
    fileClipboard->busy = false;
}

void FileClipboardBackend::Empty() {
    std::lock_guard lock(fileClipboard->mutex);
    const auto& folder = fileClipboard->folder;
    if (!fileClipboard->busy) Fail("Empty", "EmptyClipboard", folder, EACCES);
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) Fail("Empty", "opendir", folder, errno);
    std::vector<std::string> names;
    while (dirent* entry = ::readdir(dir)) {
        std::string name = entry->d_name;
        if (name.rfind("fmt-", 0) == 0) names.push_back(std::move(name));
    }
    ::closedir(dir);
    for (const auto& name : names) {
        const std::string path = folder + "/" + name;
        if (::unlink(path.c_str()) != 0 && errno != ENOENT) Fail("Empty", "unlink", path, errno);
    }
}

void FileClipboardBackend::SetData(ClipboardFormat format, std::span<const std::uint8_t> bytes) {
    std::lock_guard lock(fileClipboard->mutex);
    const auto& folder = fileClipboard->folder;
    if (!fileClipboard->busy) Fail("SetData", "SetClipboardData", folder, EACCES);
    auto file = fileClipboard->files.find(format);
    if (file == fileClipboard->files.end()) {
        Fail("SetData", "SetClipboardData", "format " + std::to_string(format), EINVAL);
    }
    const std::string target = folder + "/" + file->second;
    std::string temp = folder + "/.tmp-XXXXXX";
    Fd fd(::mkostemp(temp.data(), O_CLOEXEC));
    if (fd.get() < 0) Fail("SetData", "mkostemp", temp, errno);
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(fd.get(), bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            const int error = errno;
            ::unlink(temp.c_str());
            Fail("SetData", "write", temp, error);
        }
        done += static_cast<std::size_t>(n);
    }
    if (::close(fd.release()) != 0) {
        const int error = errno;
        ::unlink(temp.c_str());
        Fail("SetData", "close", temp, error);
    }
    if (::rename(temp.c_str(), target.c_str()) != 0) {
        const int error = errno;
        ::unlink(temp.c_str());
        Fail("SetData", "rename", target, error);
    }
}

std::optional<std::vector<std::uint8_t>> FileClipboardBackend::GetData(ClipboardFormat format) {
    std::lock_guard lock(fileClipboard->mutex);
    const auto& folder = fileClipboard->folder;
    if (!fileClipboard->busy) Fail("GetData", "GetClipboardData", folder, EACCES);
    auto file = fileClipboard->files.find(format);
    if (file == fileClipboard->files.end()) return std::nullopt;
    const std::string path = folder + "/" + file->second;
    Fd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0) {
        if (errno == ENOENT) return std::nullopt;
        Fail("GetData", "open", path, errno);
    }
    std::vector<std::uint8_t> bytes;
    std::uint8_t chunk[8192];
    for (;;) {
        ssize_t n = ::read(fd.get(), chunk, sizeof chunk);
        if (n < 0) {
            if (errno == EINTR) continue;
            Fail("GetData", "read", path, errno);
        }
        if (n == 0) break;
        bytes.insert(bytes.end(), chunk, chunk + n);
    }
    return bytes;
}

}  // namespace quarn::os

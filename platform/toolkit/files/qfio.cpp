#include "qfio/qfio.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "QuarnLog/Exception.h"
#include "qtxt/Text.h"

namespace {

std::string Utf8(const std::wstring& text) {
    return qtxt::DefaultWideToUTF8(text);
}

bool IsSeparator(wchar_t c) {
    return c == L'/' || c == L'\\';
}

// Index just after the last separator of `name`, or 0.
std::size_t BaseStart(const std::wstring& name) {
    for (std::size_t i = name.size(); i > 0; --i) {
        if (IsSeparator(name[i - 1])) return i;
    }
    return 0;
}

// Index of the extension's '.' in the internal form of `name`, or its size when it has none. A
// leading dot (".profile") starts the base, not an extension.
std::size_t ExtensionStart(const std::wstring& internal) {
    const std::size_t base = BaseStart(internal);
    const std::size_t dot = internal.rfind(L'.');
    if (dot == std::wstring::npos || dot <= base) return internal.size();
    return dot;
}

}  // namespace

bool qfio_FileExists(const std::wstring& path, QuarnLog::ErrorContext& errorRecord) {
    struct stat st {};
    const std::string narrowPath = Utf8(path);
    if (::stat(narrowPath.c_str(), &st) == 0) return true;
    const int error = errno;
    if (error != ENOENT && error != ENOTDIR) {
        errorRecord.Add("stat failed for '" + narrowPath + "': " + std::strerror(error));
    }
    return false;
}

std::wstring qfio_TmpdirName() {
    const char* tmp = std::getenv("TMPDIR");
    std::string dir = (tmp && *tmp) ? tmp : "/tmp";
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    return qtxt::UTF8toDefaultWide(dir);
}

std::wstring qfio_TempNameInTmpdir(const std::wstring& prefix) {
    std::wstring stem = prefix;
    for (auto& c : stem) {
        if (IsSeparator(c)) c = L'_';
    }
    std::string pattern = Utf8(qfio_TmpdirName() + L"/" + stem) + "XXXXXX";
    const int fd = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (fd < 0) {
        const int error = errno;
        throw QuarnLog::Exception("qfio_TempNameInTmpdir", __FILE__,
                                  "mkstemp failed for '" + pattern + "': " + std::strerror(error));
    }
    ::close(fd);
    return qtxt::UTF8toDefaultWide(pattern);
}

std::unique_ptr<qfio::File> qfio_Open(const std::wstring& path, std::string_view mode) {
    std::string cmode;
    for (char c : mode) {
        if (c != 't') cmode.push_back(c);
    }
    cmode.push_back('e');  // close on exec: children never inherit the suite's files
    std::FILE* stream = std::fopen(Utf8(path).c_str(), cmode.c_str());
    if (!stream) return nullptr;
    return std::make_unique<qfio::File>(stream, path);
}

std::unique_ptr<qfio::File> qfio_Open(const std::wstring& path, std::string_view mode,
                                      QuarnLog::ErrorContext& errorRecord) {
    auto file = qfio_Open(path, mode);
    if (!file) {
        const int error = errno;
        errorRecord.Add("fopen failed for '" + Utf8(path) + "' (mode \"" + std::string(mode) +
                        "\"): " + std::strerror(error));
    }
    return file;
}

bool qfio_Fgets(qfio::File& file, std::wstring& line, std::size_t maxChars) {
    return file.ReadLine(line, maxChars);
}

bool qfio_Fputs(qfio::File& file, std::wstring_view text) {
    return file.Write(text);
}

bool qfio_Close(std::unique_ptr<qfio::File>& file) {
    if (!file) return true;
    const int error = file->Close();
    file.reset();
    return error == 0;
}

std::wstring qfio_FilenameExternalToInternal(const std::wstring& name) {
    std::wstring out;
    out.reserve(name.size());
    for (std::size_t i = 0; i < name.size(); ++i) {
        const wchar_t c = IsSeparator(name[i]) ? L'/' : name[i];
        if (c == L'/' && !out.empty() && out.back() == L'/' && !(out.size() == 1 && i == 1)) {
            continue;
        }
        out.push_back(c);
    }
    return out;
}

std::wstring qfio_FilenamePath(const std::wstring& name) {
    const std::wstring internal = qfio_FilenameExternalToInternal(name);
    return internal.substr(0, BaseStart(internal));
}

std::wstring qfio_FilenameBase(const std::wstring& name) {
    const std::wstring internal = qfio_FilenameExternalToInternal(name);
    const std::size_t start = BaseStart(internal);
    return internal.substr(start, ExtensionStart(internal) - start);
}

std::wstring qfio_FilenameExtension(const std::wstring& name) {
    const std::wstring internal = qfio_FilenameExternalToInternal(name);
    return internal.substr(ExtensionStart(internal));
}

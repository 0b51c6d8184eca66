#include "qfio/TmpDir.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "qfio/qfio.h"
#include "qtxt/Text.h"

namespace qfio {

struct tmpDirData {
    std::wstring name;
};

TmpDir::TmpDir(const std::wstring& name) : tmpDirData(std::make_shared<struct tmpDirData>()) {
    std::wstring stem = name.empty() ? std::wstring(L"lattix") : name;
    for (auto& c : stem) {
        if (c == L'/' || c == L'\\') c = L'_';
    }
    std::string pattern = qtxt::DefaultWideToUTF8(qfio_TmpdirName() + L"/" + stem) + "_XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        const int error = errno;
        throw QuarnLog::Exception("qfio::TmpDir::TmpDir", __FILE__,
                                  "mkdtemp failed for '" + pattern + "': " + std::strerror(error));
    }
    tmpDirData->name = qtxt::UTF8toDefaultWide(pattern);
}

TmpDir::~TmpDir() {
    std::error_code error;
    std::filesystem::remove_all(qtxt::DefaultWideToUTF8(tmpDirData->name), error);
    if (error) {
        QuarnLog::Write(QuarnLog::Level::Warning, "qfio::TmpDir::~TmpDir", __FILE__,
                        "could not remove temporary folder '" +
                            qtxt::DefaultWideToUTF8(tmpDirData->name) + "': " + error.message());
    }
}

const std::wstring& TmpDir::Name() const {
    return tmpDirData->name;
}

}  // namespace qfio

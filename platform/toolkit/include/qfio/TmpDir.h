#pragma once

#include <memory>
#include <string>

namespace qfio {

struct tmpDirData;

// A new private temporary folder (mode 0700) under $TMPDIR, or /tmp when TMPDIR is unset. Its name
// is `name` followed by "_" and six random characters, for example "LX_UNDO_REDO_k3Qz9a"; '/' and
// '\' in `name` become '_'. The folder and everything in it are removed when the object is
// destroyed, so files kept there (undo snapshots) never outlive their owner; share the object
// through a shared pointer to extend its life. Raises QuarnLog::Exception naming mkdtemp when the
// folder cannot be made.
class TmpDir {
public:
    explicit TmpDir(const std::wstring& name);
    ~TmpDir();
    TmpDir(const TmpDir&) = delete;
    TmpDir& operator=(const TmpDir&) = delete;

    // The folder's full path, without a trailing separator.
    const std::wstring& Name() const;

private:
    std::shared_ptr<qfio::tmpDirData> tmpDirData;
};

}  // namespace qfio

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "QuarnLog/ErrorContext.h"
#include "qfio/File.h"
#include "qfio/TmpDir.h"

// File services of the toolkit.
//
// Error records: a toolkit call that reports failures without raising takes a
// `QuarnLog::ErrorContext&`, the record its caller opened named after its operation. The call adds
// one message per failure (naming the file and the Linux call) and never raises; the caller tests
// HasErrors() or leaves the context to log them when it ends.
//
// Names: the toolkit's internal file names use '/' only. External names, as users, other programs
// and stored models write them, may also use '\'; qfio_FilenameExternalToInternal turns them into
// internal ones. The splitting functions accept both.

// True when `path` names an existing file or folder. A failure other than "no such file" (for
// example a permission error) is added to `errorRecord` and gives false.
bool qfio_FileExists(const std::wstring& path, QuarnLog::ErrorContext& errorRecord);

// Creates a new empty file (mode 0600) in $TMPDIR, or /tmp, named `prefix` plus six random
// characters, and returns its full path. The file is created exclusively, so the name is unique
// across threads and processes; the caller owns the file. Raises QuarnLog::Exception naming
// mkstemp on failure.
std::wstring qfio_TempNameInTmpdir(const std::wstring& prefix);

// The temporary folder of the system: $TMPDIR when set, else /tmp; no trailing separator.
std::wstring qfio_TmpdirName();

// Opens `path` with an fopen mode ("r", "w", "a", "r+", ...; 't' and 'b' are accepted and mean
// nothing here, so "rt" reads text). Null on failure, with the reason added to `errorRecord`.
std::unique_ptr<qfio::File> qfio_Open(const std::wstring& path, std::string_view mode,
                                      QuarnLog::ErrorContext& errorRecord);
// As above, for callers that report failure in their own words: null on failure, errno set.
std::unique_ptr<qfio::File> qfio_Open(const std::wstring& path, std::string_view mode);

// Reads the next line of `file` into `line` (see qfio::File::ReadLine); false at the end.
bool qfio_Fgets(qfio::File& file, std::wstring& line, std::size_t maxChars = 2048);
// Writes `text` to `file` as UTF-8; false when the write failed.
bool qfio_Fputs(qfio::File& file, std::wstring_view text);
// Closes and releases `file` (null is allowed); false when the close reported an error.
bool qfio_Close(std::unique_ptr<qfio::File>& file);

// Splitting file names. For every name, Path + Base + Extension equals its internal form:
//   "C:\data\dem.tif"   -> path "C:/data/", base "dem", extension ".tif"
//   "/a/archive.tar.gz" -> path "/a/", base "archive.tar", extension ".gz"
//   "notes"             -> path "", base "notes", extension ""
//   "/a/.profile"       -> path "/a/", base ".profile", extension ""
// The path part keeps its trailing '/'; the extension keeps its '.'.
std::wstring qfio_FilenamePath(const std::wstring& name);
std::wstring qfio_FilenameBase(const std::wstring& name);
std::wstring qfio_FilenameExtension(const std::wstring& name);
// The internal form of an external file name: every '\' becomes '/' and runs of separators
// collapse to one (except a leading "//", which stays).
std::wstring qfio_FilenameExternalToInternal(const std::wstring& name);

#pragma once

#include <string>
#include <string_view>

// The process-wide log of the suite. Every record carries the function that wrote it, its source
// file and its text. Records go to standard error and to a size-capped rotating file,
// $XDG_STATE_HOME/lattix/lattix.log (falling back to ~/.local/state/lattix/). Safe to call from
// any thread.
namespace QuarnLog {

enum class Level { Debug, Info, Warning, Error };

// Writes one record. Never throws: a log that cannot be written must not take the caller down.
void Write(Level level, std::string_view function, std::string_view source,
           std::string_view text) noexcept;
void Write(Level level, std::string_view function, std::string_view source,
           std::wstring_view text) noexcept;

// The path of the rotating log file, or empty when no file could be opened.
std::string LogFilePath();

// Drops records below `level` (LATTIX_LOG_LEVEL=debug|info|warning|error sets it at start-up).
void SetLevel(Level level);

}  // namespace QuarnLog

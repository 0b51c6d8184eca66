#pragma once

#include <string>

namespace quarn::os {

// Opens a document or an address with the desktop's handler, as a double click in a file manager
// would: spawns `xdg-open target` (posix_spawnp, no shell) and returns as soon as the program has
// started; the child is reaped in the background. The environment variable LATTIX_OPEN_COMMAND,
// when set and not empty, names another program to run instead (it receives the target as its only
// argument). Raises QuarnLog::Exception naming posix_spawnp, the program and the system's error
// text when the program cannot be started (for example when xdg-open is not installed).
void ShellOpen(const std::wstring& target);

}  // namespace quarn::os

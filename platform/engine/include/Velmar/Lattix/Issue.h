#pragma once

#include <string>

namespace Velmar::Lattix {

// The levels of the messages that operators report.
struct Issue {
    enum class Severity { Info = 0, Warning = 1, Error = 2 };

    static std::wstring SeverityName(Severity severity);
};

}  // namespace Velmar::Lattix

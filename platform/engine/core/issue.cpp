#include "Velmar/Lattix/Issue.h"

namespace Velmar::Lattix {

std::wstring Issue::SeverityName(Severity severity) {
    switch (severity) {
        case Severity::Info:
            return L"Info";
        case Severity::Warning:
            return L"Warning";
        case Severity::Error:
            return L"Error";
    }
    return L"Unknown";
}

}  // namespace Velmar::Lattix

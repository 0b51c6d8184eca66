#pragma once

#include <string>

#include "QuarnLog/Log.h"

namespace QuarnLog {

// One log record as a capturing sink hands it over.
struct Record {
    Level level = Level::Info;
    std::string function;
    std::string source;
    std::string text;
};

}  // namespace QuarnLog

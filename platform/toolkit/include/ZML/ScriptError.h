#pragma once

#include <string>

#include "QuarnLog/Exception.h"

namespace ZML {

// A dialog script that does not parse or build. The message reads "<file>:<line>:<column>:
// <what is wrong>"; lines and columns count from 1.
class ScriptError : public QuarnLog::Exception {
public:
    ScriptError(const std::string& file, int line, int column, const std::string& problem);

    const std::string& File() const noexcept { return file; }
    int Line() const noexcept { return line; }
    int Column() const noexcept { return column; }
    const std::string& Problem() const noexcept { return problem; }

private:
    std::string file;
    int line;
    int column;
    std::string problem;
};

}  // namespace ZML

#pragma once

#include <exception>
#include <string>

#include "QuarnLog/Log.h"

namespace ZML::Qt6 {

// Runs `work`, a reaction to the user's input. Qt cannot carry an exception back through its
// event loop, so a failure is logged here under `operation`, and the input is dropped.
template <class Work>
void Guarded(const char* operation, Work&& work) noexcept {
    try {
        work();
    } catch (const std::exception& error) {
        QuarnLog::Write(QuarnLog::Level::Error, operation, __FILE__,
                        std::string("Failed: ") + error.what());
    } catch (...) {
        QuarnLog::Write(QuarnLog::Level::Error, operation, __FILE__,
                        "Failed with an exception of unknown type.");
    }
}

}  // namespace ZML::Qt6

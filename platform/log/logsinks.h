#pragma once

#include <spdlog/sinks/sink.h>

#include <memory>

namespace QuarnLog::detail {

// Capturing sinks receive every record the process logger writes while they are attached.
void AddCaptureSink(const std::shared_ptr<spdlog::sinks::sink>& sink);
void RemoveCaptureSink(const std::shared_ptr<spdlog::sinks::sink>& sink);

}  // namespace QuarnLog::detail

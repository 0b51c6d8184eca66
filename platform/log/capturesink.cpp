#include "QuarnLog/CaptureSink.h"

#include <spdlog/sinks/base_sink.h>

#include <mutex>

#include "logsinks.h"

namespace QuarnLog {
namespace {

Level FromSpd(spdlog::level::level_enum level) {
    switch (level) {
        case spdlog::level::trace:
        case spdlog::level::debug: return Level::Debug;
        case spdlog::level::info: return Level::Info;
        case spdlog::level::warn: return Level::Warning;
        default: return Level::Error;
    }
}

class RecordSink : public spdlog::sinks::base_sink<std::mutex> {
public:
    std::vector<Record> Records() {
        std::lock_guard<std::mutex> lock(mutex_);
        return records;
    }
    void Clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        records.clear();
    }

protected:
    void sink_it_(const spdlog::details::log_msg& msg) override {
        Record r;
        r.level = FromSpd(msg.level);
        r.function = msg.source.funcname ? msg.source.funcname : "";
        r.source = msg.source.filename ? msg.source.filename : "";
        r.text.assign(msg.payload.data(), msg.payload.size());
        records.push_back(std::move(r));
    }
    void flush_() override {}

private:
    std::vector<Record> records;
};

}  // namespace

struct captureSinkData {
    std::shared_ptr<RecordSink> sink = std::make_shared<RecordSink>();
};

CaptureSink::CaptureSink() : captureData(std::make_shared<captureSinkData>()) {
    detail::AddCaptureSink(captureData->sink);
}

CaptureSink::~CaptureSink() { detail::RemoveCaptureSink(captureData->sink); }

std::vector<Record> CaptureSink::Records() const { return captureData->sink->Records(); }

bool CaptureSink::Contains(std::string_view fragment, std::string_view function) const {
    for (const auto& r : Records()) {
        if (r.text.find(fragment) != std::string::npos &&
            (function.empty() || r.function == function)) {
            return true;
        }
    }
    return false;
}

void CaptureSink::Clear() { captureData->sink->Clear(); }

}  // namespace QuarnLog

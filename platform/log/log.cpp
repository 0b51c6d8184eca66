#include "QuarnLog/Log.h"

#include <spdlog/sinks/dist_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "logsinks.h"
#include "qtxt/Text.h"

namespace QuarnLog {
namespace {

constexpr std::size_t kMaxFileSize = 4 * 1024 * 1024;
constexpr std::size_t kMaxFiles = 3;

spdlog::level::level_enum ToSpd(Level level) {
    switch (level) {
        case Level::Debug: return spdlog::level::debug;
        case Level::Info: return spdlog::level::info;
        case Level::Warning: return spdlog::level::warn;
        case Level::Error: return spdlog::level::err;
    }
    return spdlog::level::info;
}

std::filesystem::path StateDirectory() {
    if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state) {
        return std::filesystem::path(state) / "lattix";
    }
    if (const char* home = std::getenv("HOME"); home && *home) {
        return std::filesystem::path(home) / ".local" / "state" / "lattix";
    }
    return {};
}

Level LevelFromEnvironment() {
    const char* v = std::getenv("LATTIX_LOG_LEVEL");
    const std::string s = v ? v : "";
    if (s == "debug") return Level::Debug;
    if (s == "warning") return Level::Warning;
    if (s == "error") return Level::Error;
    return Level::Info;
}

struct LogState {
    std::shared_ptr<spdlog::logger> logger;
    std::shared_ptr<spdlog::sinks::dist_sink_mt> captures;
    std::string filePath;
};

LogState& State() {
    // Built once, on first use, so that the environment (XDG_STATE_HOME) of the process is read
    // after main() has started; never destroyed, so records written during static destruction
    // still have somewhere to go.
    static LogState* state = [] {
        auto* s = new LogState;  // NOLINT(cppcoreguidelines-owning-memory): intentionally leaked
        std::vector<spdlog::sink_ptr> sinks;
        sinks.push_back(std::make_shared<spdlog::sinks::stderr_color_sink_mt>());
        const auto dir = StateDirectory();
        if (!dir.empty()) {
            std::error_code ec;
            std::filesystem::create_directories(dir, ec);
            try {
                const auto path = (dir / "lattix.log").string();
                sinks.push_back(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
                    path, kMaxFileSize, kMaxFiles));
                s->filePath = path;
            } catch (const spdlog::spdlog_ex& e) {
                fprintf(stderr, "lattix: cannot open the log file in %s: %s\n",
                        dir.string().c_str(), e.what());
            }
        }
        s->captures = std::make_shared<spdlog::sinks::dist_sink_mt>();
        sinks.push_back(s->captures);
        s->logger = std::make_shared<spdlog::logger>("lattix", sinks.begin(), sinks.end());
        s->logger->set_pattern("[%Y-%m-%d %H:%M:%S.%e] [%l] %! (%s): %v");
        s->logger->set_level(ToSpd(LevelFromEnvironment()));
        s->logger->flush_on(spdlog::level::warn);
        return s;
    }();
    return *state;
}

}  // namespace

void Write(Level level, std::string_view function, std::string_view source,
           std::string_view text) noexcept {
    try {
        // spdlog keeps only pointers to the location strings while formatting this record. It
        // treats a location with line 0 as absent, and our records carry no line, so pass 1 (the
        // pattern does not print it).
        const std::string fn(function);
        const std::string src(source);
        State().logger->log(spdlog::source_loc{src.c_str(), 1, fn.c_str()}, ToSpd(level), "{}",
                            text);
    } catch (const std::exception& e) {
        fprintf(stderr, "lattix: log record lost: %s\n", e.what());
    }
}

void Write(Level level, std::string_view function, std::string_view source,
           std::wstring_view text) noexcept {
    try {
        Write(level, function, source, qtxt::DefaultWideToUTF8(text));
    } catch (const std::exception& e) {
        fprintf(stderr, "lattix: log record lost: %s\n", e.what());
    }
}

std::string LogFilePath() { return State().filePath; }

void SetLevel(Level level) { State().logger->set_level(ToSpd(level)); }

namespace detail {
void AddCaptureSink(const std::shared_ptr<spdlog::sinks::sink>& sink) {
    State().captures->add_sink(sink);
}
void RemoveCaptureSink(const std::shared_ptr<spdlog::sinks::sink>& sink) {
    State().captures->remove_sink(sink);
}
}  // namespace detail

}  // namespace QuarnLog

#include "qpmg/PreferenceManager.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "qtxt/Text.h"

namespace qpmg {

const char* TypeName(const Value& value) {
    static constexpr const char* names[] = {"boolean", "number", "string"};
    return names[value.index()];
}

namespace {

using Key = std::pair<std::string, std::string>;
using Callback = std::function<void(const Value&)>;

constexpr const char* kSource = __FILE__;

std::string KeyText(const Key& key) {
    return key.first + "." + key.second;
}

bool ValidPart(std::string_view text, bool allowDot) {
    if (text.empty()) return false;
    for (char c : text) {
        const bool ok = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                        (c >= '0' && c <= '9') || c == '_' || c == '-' || (allowDot && c == '.');
        if (!ok) return false;
    }
    return true;
}

std::string Trim(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\r");
    if (begin == std::string_view::npos) return {};
    const auto end = text.find_last_not_of(" \t\r");
    return std::string(text.substr(begin, end - begin + 1));
}

std::string FormatValue(const Value& value) {
    if (const bool* b = std::get_if<bool>(&value)) return *b ? "true" : "false";
    if (const double* d = std::get_if<double>(&value)) {
        char buffer[64];
        auto result = std::to_chars(buffer, buffer + sizeof buffer, *d);
        return std::string(buffer, result.ptr);
    }
    std::string out = "\"";
    for (char c : qtxt::DefaultWideToUTF8(std::get<std::wstring>(value))) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                out.push_back(c);
        }
    }
    return out + "\"";
}

// Parses a stored value; false (with `why` set) when it is malformed.
bool ParseValue(const std::string& text, Value& value, std::string& why) {
    if (text == "true" || text == "false") {
        value = text == "true";
        return true;
    }
    if (!text.empty() && text.front() == '"') {
        std::string bytes;
        std::size_t i = 1;
        for (; i < text.size() && text[i] != '"'; ++i) {
            if (text[i] != '\\') {
                bytes.push_back(text[i]);
                continue;
            }
            if (++i == text.size()) break;
            switch (text[i]) {
                case '"':
                    bytes.push_back('"');
                    break;
                case '\\':
                    bytes.push_back('\\');
                    break;
                case 'n':
                    bytes.push_back('\n');
                    break;
                case 'r':
                    bytes.push_back('\r');
                    break;
                case 't':
                    bytes.push_back('\t');
                    break;
                default:
                    why = std::string("unknown escape \\") + text[i];
                    return false;
            }
        }
        if (i + 1 != text.size()) {
            why = "unterminated string or text after its closing quote";
            return false;
        }
        value = qtxt::UTF8toDefaultWide(bytes);
        return true;
    }
    double number = 0;
    const char* end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, number);
    if (text.empty() || result.ec != std::errc() || result.ptr != end) {
        why = "'" + text + "' is neither true, false, a number nor a quoted string";
        return false;
    }
    value = number;
    return true;
}

// Reads the file into `values`; damaged lines are logged and skipped. A missing file is empty.
void ReadFile(const std::string& file, std::map<Key, Value>& values) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return;
    std::string raw;
    int lineNumber = 0;
    int damaged = 0;
    while (std::getline(in, raw)) {
        ++lineNumber;
        const std::string line = Trim(raw);
        if (line.empty() || line[0] == '#') continue;
        std::string why;
        const auto equals = line.find('=');
        const std::string key = Trim(std::string_view(line).substr(0, equals));
        const auto dot = key.find('.');
        Value value;
        if (equals == std::string::npos) {
            why = "no '=' in the line";
        } else if (dot == std::string::npos || !ValidPart(key.substr(0, dot), false) ||
                   !ValidPart(key.substr(dot + 1), true)) {
            why = "'" + key + "' is not a category.name key";
        } else if (ParseValue(Trim(std::string_view(line).substr(equals + 1)), value, why)) {
            values[{key.substr(0, dot), key.substr(dot + 1)}] = std::move(value);
            continue;
        }
        if (++damaged <= 5) {
            QuarnLog::Write(QuarnLog::Level::Warning, "qpmg::PreferenceManager::Read", kSource,
                            "damaged preferences file " + file + ", line " +
                                std::to_string(lineNumber) + ": " + why + "; the line is ignored");
        }
    }
    if (damaged > 5) {
        QuarnLog::Write(QuarnLog::Level::Warning, "qpmg::PreferenceManager::Read", kSource,
                        "damaged preferences file " + file + ": " + std::to_string(damaged) +
                            " lines ignored in all");
    }
}

[[noreturn]] void FailWrite(const std::string& call, const std::string& path, int error) {
    throw QuarnLog::Exception("qpmg::PreferenceManager::Set", kSource,
                              "could not save preferences: " + call + " failed for '" + path +
                                  "': " + std::strerror(error));
}

void MakeFolders(const std::string& file) {
    for (std::size_t slash = file.find('/', 1); slash != std::string::npos;
         slash = file.find('/', slash + 1)) {
        const std::string part = file.substr(0, slash);
        if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) FailWrite("mkdir", part, errno);
    }
}

class Fd {
public:
    explicit Fd(int fd) : fd(fd) {}
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd; }

private:
    int fd;
};

// Rewrites the file with `key` set to `value`, keeping what other processes stored meanwhile.
// Stored values of the wrong type for a declared preference are dropped on the way.
void SaveOne(const std::string& file, const Key& key, const Value& value,
             const std::map<Key, Value>& defaults) {
    MakeFolders(file);
    const std::string lockPath = file + ".lock";
    Fd lock(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock.get() < 0) FailWrite("open", lockPath, errno);
    // Another process holds the lock only while it rewrites the file; waiting longer than a few
    // seconds means it is stuck, and the user is told rather than kept waiting.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) FailWrite("flock", lockPath, errno);
        if (std::chrono::steady_clock::now() > deadline) FailWrite("flock", lockPath, EBUSY);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::map<Key, Value> stored;
    ReadFile(file, stored);
    std::erase_if(stored, [&defaults](const auto& entry) {
        auto def = defaults.find(entry.first);
        return def != defaults.end() && def->second.index() != entry.second.index();
    });
    stored[key] = value;
    std::string text =
        "# Lattix preferences: one a line, category.name = value (true, false, a number or a "
        "quoted string).\n";
    for (const auto& [k, v] : stored) text += KeyText(k) + " = " + FormatValue(v) + "\n";

    std::string temp = file + ".XXXXXX";
    Fd out(::mkostemp(temp.data(), O_CLOEXEC));
    if (out.get() < 0) FailWrite("mkostemp", temp, errno);
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(out.get(), text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            const int error = errno;
            ::unlink(temp.c_str());
            FailWrite("write", temp, error);
        }
        done += static_cast<std::size_t>(n);
    }
    if (::fsync(out.get()) != 0 || ::rename(temp.c_str(), file.c_str()) != 0) {
        const int error = errno;
        ::unlink(temp.c_str());
        FailWrite("rename", file, error);
    }
}

}  // namespace

struct preferenceManagerData {
    std::string file;
    mutable std::mutex mutex;  // guards the maps; also serialises saving
    std::map<Key, Value> defaults;
    std::map<Key, Value> values;
    std::map<Key, std::vector<std::weak_ptr<Callback>>> callbacks;

    Value Lookup(const Key& key) const {
        if (auto it = values.find(key); it != values.end()) return it->second;
        if (auto it = defaults.find(key); it != defaults.end()) return it->second;
        return false;
    }

    // A stored value whose type differs from the default's is dropped.
    void CheckType(const Key& key) {
        auto stored = values.find(key);
        auto def = defaults.find(key);
        if (stored == values.end() || def == defaults.end()) return;
        if (stored->second.index() == def->second.index()) return;
        QuarnLog::Write(QuarnLog::Level::Warning, "qpmg::PreferenceManager::Read", kSource,
                        "preferences file " + file + ": " + KeyText(key) + " holds a " +
                            TypeName(stored->second) + ", not a " + TypeName(def->second) +
                            "; the default is used");
        values.erase(stored);
    }
};

PreferenceManager::PreferenceManager(std::string file)
    : preferenceManagerData(std::make_shared<struct preferenceManagerData>()) {
    auto& d = *preferenceManagerData;
    d.file = file.empty() ? DefaultFile() : std::move(file);
    const char* home = std::getenv("HOME");
    const std::wstring homeDir = qtxt::UTF8toDefaultWide(home ? home : "");
    d.defaults[{"zml", "default_data_path"}] = homeDir;
    d.defaults[{"zml", "default_output_path"}] = homeDir;
    d.defaults[{"zml", "use_bubble_help"}] = true;
    d.defaults[{"zml", "bubble_help_delay"}] = 0.5;  // seconds
    d.defaults[{"batch", "batch_flatten_output_paths"}] = false;
    ReadFile(d.file, d.values);
    for (const auto& [key, value] : d.defaults) d.CheckType(key);
}

PreferenceManager::~PreferenceManager() = default;

std::string PreferenceManager::DefaultFile() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config && *config) return std::string(config) + "/lattix/preferences";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.config/lattix/preferences";
}

const std::string& PreferenceManager::File() const {
    return preferenceManagerData->file;
}

void PreferenceManager::Define(std::string_view category, std::string_view name,
                               Value defaultValue) {
    std::lock_guard lock(preferenceManagerData->mutex);
    const Key key{std::string(category), std::string(name)};
    preferenceManagerData->defaults[key] = std::move(defaultValue);
    preferenceManagerData->CheckType(key);
}

Value PreferenceManager::Get(std::string_view category, std::string_view name) const {
    std::lock_guard lock(preferenceManagerData->mutex);
    return preferenceManagerData->Lookup({std::string(category), std::string(name)});
}

namespace {

template <typename T>
T Typed(const PreferenceManager& manager, std::string_view category, std::string_view name,
        const char* wanted) {
    Value value = manager.Get(category, name);
    if (T* typed = std::get_if<T>(&value)) return std::move(*typed);
    throw QuarnLog::Exception("qpmg::PreferenceManager::Get", kSource,
                              "preference " + std::string(category) + "." + std::string(name) +
                                  " is a " + TypeName(value) + ", not a " + wanted);
}

}  // namespace

bool PreferenceManager::GetBoolean(std::string_view category, std::string_view name) const {
    // An undeclared, unset preference reads as false, 0 or empty whatever the type asked.
    return Typed<bool>(*this, category, name, "boolean");
}

double PreferenceManager::GetNumber(std::string_view category, std::string_view name) const {
    {
        std::lock_guard lock(preferenceManagerData->mutex);
        const Key key{std::string(category), std::string(name)};
        if (!preferenceManagerData->values.count(key) &&
            !preferenceManagerData->defaults.count(key)) {
            return 0;
        }
    }
    return Typed<double>(*this, category, name, "number");
}

std::wstring PreferenceManager::GetString(std::string_view category, std::string_view name) const {
    {
        std::lock_guard lock(preferenceManagerData->mutex);
        const Key key{std::string(category), std::string(name)};
        if (!preferenceManagerData->values.count(key) &&
            !preferenceManagerData->defaults.count(key)) {
            return {};
        }
    }
    return Typed<std::wstring>(*this, category, name, "string");
}

void PreferenceManager::Set(std::string_view category, std::string_view name, Value value) {
    if (!ValidPart(category, false) || !ValidPart(name, true)) {
        throw QuarnLog::Exception("qpmg::PreferenceManager::Set", kSource,
                                  "'" + std::string(category) + "." + std::string(name) +
                                      "' is not a valid preference key");
    }
    auto& d = *preferenceManagerData;
    const Key key{std::string(category), std::string(name)};
    std::vector<std::shared_ptr<Callback>> toCall;
    {
        std::lock_guard lock(d.mutex);
        if (auto def = d.defaults.find(key);
            def != d.defaults.end() && def->second.index() != value.index()) {
            throw QuarnLog::Exception("qpmg::PreferenceManager::Set", kSource,
                                      "preference " + KeyText(key) + " is a " +
                                          TypeName(def->second) + ", not a " + TypeName(value));
        }
        const bool changed = d.Lookup(key) != value;
        SaveOne(d.file, key, value, d.defaults);
        d.values[key] = value;
        if (changed) {
            auto& list = d.callbacks[key];
            std::erase_if(list, [](const auto& weak) { return weak.expired(); });
            for (const auto& weak : list) {
                if (auto callback = weak.lock()) toCall.push_back(std::move(callback));
            }
        }
    }
    for (const auto& callback : toCall) (*callback)(value);
}

CallbackToken PreferenceManager::AddChangeCallback(std::string_view category, std::string_view name,
                                                   std::function<void(const Value&)> callback) {
    auto holder = std::make_shared<Callback>(std::move(callback));
    std::lock_guard lock(preferenceManagerData->mutex);
    auto& list = preferenceManagerData->callbacks[{std::string(category), std::string(name)}];
    std::erase_if(list, [](const auto& weak) { return weak.expired(); });
    list.push_back(holder);
    return holder;
}

namespace {

std::mutex processMutex;
std::shared_ptr<PreferenceManager>& ProcessManager() {
    static std::shared_ptr<PreferenceManager> manager;
    return manager;
}

}  // namespace

std::shared_ptr<PreferenceManager> GetPreferenceManager() {
    std::lock_guard lock(processMutex);
    auto& manager = ProcessManager();
    if (!manager) manager = std::make_shared<PreferenceManager>();
    return manager;
}

void SetPreferenceManager(std::shared_ptr<PreferenceManager> manager) {
    std::lock_guard lock(processMutex);
    ProcessManager() = std::move(manager);
}

bool GetBooleanPreference(std::string_view category, std::string_view name) {
    return GetPreferenceManager()->GetBoolean(category, name);
}

double GetNumberPreference(std::string_view category, std::string_view name) {
    return GetPreferenceManager()->GetNumber(category, name);
}

std::wstring GetStringPreference(std::string_view category, std::string_view name) {
    return GetPreferenceManager()->GetString(category, name);
}

void SetBooleanPreference(std::string_view category, std::string_view name, bool value) {
    GetPreferenceManager()->Set(category, name, value);
}

void SetNumberPreference(std::string_view category, std::string_view name, double value) {
    GetPreferenceManager()->Set(category, name, value);
}

void SetStringPreference(std::string_view category, std::string_view name,
                         const std::wstring& value) {
    GetPreferenceManager()->Set(category, name, value);
}

}  // namespace qpmg

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "qpmg/Value.h"

namespace qpmg {

struct preferenceManagerData;

// The user's preferences: typed values by category and name, with defaults, kept in a file.
//
// Known preferences and their defaults:
//   zml.default_data_path          string   the user's home folder
//   zml.default_output_path        string   the user's home folder
//   zml.use_bubble_help            boolean  true
//   zml.bubble_help_delay          number   0.5 (seconds)
//   batch.batch_flatten_output_paths boolean false
// Others can be declared with Define; a preference that was never declared nor stored reads as
// false, 0 or an empty string.
//
// The file is UTF-8 text, one preference a line, "category.name = value", where the value is
// true, false, a number, or a double-quoted string with \" \\ \n \r \t escapes; empty lines and
// lines starting with '#' are ignored. Only values that were set are written, so that defaults
// can change between versions. A damaged line (or a value of the wrong type for a known
// preference) is logged as a warning naming the file and the line, and the default stands.
//
// Each Set saves at once: under an flock of "<file>.lock" the file is read again, the one value
// is replaced and the file is rewritten to a temporary file beside it and renamed over it, so that
// processes sharing the file keep each other's changes and a crash never leaves half a file.
// Thread-safe; callbacks run on the thread that made the change, after the lock is released.
class PreferenceManager {
public:
    // Reads `file` (a missing file is not an error). An empty name means DefaultFile().
    explicit PreferenceManager(std::string file = {});
    ~PreferenceManager();
    PreferenceManager(const PreferenceManager&) = delete;
    PreferenceManager& operator=(const PreferenceManager&) = delete;

    // $XDG_CONFIG_HOME/lattix/preferences, else ~/.config/lattix/preferences.
    static std::string DefaultFile();
    const std::string& File() const;

    // Declares a preference and its default (replacing an earlier default). A stored value of
    // another type is dropped with a warning.
    void Define(std::string_view category, std::string_view name, Value defaultValue);

    // The value: the stored one, else the default. Raises QuarnLog::Exception when a typed getter
    // does not match the preference's type.
    Value Get(std::string_view category, std::string_view name) const;
    bool GetBoolean(std::string_view category, std::string_view name) const;
    double GetNumber(std::string_view category, std::string_view name) const;
    std::wstring GetString(std::string_view category, std::string_view name) const;

    // Stores and saves a value; callbacks of the preference run when the value changed. Raises
    // QuarnLog::Exception for a value of the wrong type, a malformed category or name (category:
    // letters, digits, '_' and '-'; name: the same plus '.'), or when the file cannot be written
    // (the value is then not changed).
    void Set(std::string_view category, std::string_view name, Value value);

    // Calls `callback` with the new value after every change of the preference, until the
    // returned token is dropped.
    CallbackToken AddChangeCallback(std::string_view category, std::string_view name,
                                    std::function<void(const Value&)> callback);

private:
    std::shared_ptr<qpmg::preferenceManagerData> preferenceManagerData;
};

// The process-wide manager, reading DefaultFile() on first use.
std::shared_ptr<PreferenceManager> GetPreferenceManager();
// Replaces the process-wide manager (tests give it a private file); empty goes back to the default.
void SetPreferenceManager(std::shared_ptr<PreferenceManager> manager);

// Shorthands for the process-wide manager.
bool GetBooleanPreference(std::string_view category, std::string_view name);
double GetNumberPreference(std::string_view category, std::string_view name);
std::wstring GetStringPreference(std::string_view category, std::string_view name);
void SetBooleanPreference(std::string_view category, std::string_view name, bool value);
void SetNumberPreference(std::string_view category, std::string_view name, double value);
void SetStringPreference(std::string_view category, std::string_view name,
                         const std::wstring& value);

}  // namespace qpmg

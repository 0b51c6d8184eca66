#pragma once

#include <functional>
#include <memory>
#include <string>

#include "qpmg/PreferenceManager.h"

namespace qpmg {

struct preferenceData;

// A holder of one preference, as a dialog keeps it: reads and writes the value and carries the
// holder's change callback, which is unregistered when the holder goes.
class Preference {
public:
    // `manager` empty: the process-wide manager at the time of construction.
    Preference(std::string category, std::string name,
               std::shared_ptr<PreferenceManager> manager = {});
    ~Preference();
    Preference(const Preference&) = delete;
    Preference& operator=(const Preference&) = delete;

    Value Get() const;
    bool GetBoolean() const;
    double GetNumber() const;
    std::wstring GetString() const;
    void Set(Value value);

    // Calls `callback` after every change of the preference while this holder lives; replaces the
    // holder's earlier callback.
    void OnChanged(std::function<void(const Value&)> callback);

private:
    std::shared_ptr<qpmg::preferenceData> preferenceData;
};

}  // namespace qpmg

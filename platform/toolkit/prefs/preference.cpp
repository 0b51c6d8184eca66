#include "qpmg/Preference.h"

namespace qpmg {

struct preferenceData {
    std::string category;
    std::string name;
    std::shared_ptr<PreferenceManager> manager;
    CallbackToken callback;
};

Preference::Preference(std::string category, std::string name,
                       std::shared_ptr<PreferenceManager> manager)
    : preferenceData(std::make_shared<qpmg::preferenceData>()) {
    preferenceData->category = std::move(category);
    preferenceData->name = std::move(name);
    preferenceData->manager = manager ? std::move(manager) : GetPreferenceManager();
}

Preference::~Preference() = default;

Value Preference::Get() const {
    return preferenceData->manager->Get(preferenceData->category, preferenceData->name);
}

bool Preference::GetBoolean() const {
    return preferenceData->manager->GetBoolean(preferenceData->category, preferenceData->name);
}

double Preference::GetNumber() const {
    return preferenceData->manager->GetNumber(preferenceData->category, preferenceData->name);
}

std::wstring Preference::GetString() const {
    return preferenceData->manager->GetString(preferenceData->category, preferenceData->name);
}

void Preference::Set(Value value) {
    preferenceData->manager->Set(preferenceData->category, preferenceData->name, std::move(value));
}

void Preference::OnChanged(std::function<void(const Value&)> callback) {
    preferenceData->callback = preferenceData->manager->AddChangeCallback(
        preferenceData->category, preferenceData->name, std::move(callback));
}

}  // namespace qpmg

#include "ZML/Number.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <regex>

#include "QuarnLog/Exception.h"
#include "qtxt/Text.h"

namespace ZML {

struct numberData {
    double value = 0;
    bool blank = false;
    double min = -static_cast<double>(std::numeric_limits<float>::max());
    double max = static_cast<double>(std::numeric_limits<float>::max());
    double step = 1;
    std::string format = "10.6";
    int width = 10;
    int precision = 6;
};

Number::Number(std::string name)
    : Part(std::move(name)), numberRecord(std::make_shared<numberData>()) {}
Number::~Number() = default;

std::string Number::Kind() const {
    return "number";
}

void Number::SetValue(double value) {
    if (std::isnan(value)) {
        SetBlank();
        return;
    }
    if (Properties().IsYes(L"WholeNumber")) {
        value = std::round(value);
    }
    numberRecord->value = std::clamp(value, numberRecord->min, numberRecord->max);
    numberRecord->blank = false;
    Refresh(PartChange::Value);
}

void Number::SetBlank() {
    numberRecord->blank = true;
    Refresh(PartChange::Value);
}
bool Number::IsBlank() const {
    return numberRecord->blank;
}
double Number::Value() const {
    return numberRecord->blank ? std::numeric_limits<double>::quiet_NaN() : numberRecord->value;
}

void Number::LimitsSet(double min, double max) {
    if (std::isnan(min) || std::isnan(max) || min > max) {
        QUARN_THROW("Number part \"" + Name() + "\" cannot have the limits " + std::to_string(min) +
                    " to " + std::to_string(max) + ".");
    }
    numberRecord->min = min;
    numberRecord->max = max;
    if (!numberRecord->blank) {
        numberRecord->value = std::clamp(numberRecord->value, min, max);
    }
    Refresh(PartChange::Value);
}
double Number::Min() const {
    return numberRecord->min;
}
double Number::Max() const {
    return numberRecord->max;
}

void Number::StepSet(double step) {
    if (!(step > 0)) {
        QUARN_THROW("Number part \"" + Name() + "\" cannot have the step " + std::to_string(step) +
                    "; it must be positive.");
    }
    numberRecord->step = step;
}
double Number::Step() const {
    return numberRecord->step;
}

void Number::FormatSet(const std::string& format) {
    static const std::regex pattern(R"(^(\d{1,3})\.(\d{1,2})$)");
    std::smatch match;
    if (!std::regex_match(format, match, pattern)) {
        QUARN_THROW("Number format \"" + format + "\" of part \"" + Name() +
                    "\" is not of the form width.digits (as in 10.6).");
    }
    numberRecord->format = format;
    numberRecord->width = std::stoi(match[1].str());
    numberRecord->precision = std::stoi(match[2].str());
    Refresh(PartChange::Value);
}
const std::string& Number::Format() const {
    return numberRecord->format;
}

std::wstring Number::Text() const {
    if (numberRecord->blank) {
        return {};
    }
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, "%.*f", numberRecord->precision, numberRecord->value);
    return qtxt::widen(buffer);
}

bool Number::UserEnter(const std::wstring& text) {
    if (!IsEffectivelyEnabled()) {
        return false;
    }
    auto first = text.find_first_not_of(L" \t");
    if (first == std::wstring::npos) {
        if (!Properties().IsYes(L"AllowBlank")) {
            return false;
        }
        SetBlank();
    } else {
        auto last = text.find_last_not_of(L" \t");
        std::wstring trimmed = text.substr(first, last - first + 1);
        std::size_t used = 0;
        double value = 0;
        try {
            value = std::stod(trimmed, &used);
        } catch (const std::exception&) {
            return false;
        }
        if (used != trimmed.size() || !std::isfinite(value) || value < numberRecord->min ||
            value > numberRecord->max) {
            return false;
        }
        if (Properties().IsYes(L"WholeNumber") && value != std::floor(value)) {
            return false;
        }
        SetValue(value);
    }
    auto self = weak_from_this().lock();
    Event changed;
    changed.text = Text();
    Fire("valuechanged", changed);
    return true;
}

bool Number::UserStep(int steps) {
    if (!IsEffectivelyEnabled() || steps == 0) {
        return false;
    }
    const bool wasBlank = numberRecord->blank;
    const double before = wasBlank ? 0 : numberRecord->value;
    // A whole-number field moves by whole steps: a fraction would be rounded away again.
    double step = numberRecord->step;
    if (Properties().IsYes(L"WholeNumber")) step = std::max(1.0, std::round(step));
    SetValue(before + steps * step);
    // A step against a limit moves nothing, and nothing changed is not announced.
    if (!wasBlank && numberRecord->value == before) {
        return false;
    }
    auto self = weak_from_this().lock();
    Event changed;
    changed.text = Text();
    Fire("valuechanged", changed);
    return true;
}

}  // namespace ZML

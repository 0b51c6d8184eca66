#pragma once

#include <memory>
#include <string>

#include "ZML/Part.h"

namespace ZML {

struct numberData;

// A number field with limits, a step for its spin arrows and a display format. It may be blank
// (no value) when its property "AllowBlank" is "Yes"; with "WholeNumber" set to "Yes" it takes
// whole numbers only.
class Number : public Part {
public:
    explicit Number(std::string name = {});
    ~Number() override;

    std::string Kind() const override;

    // Sets the value, clamped to the limits (a whole number when "WholeNumber" is set), without
    // firing events.
    void SetValue(double value);
    // Makes the field blank.
    void SetBlank();
    bool IsBlank() const;
    // The value, or not-a-number when blank.
    double Value() const;

    // Refused with an exception when min > max.
    void LimitsSet(double min, double max);
    double Min() const;
    double Max() const;
    // How far one press of a spin arrow moves the value; must be positive. The default is 1 for
    // whole and real fields alike: the shown precision says how exactly a value is written, not
    // how coarsely a user wants to move it, and a step of one unit in the last digit would make
    // the arrows useless on a field showing six decimals.
    void StepSet(double step);
    double Step() const;
    // "W.P": a field W characters wide showing P digits after the point ("10.6", "10.0", "8.2").
    // Refused with an exception for anything else.
    void FormatSet(const std::string& format);
    const std::string& Format() const;
    // The value as the field shows it, empty when blank.
    std::wstring Text() const;

    // A user entering `text`: empty makes the field blank (when allowed), otherwise the text
    // must be a number (whole when required) within the limits. On success "valuechanged"
    // fires and true is returned; otherwise the value is kept and false is returned.
    bool UserEnter(const std::wstring& text);
    // A user pressing a spin arrow `steps` times: up (steps > 0) or down by the step, clamped to
    // the limits (a whole-number field by the step rounded to a whole number, at least 1); a blank
    // field counts from 0. "valuechanged" fires and true is returned when the
    // value moved (or the field stops being blank); a step held back by a limit returns false.
    bool UserStep(int steps);

private:
    std::shared_ptr<numberData> numberRecord;
};

}  // namespace ZML

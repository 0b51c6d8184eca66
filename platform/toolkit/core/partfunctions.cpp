#include <algorithm>

#include "QuarnLog/Log.h"
#include "ZML/EditText.h"
#include "ZML/Number.h"
#include "qzml/Parts.h"

bool qzml_TextGetSelectionPosition(const std::shared_ptr<ZML::Part>& part, int& start, int& end) {
    start = end = 0;
    auto edit = std::dynamic_pointer_cast<ZML::EditText>(part);
    if (!edit) {
        return false;
    }
    start = edit->SelectionStart();
    end = edit->SelectionEnd();
    return true;
}

bool qeui_UpdateNumberInfo(const std::shared_ptr<ZML::Part>& part, const std::string& key,
                           double value) {
    auto number = std::dynamic_pointer_cast<ZML::Number>(part);
    if (!number) {
        return false;
    }
    try {
        if (key == "min") {
            number->LimitsSet(value, number->Max());
        } else if (key == "max") {
            number->LimitsSet(number->Min(), value);
        } else if (key == "delta") {
            number->StepSet(value);
        } else if (key == "value") {
            number->SetValue(value);
        } else {
            return false;
        }
    } catch (const std::exception& error) {
        QuarnLog::Write(QuarnLog::Level::Warning, "qeui_UpdateNumberInfo", __FILE__, error.what());
        return false;
    }
    return true;
}

bool qzml_NumberPartFormatSet(const std::shared_ptr<ZML::Part>& part, const std::string& format) {
    auto number = std::dynamic_pointer_cast<ZML::Number>(part);
    if (!number) {
        return false;
    }
    try {
        number->FormatSet(format);
    } catch (const std::exception& error) {
        QuarnLog::Write(QuarnLog::Level::Warning, "qzml_NumberPartFormatSet", __FILE__,
                        error.what());
        return false;
    }
    return true;
}

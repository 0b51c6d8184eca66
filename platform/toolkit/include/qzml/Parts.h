#pragma once

#include <memory>
#include <string>

#include "ZML/Part.h"

// Functions over parts for callers that hold them as the base class.

// The selection of an edit part: start and end character offsets. False (and both 0) when `part`
// is not an edit text.
bool qzml_TextGetSelectionPosition(const std::shared_ptr<ZML::Part>& part, int& start, int& end);

// Sets one setting of a number part: "min", "max", "delta" (the step) or "value". Returns true on
// success; false when `part` is not a number part, the key is unknown or the value is refused
// (a lower limit above the upper one, a step that is not positive).
bool qeui_UpdateNumberInfo(const std::shared_ptr<ZML::Part>& part, const std::string& key,
                           double value);

// Sets the display format of a number part ("10.6": width and digits after the point). False
// when `part` is not a number part or the format is not of that form.
bool qzml_NumberPartFormatSet(const std::shared_ptr<ZML::Part>& part, const std::string& format);

#pragma once

#include <memory>
#include <string>

#include "ZML/Icon.h"
#include "ZML/Part.h"

namespace ZML {

struct buttonData;

// A push button showing its title, its icon or both. A press is the event "mousedown".
class Button : public Part {
public:
    explicit Button(std::string name = {});
    ~Button() override;

    std::string Kind() const override;

    void IconSet(std::shared_ptr<Icon> icon);
    // Loads `iconName` with qzml_IconCreateFromFile (a placeholder when it is missing).
    void IconSet(const std::wstring& iconName);
    std::shared_ptr<Icon> GetIcon() const;

    // A user's press: "mousedown" with the left button, then "mouseup"; ignored when disabled.
    bool Press();

private:
    std::shared_ptr<buttonData> buttonRecord;
};

}  // namespace ZML

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZML/Part.h"

namespace ZML {

struct popupListData;

// A drop-down list of texts; its value is the chosen text (empty when nothing is chosen).
class PopupList : public Part {
public:
    explicit PopupList(std::string name = {});
    ~PopupList() override;

    std::string Kind() const override;

    // Replaces the entries; the value is kept when it is still one of them, else cleared.
    void ValueListSet(const std::vector<std::wstring>& values);
    std::vector<std::wstring> ValueList() const;
    // Chooses the entry equal to `value`; false (value unchanged) when there is none.
    bool SetValue(const std::wstring& value);
    std::wstring Value() const;
    // The chosen entry's position, or -1.
    int SelectedPos() const;
    bool SelectByPos(int pos);

    // A user choosing the entry at `pos`: as SelectByPos, then "valuechanged" fires.
    bool UserChoose(int pos);

private:
    std::shared_ptr<popupListData> popupListRecord;
};

}  // namespace ZML

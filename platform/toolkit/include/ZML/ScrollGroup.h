#pragma once

#include <memory>
#include <string>

#include "ZML/Group.h"

namespace ZML {

struct scrollGroupData;

// A group whose content may be larger than the group itself; the backend shows scroll bars.
class ScrollGroup : public Group {
public:
    explicit ScrollGroup(std::string name = {});
    ~ScrollGroup() override;

    std::string Kind() const override;

    // The size of the scrolled area: the furthest right and bottom edge of the children.
    Rect ContentSize() const;
    void ScrollTo(int x, int y);
    int ScrollX() const;
    int ScrollY() const;

private:
    std::shared_ptr<scrollGroupData> scrollGroupRecord;
};

}  // namespace ZML

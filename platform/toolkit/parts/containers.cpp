#include <algorithm>

#include "QuarnLog/Exception.h"
#include "ZML/Group.h"
#include "ZML/ScrollGroup.h"
#include "ZML/SplitPanel.h"

namespace ZML {

struct groupData {
    int background = BackgroundDefault;
};

Group::Group(std::string name)
    : Part(std::move(name)), groupRecord(std::make_shared<groupData>()) {}
Group::~Group() = default;

std::string Group::Kind() const {
    return "group";
}
void Group::Add(const std::shared_ptr<Part>& part) {
    AddChild(part);
}
void Group::Remove(const std::shared_ptr<Part>& part) {
    RemoveChild(part);
}
void Group::RemoveAll() {
    RemoveAllChildren();
}

void Group::BackgroundTypeSet(int type) {
    if (type < BackgroundDefault || type > BackgroundFramed) {
        QUARN_THROW("Background type " + std::to_string(type) + " of group \"" + Name() +
                    "\" is not one of 0 to 4.");
    }
    groupRecord->background = type;
    Refresh(PartChange::Content);
}
int Group::BackgroundType() const {
    return groupRecord->background;
}

struct scrollGroupData {
    int x = 0;
    int y = 0;
};

ScrollGroup::ScrollGroup(std::string name)
    : Group(std::move(name)), scrollGroupRecord(std::make_shared<scrollGroupData>()) {}
ScrollGroup::~ScrollGroup() = default;

std::string ScrollGroup::Kind() const {
    return "scrollgroup";
}

Rect ScrollGroup::ContentSize() const {
    Rect size;
    for (const auto& child : Children()) {
        Rect r = child->Geometry();
        size.width = std::max(size.width, r.x + r.width);
        size.height = std::max(size.height, r.y + r.height);
    }
    return size;
}

void ScrollGroup::ScrollTo(int x, int y) {
    Rect content = ContentSize();
    Rect view = Geometry();
    scrollGroupRecord->x = std::clamp(x, 0, std::max(0, content.width - view.width));
    scrollGroupRecord->y = std::clamp(y, 0, std::max(0, content.height - view.height));
    Refresh(PartChange::Content);
}
int ScrollGroup::ScrollX() const {
    return scrollGroupRecord->x;
}
int ScrollGroup::ScrollY() const {
    return scrollGroupRecord->y;
}

struct splitPanelData {
    bool horizontal = false;
    int position = 100;
};

SplitPanel::SplitPanel(std::string name)
    : Part(std::move(name)), splitPanelRecord(std::make_shared<splitPanelData>()) {}
SplitPanel::~SplitPanel() = default;

std::string SplitPanel::Kind() const {
    return "splitpanel";
}

void SplitPanel::Add(const std::shared_ptr<Part>& pane) {
    if (Children().size() >= 2) {
        QUARN_THROW("Split panel \"" + Name() + "\" already has two panes; \"" +
                    (pane ? pane->Name() : std::string{}) + "\" is one too many.");
    }
    AddChild(pane);
}

std::shared_ptr<Part> SplitPanel::FirstPane() const {
    auto children = Children();
    return children.empty() ? nullptr : children[0];
}
std::shared_ptr<Part> SplitPanel::SecondPane() const {
    auto children = Children();
    return children.size() < 2 ? nullptr : children[1];
}

void SplitPanel::HorizontalSet(bool horizontal) {
    splitPanelRecord->horizontal = horizontal;
    Refresh(PartChange::Content);
}
bool SplitPanel::IsHorizontal() const {
    return splitPanelRecord->horizontal;
}
void SplitPanel::SplitPositionSet(int position) {
    splitPanelRecord->position = std::max(0, position);
    Refresh(PartChange::Content);
}
int SplitPanel::SplitPosition() const {
    return splitPanelRecord->position;
}

}  // namespace ZML

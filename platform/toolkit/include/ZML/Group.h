#pragma once

#include <memory>
#include <string>

#include "ZML/Part.h"

namespace ZML {

struct groupData;

// How a group draws its background.
enum BackgroundType : int {
    BackgroundDefault = 0,  // the window's colour
    BackgroundNone = 1,     // transparent
    BackgroundRaised = 2,
    BackgroundSunken = 3,
    BackgroundFramed = 4,  // a line round the group, its title in the line
};

// A container of parts, placed and locked like any part.
class Group : public Part {
public:
    explicit Group(std::string name = {});
    ~Group() override;

    std::string Kind() const override;

    // Adds `part` as a child; the group owns it from now on.
    void Add(const std::shared_ptr<Part>& part);
    void Remove(const std::shared_ptr<Part>& part);
    void RemoveAll();
    // `type` is one of BackgroundType; other values are refused with an exception.
    void BackgroundTypeSet(int type);
    int BackgroundType() const;

private:
    std::shared_ptr<groupData> groupRecord;
};

}  // namespace ZML

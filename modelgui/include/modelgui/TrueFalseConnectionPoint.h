#pragma once

#include <memory>

#include "modelgui/SolutionBuilderConnectionPoint.h"

namespace quarn::modelgui {

struct TrueFalsePointData;

// One of the two branch outputs of an if operator. The flag says which branch it is; the drawer
// sets it (and with it the caption) right after construction. Keeps the toolkit's connection rule.
class TrueFalseConnectionPoint : public SolutionBuilderConnectionPoint {
public:
    TrueFalseConnectionPoint();
    ~TrueFalseConnectionPoint() override;

    // Stores the flag and sets the caption to "True" when set, "False" when clear.
    void SetIsTruePoint(bool isTrue);
    bool IsTruePoint() const;

private:
    std::shared_ptr<TrueFalsePointData> trueFalsePointData;
};

}  // namespace quarn::modelgui

#pragma once

#include <memory>
#include <string>

#include "ZML/Part.h"

namespace ZML {

struct splitPanelData;

// Two panes side by side (vertical split) or one above the other (horizontal split) with a bar
// the user drags between them. The first two parts added are the panes.
class SplitPanel : public Part {
public:
    explicit SplitPanel(std::string name = {});
    ~SplitPanel() override;

    std::string Kind() const override;

    // Adds the next pane; a third pane is refused with an exception.
    void Add(const std::shared_ptr<Part>& pane);
    std::shared_ptr<Part> FirstPane() const;
    std::shared_ptr<Part> SecondPane() const;
    void HorizontalSet(bool horizontal);
    bool IsHorizontal() const;
    // The bar's distance from the left (or top) edge, in pixels.
    void SplitPositionSet(int position);
    int SplitPosition() const;

private:
    std::shared_ptr<splitPanelData> splitPanelRecord;
};

}  // namespace ZML

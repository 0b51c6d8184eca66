#pragma once

#include <memory>
#include <string>

#include "ZML/Part.h"

namespace ZML {

struct labelData;

// A line of text; its text is its title.
class Label : public Part {
public:
    explicit Label(std::string name = {});
    ~Label() override;

    std::string Kind() const override;

    void WrapTextSet(bool wrap);
    bool IsWrapText() const;

private:
    std::shared_ptr<labelData> labelRecord;
};

}  // namespace ZML

#pragma once

#include <memory>
#include <string>

#include "ZML/Frame.h"

namespace ZML {

struct dialogData;

// A frame with an OK and a Cancel step. Subclasses override OnDisplay, Okay and Cancel and call
// the base versions to close the dialog.
class Dialog : public Frame {
public:
    explicit Dialog(std::string name = {});
    ~Dialog() override;

    std::string Kind() const override;

    // The OK step: closes the dialog with ResultOk.
    virtual void Okay();
    // The cancel step (also taken when the user closes the window): closes with ResultCancel.
    virtual void Cancel();
    // True when the last run ended with ResultOk.
    bool WasOkay() const;

private:
    std::shared_ptr<dialogData> dialogRecord;
};

}  // namespace ZML

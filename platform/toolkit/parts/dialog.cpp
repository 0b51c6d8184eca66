#include "ZML/Dialog.h"

namespace ZML {

struct dialogData {};

Dialog::Dialog(std::string name)
    : Frame(std::move(name)), dialogRecord(std::make_shared<dialogData>()) {}
Dialog::~Dialog() = default;

std::string Dialog::Kind() const {
    return "dialog";
}

void Dialog::Okay() {
    EndModal(ResultOk);
}
void Dialog::Cancel() {
    EndModal(ResultCancel);
}
bool Dialog::WasOkay() const {
    return ModalResult() == ResultOk;
}

}  // namespace ZML

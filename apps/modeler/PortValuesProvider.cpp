#include "PortValuesProvider.h"

#include <QPointer>
#include <QWidget>
#include <vector>

#include "PortValuesDialog.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/UIProviderFactory.h"

namespace lattix::modeler {

struct PortValuesProviderRecord {
    QPointer<QWidget> parent;
};

namespace {

bool Editable(const Velmar::Lattix::Port& port) {
    return port.IsInput() && !port.IsPrivate() && !port.IsHidden();
}

std::vector<std::shared_ptr<Velmar::Lattix::Port>> EditablePorts(
    const Velmar::Lattix::Operator& op) {
    std::vector<std::shared_ptr<Velmar::Lattix::Port>> ports;
    for (auto& port : op.GetPorts()) {
        if (Editable(*port)) ports.push_back(port);
    }
    return ports;
}

// Runs the dialog; true when the user accepted it and a value changed.
bool Run(const std::wstring& title, std::vector<std::shared_ptr<Velmar::Lattix::Port>> ports,
         QWidget* parent) {
    PortValuesDialog dialog(title, std::move(ports), parent);
    return dialog.exec() == QDialog::Accepted && dialog.Changed();
}

}  // namespace

PortValuesProvider::PortValuesProvider(QWidget* parent)
    : portValuesProviderData(std::make_shared<PortValuesProviderRecord>()) {
    portValuesProviderData->parent = parent;
}

PortValuesProvider::~PortValuesProvider() = default;

bool PortValuesProvider::HandlesOperator(const Velmar::Lattix::Operator& op) const {
    return !EditablePorts(op).empty();
}

bool PortValuesProvider::ShowDialog(const std::shared_ptr<Velmar::Lattix::Operator>& op) {
    if (!op) return false;
    const auto title = op->GetDisplayName().empty() ? op->GetOperatorName() : op->GetDisplayName();
    return Run(title, EditablePorts(*op), portValuesProviderData->parent.data());
}

bool PortValuesProvider::HandlesPort(const Velmar::Lattix::Port& port) const {
    return port.IsInput() && !port.IsPrivate();
}

bool PortValuesProvider::ShowDialog(const std::shared_ptr<Velmar::Lattix::Port>& port) {
    if (!port) return false;
    return Run(port->GetName(), {port}, portValuesProviderData->parent.data());
}

std::shared_ptr<void> PortValuesProvider::Register(
    const std::shared_ptr<PortValuesProvider>& provider) {
    auto forOperators = Velmar::Lattix::UIProviderFactory::RegisterOperatorProvider(provider);
    auto forPorts = Velmar::Lattix::UIProviderFactory::RegisterPortProvider(provider);
    return std::make_shared<std::pair<std::shared_ptr<void>, std::shared_ptr<void>>>(
        std::move(forOperators), std::move(forPorts));
}

}  // namespace lattix::modeler

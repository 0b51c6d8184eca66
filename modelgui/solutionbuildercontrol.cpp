// The editor control: registry of live editors, batch-update tokens, the process-wide callback
// tables and the editor queries.

#include <map>
#include <mutex>
#include <set>
#include <string>

#include "QuarnLog/Exception.h"
#include "QuarnLog/UnthrownException.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/UIProviderFactory.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/MessageManager.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/SolutionBuilderControl.h"
#include "modelgui/UndoRedoManager.h"

namespace quarn::modelgui {

struct ControlImpl {
    std::shared_ptr<ZML::FlowGraphPart> flowGraphPart;
    // Kept for hosts that name their editors; nothing here reads it.
    std::wstring text;
    std::shared_ptr<MessageManager> messageManager = std::make_shared<MessageManager>();
    std::shared_ptr<UndoRedoManager> undoRedoManager = std::make_shared<UndoRedoManager>();
};

namespace {

// The registry is the one piece of this class that other threads may read (GetAllEditors).
std::mutex& RegistryMutex() {
    static std::mutex mutex;
    return mutex;
}

std::set<SolutionBuilderControl*>& Registry() {
    static std::set<SolutionBuilderControl*> registry;
    return registry;
}

std::map<void*, std::function<void(std::uint32_t)>>& MouseEventCallbacks() {
    static std::map<void*, std::function<void(std::uint32_t)>> callbacks;
    return callbacks;
}

std::map<void*, std::function<void()>>& OperatorChangedCallbacks() {
    static std::map<void*, std::function<void()>> callbacks;
    return callbacks;
}

// The record behind a batch token. The control is named by a plain pointer; the weak reference to
// its record tells whether it is still alive when the token goes.
struct BatchUpdater {
    SolutionBuilderControl* control = nullptr;
    std::weak_ptr<ControlImpl> alive;
    bool changed = false;
};

// The point last clicked on the canvas, when it is bound to a port.
std::shared_ptr<Velmar::Lattix::Port> ClickedPort(
    const std::shared_ptr<ZML::FlowGraphPart>& canvas) {
    if (!canvas) return nullptr;
    const auto point =
        std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(canvas->GetClickedPoint());
    return point ? point->GetPort() : nullptr;
}

}  // namespace

SolutionBuilderControl::SolutionBuilderControl(const std::shared_ptr<ZML::FlowGraphPart>& canvas)
    : controlImpl(std::make_shared<ControlImpl>()) {
    const std::lock_guard<std::mutex> lock(RegistryMutex());
    Registry().insert(this);
    controlImpl->flowGraphPart = canvas;
}

SolutionBuilderControl::~SolutionBuilderControl() {
    try {
        const std::lock_guard<std::mutex> lock(RegistryMutex());
        Registry().erase(this);
    } catch (const std::system_error& error) {
        // The record is released all the same; a stale entry is the lesser harm than a throwing
        // destructor.
        QuarnLog::UnthrownException record(__func__, __FILE__, error.what());
    }
}

std::shared_ptr<ZML::FlowGraphPart> SolutionBuilderControl::GetFlowGraphPart() const {
    return controlImpl->flowGraphPart;
}

std::shared_ptr<MessageManager> SolutionBuilderControl::GetMessageManager() const {
    return controlImpl->messageManager;
}

std::shared_ptr<UndoRedoManager> SolutionBuilderControl::GetUndoRedoManager() const {
    return controlImpl->undoRedoManager;
}

std::vector<SolutionBuilderControl*> SolutionBuilderControl::GetAllEditors() {
    const std::lock_guard<std::mutex> lock(RegistryMutex());
    return {Registry().begin(), Registry().end()};
}

std::shared_ptr<void> SolutionBuilderControl::BatchUpdateInScope(bool changed) {
    auto updater = std::make_unique<BatchUpdater>();
    updater->control = this;
    updater->alive = controlImpl;
    PrepareForChange(true);
    updater->changed = changed;
    return std::shared_ptr<BatchUpdater>(updater.release(), [](BatchUpdater* record) {
        const std::unique_ptr<BatchUpdater> owned(record);
        if (!owned->control || owned->alive.expired()) return;
        try {
            owned->control->ChangeCompleted(true, owned->changed);
        } catch (const std::exception& error) {
            QuarnLog::UnthrownException report(
                "quarn::modelgui::SolutionBuilderControl::BatchUpdateInScope", __FILE__,
                error.what());
        }
    });
}

void SolutionBuilderControl::RunCompleted() {
    RedrawModel();
    PortValuesChanged();
}

bool SolutionBuilderControl::DoesSelectedOperatorHaveDialog() {
    if (!IsEditable()) return false;
    std::vector<std::shared_ptr<Velmar::Lattix::Operator>> operators;
    std::vector<std::shared_ptr<Velmar::Lattix::Port>> ports;
    GetSelectedOperators(operators);
    GetSelectedPorts(ports);
    if (operators.size() + ports.size() != 1) return false;
    if (!operators.empty()) return Velmar::Lattix::UIProviderFactory::HasDialog(operators.front());
    return true;
}

bool SolutionBuilderControl::DoesSelectedPortHaveDialog() {
    if (!IsEditable()) return false;
    const auto port = ClickedPort(controlImpl->flowGraphPart);
    if (!port || !port->IsInput()) return false;
    return Velmar::Lattix::UIProviderFactory::HasDialog(port);
}

bool SolutionBuilderControl::HaveClickedPort() {
    if (!IsEditable()) return false;
    return ClickedPort(controlImpl->flowGraphPart) != nullptr;
}

void SolutionBuilderControl::AddMouseEventCB(void* owner,
                                             std::function<void(std::uint32_t)> callback) {
    MouseEventCallbacks()[owner] = std::move(callback);
}

void SolutionBuilderControl::RemoveMouseEventCB(void* owner) {
    MouseEventCallbacks().erase(owner);
}

void SolutionBuilderControl::CallMouseEventCB(std::uint32_t event) {
    // A callback may add or remove entries; calling a copy keeps the walk valid.
    const auto callbacks = MouseEventCallbacks();
    for (const auto& [owner, callback] : callbacks) callback(event);
}

void SolutionBuilderControl::AddOperatorChangedCB(void* owner, std::function<void()> callback) {
    OperatorChangedCallbacks()[owner] = std::move(callback);
}

void SolutionBuilderControl::RemoveOperatorChangedCB(void* owner) {
    OperatorChangedCallbacks().erase(owner);
}

void SolutionBuilderControl::CallOperatorChangedCB() {
    const auto callbacks = OperatorChangedCallbacks();
    for (const auto& [owner, callback] : callbacks) callback();
}

}  // namespace quarn::modelgui

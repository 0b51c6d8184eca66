#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace ZML {
class FlowGraphPart;
}
namespace Velmar::Lattix {
class Model;
class Operator;
class Port;
}  // namespace Velmar::Lattix

namespace quarn::modelgui {

class MessageManager;
class UndoRedoManager;
struct ControlImpl;

// The editing control behind one model-editor window: it binds a flow-graph canvas to the editing
// commands, owns the editor's MessageManager and UndoRedoManager, and is listed in a process-wide
// registry of live editors from the end of its construction to the start of its destruction.
//
// The host derives from it and supplies the operations that need its knowledge of the model, the
// selection and the display (the pure virtual ones). The control registers no canvas callbacks:
// the host draws the model (DrawGraph::DrawProcess), forwards the canvas's reports to
// AddConnection, RemoveConnection and UpdateOperatorInfo, and brackets every change with
// PrepareForChange and ChangeCompleted (or one BatchUpdateInScope token), recording an undo step in
// ChangeCompleted. Everything but the registry belongs to the user-interface thread.
class SolutionBuilderControl {
public:
    // `canvas` should not be null; the control shares it. Creates the managers (the undo manager at
    // once records an empty model) and enters the registry; a failure to lock the registry is
    // raised as std::system_error and no control is made.
    explicit SolutionBuilderControl(const std::shared_ptr<ZML::FlowGraphPart>& canvas);
    // Leaves the registry, then releases the canvas and the managers (they live on while others
    // hold them).
    virtual ~SolutionBuilderControl();
    SolutionBuilderControl(const SolutionBuilderControl&) = delete;
    SolutionBuilderControl& operator=(const SolutionBuilderControl&) = delete;

    std::shared_ptr<ZML::FlowGraphPart> GetFlowGraphPart() const;
    std::shared_ptr<MessageManager> GetMessageManager() const;
    std::shared_ptr<UndoRedoManager> GetUndoRedoManager() const;

    // Every live control, in ascending address order. Raises std::system_error when the registry
    // cannot be locked.
    static std::vector<SolutionBuilderControl*> GetAllEditors();

    // ---- Host operations ---------------------------------------------------------------------
    // Appends the selected operators to `operators`, in selection order.
    virtual void GetSelectedOperators(
        std::vector<std::shared_ptr<Velmar::Lattix::Operator>>& operators) = 0;
    // Appends the selected ports to `ports`.
    virtual void GetSelectedPorts(std::vector<std::shared_ptr<Velmar::Lattix::Port>>& ports) = 0;
    // The editor's top-level model.
    virtual std::shared_ptr<Velmar::Lattix::Model> GetModel() = 0;
    // The model into which edits (paste, sub-model creation) are placed.
    virtual std::shared_ptr<Velmar::Lattix::Model> GetEditedModel() = 0;

    // Opens a scope that the host sees as one change: calls PrepareForChange(true) now and
    // ChangeCompleted(true, changed) once, when the last copy of the returned token is released.
    // The token must not outlive the control; if it does, nothing is called. An exception from
    // ChangeCompleted at release is logged, not raised.
    virtual std::shared_ptr<void> BatchUpdateInScope(bool changed);
    // A change is about to happen: `batch` is true when a batch scope opens, false before an
    // element dialog is shown (a notice; a cancelled dialog is not followed by ChangeCompleted).
    virtual void PrepareForChange(bool batch) = 0;
    // A change is complete: (true, the batch flag) when a batch scope closes, (false, true) after
    // an element dialog was accepted. Record an undo step here when `changed` is true.
    virtual void ChangeCompleted(bool batch, bool changed) = 0;
    // Redraws the edited model into the canvas so that every operator has a node.
    virtual void RedrawModel() = 0;
    // Port values changed (a port dialog was accepted, or a run completed).
    virtual void PortValuesChanged() = 0;
    // Deletes the selected operators from the model and the canvas.
    virtual void RemoveSelectedOperators() = 0;
    // When false, every editing query of the library answers false and every editing command does
    // nothing.
    virtual bool IsEditable() = 0;

    // ---- Editor queries and notices ----------------------------------------------------------
    // A run of the model finished: RedrawModel, then PortValuesChanged.
    void RunCompleted();
    // Editable, exactly one thing (operator or port) selected, and it has a settings dialog (a
    // selected port always has one).
    bool DoesSelectedOperatorHaveDialog();
    // Editable, the last clicked point is bound to an input port, and the engine has a settings
    // dialog for that port.
    bool DoesSelectedPortHaveDialog();
    // Editable and the last clicked point is bound to a port.
    bool HaveClickedPort();

    // ---- Process-wide callback tables (user-interface thread only) ---------------------------
    // Stores `callback` under `owner`, replacing what was stored under it.
    static void AddMouseEventCB(void* owner, std::function<void(std::uint32_t)> callback);
    // Erases the entry of `owner`; an unknown owner is no error.
    static void RemoveMouseEventCB(void* owner);
    // Calls every stored function with `event`, in ascending owner order. An empty stored function
    // raises std::bad_function_call and the remaining ones are not called.
    static void CallMouseEventCB(std::uint32_t event);
    static void AddOperatorChangedCB(void* owner, std::function<void()> callback);
    static void RemoveOperatorChangedCB(void* owner);
    static void CallOperatorChangedCB();

private:
    std::shared_ptr<ControlImpl> controlImpl;
};

}  // namespace quarn::modelgui

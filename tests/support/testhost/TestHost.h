#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "modelgui/Context.h"
#include "modelgui/SolutionBuilderControl.h"

namespace ZML {
class FlowGraphNodeEx;
}

namespace quarn::modelgui::testhost {

struct TestHostData;
struct TestContextData;

// A small but complete editor host: one model drawn on one canvas, the canvas's selected nodes as
// the editor's selection, one undo step per completed change, and the canvas wired as an editor
// wires it. A connection the user draws goes to AddConnection::OnAdded, a removed one to
// RemoveConnection::OnRemoved, a moved node to UpdateOperatorInfo::UpdateInfo and a deleted node
// out of the model, each bracketed by PrepareForChange(true) and ChangeCompleted(true, ...). An
// engine error inside a handler is logged under the handler's name and the model is redrawn, so
// the canvas shows the model again; the change is then not recorded.
//
// Built into the test programs; an editor application can start from it. User-interface thread
// only.
class TestHost : public SolutionBuilderControl {
public:
    // What the host has been told so far, in order.
    struct Calls {
        std::vector<bool> prepared;                    // PrepareForChange arguments
        std::vector<std::pair<bool, bool>> completed;  // ChangeCompleted arguments
        int recorded = 0;                              // undo steps recorded
        int redraws = 0;                               // RedrawModel calls
        int portValuesChanged = 0;                     // PortValuesChanged calls
        std::vector<std::string> errors;               // errors caught in canvas handlers
    };

    // Works on `canvas`, or on a canvas of its own when it is null.
    explicit TestHost(std::shared_ptr<ZML::FlowGraphPart> canvas = nullptr);
    ~TestHost() override;

    // Swaps in `model` (not null): draws it as a freshly opened model, makes it the undo baseline
    // and hooks the message manager to it (with an empty message list).
    void OpenModel(const std::shared_ptr<Velmar::Lattix::Model>& model);
    // Opens the model file at `path` (any registered model format) and swaps it in.
    void OpenModelFile(const std::wstring& path);
    // Saves the edited model to `path` in the plain model format.
    void SaveModelFile(const std::wstring& path);

    // Steps back or forward through the history, swapping in the snapshot and redrawing. False
    // when there is nothing to undo or redo.
    bool Undo();
    bool Redo();

    // Replaces the canvas selection by `nodes` (each on the canvas).
    void Select(const std::vector<std::shared_ptr<ZML::FlowGraphNodeEx>>& nodes);
    void SetEditable(bool editable);
    // Draws every port, hidden ones included, from the next redraw on.
    void SetShowHidden(bool showHidden);

    const Calls& GetCalls() const;
    void ResetCalls();

    // Host operations.
    void GetSelectedOperators(
        std::vector<std::shared_ptr<Velmar::Lattix::Operator>>& operators) override;
    void GetSelectedPorts(std::vector<std::shared_ptr<Velmar::Lattix::Port>>& ports) override;
    std::shared_ptr<Velmar::Lattix::Model> GetModel() override;
    std::shared_ptr<Velmar::Lattix::Model> GetEditedModel() override;
    void PrepareForChange(bool batch) override;
    void ChangeCompleted(bool batch, bool changed) override;
    void RedrawModel() override;
    void PortValuesChanged() override;
    void RemoveSelectedOperators() override;
    bool IsEditable() override;

private:
    void Draw(bool first);
    void WireCanvas();
    void SwapIn(const std::shared_ptr<Velmar::Lattix::Model>& model);

    std::shared_ptr<TestHostData> testHostData;
};

// The workspace of a TestHost: names one control (not owned) as the active editor.
class TestContext : public Context {
public:
    explicit TestContext(SolutionBuilderControl* control = nullptr);
    ~TestContext() override;

    SolutionBuilderControl* GetControl() override;
    void SetControl(SolutionBuilderControl* control);

private:
    std::shared_ptr<TestContextData> testContextData;
};

}  // namespace quarn::modelgui::testhost

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/ObjectName.h"
#include "modelgui/SolutionBuilderControl.h"

namespace ZML {
class FlowGraphPart;
}

namespace lattix::modeler {

struct EditorHostRecord;

// The editor control of one model-editor window: the edited model drawn on one canvas, the
// canvas's selected nodes as the selection, and one undo step per completed change. Changes that
// arrive inside an open batch (a drag of several nodes, a deletion of many) are recorded once,
// when the outermost batch closes. The canvas's gestures are wired as the editing library expects:
// a drawn connection goes to AddConnection, a removed one to RemoveConnection, a moved node to
// UpdateOperatorInfo and a deleted node out of the model. An engine error inside a gesture is
// logged under the gesture's name and reported to the message list, and the model is redrawn.
// Every drawing of the model gives its loops their Body and Test points (see LoopPoints), so the
// body and test of a loop are shown and edited on the canvas like any other link.
//
// User-interface thread only.
class EditorHost : public quarn::modelgui::SolutionBuilderControl {
public:
    // `canvas` must not be null; the host shares it. Starts with an empty, unnamed model.
    explicit EditorHost(std::shared_ptr<ZML::FlowGraphPart> canvas);
    ~EditorHost() override;

    // An empty model, unnamed and unmodified, as the new undo baseline.
    void NewModel();
    // Opens the model file at `path` (any registered format) and swaps it in as a freshly opened,
    // unmodified model. On failure raises QuarnLog::Exception naming the file; the model shown
    // before stays.
    void OpenModelFile(const std::wstring& path);
    // Saves the model to `path` atomically (format by extension) and makes `path` the model's
    // file. On failure raises QuarnLog::Exception; the model stays modified.
    void SaveModelFile(const std::wstring& path);
    // The file the model was opened from or last saved to; empty for a new model.
    std::wstring GetPath() const;
    // True when the model changed since it was opened, made or saved.
    bool IsModified() const;

    // Steps back or forward through the history, swapping in the snapshot and redrawing. False
    // when there is nothing to undo or redo.
    bool Undo();
    bool Redo();

    // Makes a new operator of `type` at canvas position (x, y) and draws it, as one change.
    // Raises QuarnLog::Exception when the factory does not know the type.
    std::shared_ptr<Velmar::Lattix::Operator> AddOperator(const Velmar::Lattix::ObjectName& type,
                                                          int x, int y);
    // Adds a free text annotation at (x, y), as one change.
    void AddTextAnnotation(const std::wstring& text, int x, int y);
    // Lays the canvas out automatically and keeps the new positions, as one change.
    void AutoLayout();
    // Whether point captions show port names and port data; both redraw the model.
    void SetShowPortNames(bool show);
    void SetShowPortData(bool show);

    // Flow-control points ("Previous" and "Next") of the selected operators, the points a user
    // draws flow links and loop-body links at. Whether the command applies: the model is editable
    // and at least one operator is selected.
    bool CanToggleFlowControl();
    // Whether every selected operator shows its flow-control points; false when none is selected.
    bool SelectionShowsFlowControl();
    // When some selected operator lacks the points, gives them to every selected operator that
    // lacks them; otherwise takes them from each selected operator with no connection at them.
    // The "FlowControl" attribute records the new state, and the whole is one change. Returns the
    // operators that kept their points because links are drawn there: removing the points would
    // remove those links with them, unasked.
    std::vector<std::shared_ptr<Velmar::Lattix::Operator>> ToggleFlowControl();

    // Called after every recorded change, undo, redo, open, new and save (for titles and menus).
    // Replaces an earlier callback; an empty function clears it.
    void SetStateChangedCallback(std::function<void()> callback);
    // Errors caught in gestures since the model was opened, oldest first.
    std::vector<std::string> GetGestureErrors() const;

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
    std::shared_ptr<EditorHostRecord> editorHostData;
};

}  // namespace lattix::modeler

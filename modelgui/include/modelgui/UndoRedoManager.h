#pragma once

#include <memory>

namespace Velmar::Lattix {
class Model;
}

namespace quarn::modelgui {

struct undoRedoData;

// The edit history of one editor: a linear list of whole-model snapshots, each saved to a file of
// its own (a random version-4 identifier with ".gmdx", in the "SpatialModelFormat") in a private
// temporary folder, with an opaque state the host attaches to the step. Undo and redo replay
// nothing: they open the neighbouring snapshot as a new model that the host swaps in and redraws.
// Memory holds only paths and state pointers, never models. Belongs to the user-interface thread;
// takes no lock.
class UndoRedoManager {
public:
    // What the host keeps with a step (for example the selection). Defined by the host; the
    // manager only stores and hands back pointers to it, and an empty pointer is a valid state.
    struct ModelState;

    // Records a new, empty model with an empty state as the first step, so one snapshot file
    // exists at once. Raises QuarnLog::Exception when the folder, the identifier or the file
    // cannot be made.
    UndoRedoManager();
    // The temporary folder, with every snapshot in it, goes with the last owner of the record.
    ~UndoRedoManager();
    UndoRedoManager(const UndoRedoManager&) = delete;
    UndoRedoManager& operator=(const UndoRedoManager&) = delete;

    // Starts a new history whose only step is model (not null), in a new temporary folder; the
    // previous folder is released. On failure the history is empty of edits: the previous one is
    // gone and nothing can be undone or redone.
    void SetBaseline(const std::shared_ptr<Velmar::Lattix::Model>& model);
    // Records model (not null) with state as the newest step, discarding the steps that could have
    // been redone. The model is only read. If the identifier or the save fails, the error passes
    // to the caller and no step is added; the discarded redo steps stay discarded.
    void ModelChanged(const std::shared_ptr<Velmar::Lattix::Model>& model,
                      const std::shared_ptr<ModelState>& state);

    bool CanUndo() const;
    bool CanRedo() const;

    // Both arguments are outputs. Steps back: state becomes the state of the step undone, model a
    // new model read from the previous step's snapshot. At the first step both are left as they
    // are. If the snapshot cannot be read the error passes to the caller with the step already
    // moved and state already set.
    void Undo(std::shared_ptr<Velmar::Lattix::Model>& model, std::shared_ptr<ModelState>& state);
    // Both arguments are outputs. Steps forward: model is read from the next step's snapshot and
    // state is that step's state, so both directions hand back the state of the later of the two
    // steps. At the last step both are left as they are. If the snapshot cannot be read the error
    // passes to the caller with the step already moved and state untouched.
    void Redo(std::shared_ptr<Velmar::Lattix::Model>& model, std::shared_ptr<ModelState>& state);

private:
    std::shared_ptr<quarn::modelgui::undoRedoData> undoRedoData;
};

}  // namespace quarn::modelgui

#pragma once

// The state the test programs attach to undo steps. The manager leaves the definition to its host;
// a test program is one host, so every test in it shares this one definition.
#include <string>
#include <vector>

#include "modelgui/UndoRedoManager.h"

struct quarn::modelgui::UndoRedoManager::ModelState {
    // What the edit was, for example "move Add".
    std::wstring description;
    // The display names of the operators selected after the edit.
    std::vector<std::wstring> selection;
};

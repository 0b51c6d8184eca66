#pragma once

namespace quarn::modelgui::detail {

// Tells the lookup indexes that a node already on a canvas was bound to another engine object,
// so that every index rebuilds itself before its next answer. Binding a node before it is put on
// a canvas needs no call: the index reads the binding when the canvas reports the node added.
void NoteNodeRebound();

}  // namespace quarn::modelgui::detail

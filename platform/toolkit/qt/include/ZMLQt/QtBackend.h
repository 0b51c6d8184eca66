#pragma once

#include <memory>

#include "ZML/Backend.h"

class QApplication;
class QMimeData;
class QWidget;

namespace ZML {
class Part;
class TreeViewNode;
}  // namespace ZML

namespace ZML::Qt6 {

struct qtBackendData;

// The toolkit's backend over Qt Widgets: every part becomes a widget (frames and dialogs real
// QDialogs, run modally with exec), message boxes are QMessageBox and QInputDialog, documents and
// help pages open with QDesktopServices, and a flow-graph canvas is shown by a CanvasView.
// Everything runs on the application's thread.
class QtBackend : public ZML::Backend {
public:
    QtBackend();
    ~QtBackend() override;

    void Realize(Part& part) override;
    int RunModal(Frame& frame) override;
    void Show(Frame& frame) override;
    void Close(Frame& frame) override;
    MessageReply Ask(const MessageRequest& request) override;
    void OpenDocument(const std::wstring& target) override;

private:
    std::shared_ptr<qtBackendData> qtBackendRecord;
};

// Installs a QtBackend as the toolkit's backend, the desktop clipboard as the process's
// clipboard, and a measurer of canvas texts by the fonts the canvas view draws with (node boxes
// then fit their texts). `application` must outlive the use of all three; call UninstallBackend
// before it goes.
void InstallBackend(QApplication& application);
// Restores the headless backend, clipboard and text measurer.
void UninstallBackend();

// The widget that shows `part`, realising the part (and its parents' widgets are not needed: a
// part without a realised parent gets a widget of its own) when it has none yet. The widget
// belongs to the part's peer, or to its parent's widget; a host may re-parent it into its own
// window. Never null.
QWidget* WidgetOf(const std::shared_ptr<Part>& part);

// The MIME type of tree nodes dragged out of a tree view whose node properties allow it.
const char* TreeNodeMimeType();
// The tree node a drag from a tree view of this process carries, or null (another kind of drag,
// another process, or a node no longer alive).
std::shared_ptr<TreeViewNode> DraggedTreeNode(const QMimeData& mime);

}  // namespace ZML::Qt6

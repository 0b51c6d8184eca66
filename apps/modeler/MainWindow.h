#pragma once

#include <QImage>
#include <QMainWindow>
#include <QStringList>
#include <memory>
#include <string>

class QListWidget;

namespace ZML::Qt6 {
class CanvasView;
}

namespace lattix::modeler {

class EditorHost;
struct MainWindowRecord;

// The model editor's main window: the canvas of the edited model in the middle, the operator
// palette (a categorised list of every operator the factory knows; drag one onto the canvas, or
// double-click it) on the left, and the message list of the model below. Menus: File (New, Open,
// Open Recent, Save, Save As, Quit), Edit (Undo, Redo, Delete, Properties, Add Text,
// Flow-Control Points), View (zoom,
// zoom to fit, automatic layout, port names, port data). Closing with unsaved changes asks
// whether to save them.
//
// The window makes its editor control the active one of the current context while it lives.
// Needs a QApplication with the toolkit's Qt backend installed. User-interface thread only.
class MainWindow : public QMainWindow {
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    EditorHost& Host() const;
    ZML::Qt6::CanvasView* View() const;
    QListWidget* Messages() const;
    // The palette's widget (a tree of categories and operators).
    QWidget* Palette() const;

    // Opens the model at `path`. On failure, and when `error` is not null, the reason is stored
    // there and nothing is shown; otherwise a message box tells it. The model shown before stays.
    bool OpenFile(const QString& path, std::wstring* error = nullptr);
    // Saves to the model's own file, or asks for one when the model has none.
    bool Save();
    // Saves to `path`; the error goes to `error` or to a message box as in OpenFile.
    bool SaveAs(const QString& path, std::wstring* error = nullptr);
    // Asks to save unsaved changes. False when the user cancelled (or the save failed).
    bool MaybeSave();

    // The most recently opened or saved files, newest first, from the user's preferences.
    static QStringList RecentFiles();

    // Shows the window at `size`, fits the model into the canvas, lets pending drawing finish and
    // returns a picture of the whole window.
    QImage Screenshot(const QSize& size);

    // The Flow-Control Points command on the selected operators (see
    // EditorHost::ToggleFlowControl). The operators that kept their points, named as the message
    // list names them, go to `kept` when it is not null; otherwise a message box tells them.
    void ToggleFlowControlPoints(QStringList* kept = nullptr);
    // Brings the command's enabled and checked state up to date with the selection (done each
    // time the Edit menu opens and after every change).
    void RefreshFlowControlAction();

    // Re-reads the message list of the model into the list widget (normally done after every
    // change of the list, on this thread).
    void RefreshMessages();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::shared_ptr<MainWindowRecord> mainWindowData;
};

}  // namespace lattix::modeler

// The model editor's window: canvas, operator palette, message list, menus and file handling.

#include "MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QKeyEvent>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QStyle>
#include <any>
#include <functional>
#include <utility>

#include "EditorContext.h"
#include "EditorHost.h"
#include "PortValuesProvider.h"
#include "QuarnLog/ErrorContext.h"
#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "Velmar/Lattix/Issue.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorCategory.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/UIProviderFactory.h"
#include "ZML/FlowGraphHit.h"
#include "ZML/FlowGraphPart.h"
#include "ZML/TreeView.h"
#include "ZML/TreeViewNode.h"
#include "ZML/TreeViewNodeProperties.h"
#include "ZMLQt/CanvasView.h"
#include "ZMLQt/QtBackend.h"
#include "modelgui/MessageManager.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortNode.h"
#include "modelgui/UndoRedoManager.h"
#include "qpmg/PreferenceManager.h"
#include "quarn/plugin/PluginTypeInfo.h"

namespace lattix::modeler {

namespace mg = quarn::modelgui;
namespace lx = Velmar::Lattix;

namespace {

constexpr const char* kPrefCategory = "modeler";
constexpr const char* kPrefRecent = "recent_files";
constexpr int kMaxRecent = 8;
constexpr const char* kOperatorKind = "operator";
constexpr const char* kCategoryKind = "category";

QString ToQ(const std::wstring& text) {
    return QString::fromStdWString(text);
}

// Palette rows of operators may be dragged onto the canvas; a double click adds the operator in
// the middle of the view.
class OperatorRowProperties : public ZML::TreeViewNodeProperties {
public:
    explicit OperatorRowProperties(std::function<void(const lx::ObjectName&)> onDoubleClick)
        : onDoubleClick(std::move(onDoubleClick)) {}
    bool CanDrag(const std::shared_ptr<ZML::TreeViewNode>&) override { return true; }
    void OnDoubleClick(const std::shared_ptr<ZML::TreeViewNode>& node) override {
        if (const auto* type = std::any_cast<lx::ObjectName>(&node->Data())) onDoubleClick(*type);
    }

private:
    std::function<void(const lx::ObjectName&)> onDoubleClick;
};

void AddCategory(ZML::TreeView& tree, const std::shared_ptr<ZML::TreeViewNode>& parent,
                 const lx::OperatorCategory& category) {
    auto row =
        tree.AddNode(std::make_shared<ZML::TreeViewNode>(category.name, kCategoryKind), parent);
    for (const auto& sub : category.subCategories) AddCategory(tree, row, sub);
    for (const auto& info : category.operators) {
        const lx::ObjectName type(info->GetProperty(L"Namespace"),
                                  info->GetProperty(L"ObjectName"));
        auto caption = info->GetProperty(L"DisplayName");
        if (caption.empty()) caption = type.GetName();
        tree.AddNode(std::make_shared<ZML::TreeViewNode>(caption, kOperatorKind, type), row);
    }
}

void DefineRecentPreference() {
    qpmg::GetPreferenceManager()->Define(kPrefCategory, kPrefRecent, std::wstring{});
}

void RememberRecent(const QString& path) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList files = MainWindow::RecentFiles();
    files.removeAll(absolute);
    files.prepend(absolute);
    while (files.size() > kMaxRecent) files.removeLast();
    // A preference file that cannot be written costs the list, never the save or open itself.
    QuarnLog::ErrorContext context("lattix::modeler::MainWindow::RememberRecent", __FILE__);
    context.Run([&] {
        qpmg::SetStringPreference(kPrefCategory, kPrefRecent, files.join('\n').toStdWString());
    });
}

// One menu item running `run` in the context of `owner` (the item dies with the menu).
QAction* AddItem(QMenu* menu, const QString& text, const QKeySequence& shortcut, QObject* owner,
                 std::function<void()> run) {
    auto* action = menu->addAction(text);
    if (!shortcut.isEmpty()) action->setShortcut(shortcut);
    QObject::connect(action, &QAction::triggered, owner, [run = std::move(run)] { run(); });
    return action;
}

QString OperatorCaption(const lx::Operator& op) {
    return ToQ(op.GetDisplayName().empty() ? op.GetOperatorName() : op.GetDisplayName());
}

QString SeverityName(lx::Issue::Severity severity) {
    switch (severity) {
        case lx::Issue::Severity::Error:
            return QStringLiteral("Error");
        case lx::Issue::Severity::Warning:
            return QStringLiteral("Warning");
        default:
            return QStringLiteral("Info");
    }
}

}  // namespace

struct MainWindowRecord {
    std::shared_ptr<ZML::FlowGraphPart> canvas;
    std::unique_ptr<EditorHost> host;
    std::shared_ptr<EditorContext> context;
    ZML::Qt6::CanvasView* view = nullptr;  // owned by the window
    QListWidget* messages = nullptr;       // owned by its dock
    std::shared_ptr<ZML::TreeView> palette;
    QWidget* paletteWidget = nullptr;  // owned by its dock once placed there
    std::shared_ptr<void> messagesToken;
    std::shared_ptr<void> providerToken;
    std::shared_ptr<void> moveScope;
    ZML::HandlerId doubleClickHandler{};
    QMenu* recentMenu = nullptr;
    QAction* undo = nullptr;
    QAction* redo = nullptr;
    QAction* flowControl = nullptr;
};

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), mainWindowData(std::make_shared<MainWindowRecord>()) {
    auto& data = *mainWindowData;
    data.canvas = std::make_shared<ZML::FlowGraphPart>("model");
    data.host = std::make_unique<EditorHost>(data.canvas);
    data.context = std::make_shared<EditorContext>(data.host.get());
    mg::Context::SetCurrentContext(data.context);

    data.view = new ZML::Qt6::CanvasView(data.canvas, this);
    data.view->installEventFilter(this);
    setCentralWidget(data.view);

    // Palette.
    data.palette = std::make_shared<ZML::TreeView>("operators");
    data.palette->SetNodeProperties(
        kOperatorKind, std::make_shared<OperatorRowProperties>([this](const lx::ObjectName& type) {
            const QPoint middle = mainWindowData->view->viewport()->rect().center();
            const QPointF at = mainWindowData->view->CanvasPosition(middle);
            QuarnLog::ErrorContext context("lattix::modeler::MainWindow::AddOperator", __FILE__);
            context.Run([&] {
                mainWindowData->host->AddOperator(type, static_cast<int>(at.x()),
                                                  static_cast<int>(at.y()));
            });
        }));
    {
        QuarnLog::ErrorContext context("lattix::modeler::MainWindow::FillPalette", __FILE__);
        context.Run([&] {
            for (const auto& category : lx::OperatorFactory::GetCategories()) {
                AddCategory(*data.palette, nullptr, category);
            }
        });
    }
    data.paletteWidget = ZML::Qt6::WidgetOf(data.palette);
    auto* paletteDock = new QDockWidget(tr("Operators"), this);
    paletteDock->setObjectName("operators");
    paletteDock->setWidget(data.paletteWidget);
    addDockWidget(Qt::LeftDockWidgetArea, paletteDock);

    // Messages.
    data.messages = new QListWidget();
    data.messages->setObjectName("messages");
    auto* messageDock = new QDockWidget(tr("Messages"), this);
    messageDock->setObjectName("messagesDock");
    messageDock->setWidget(data.messages);
    addDockWidget(Qt::BottomDockWidgetArea, messageDock);
    // Reports may arrive on any thread; the list is read again on this one.
    QPointer<MainWindow> self(this);
    data.messagesToken = data.host->GetMessageManager()->AddMessagesChangedCB([self] {
        if (!self) return;
        QMetaObject::invokeMethod(
            self.data(),
            [self] {
                if (self) self->RefreshMessages();
            },
            Qt::QueuedConnection);
    });

    // Dialogs.
    auto provider = std::make_shared<PortValuesProvider>(this);
    data.providerToken = PortValuesProvider::Register(provider);

    // Gestures that the window groups or answers.
    connect(data.view, &ZML::Qt6::CanvasView::moveStarted, this, [this] {
        mainWindowData->moveScope = mainWindowData->host->BatchUpdateInScope(false);
    });
    connect(data.view, &ZML::Qt6::CanvasView::moveFinished, this,
            [this] { mainWindowData->moveScope.reset(); });
    connect(data.view, &ZML::Qt6::CanvasView::treeNodeDropped, this,
            [this](std::shared_ptr<ZML::TreeViewNode> node, double x, double y) {
                const auto* type = node ? std::any_cast<lx::ObjectName>(&node->Data()) : nullptr;
                if (!type) return;
                QuarnLog::ErrorContext context("lattix::modeler::MainWindow::DropOperator",
                                               __FILE__);
                if (!context.Run([&] {
                        mainWindowData->host->AddOperator(*type, static_cast<int>(x),
                                                          static_cast<int>(y));
                    })) {
                    QMessageBox::warning(this, tr("Add operator"), ToQ(context.Text()));
                }
            });
    auto showDialog = [this](const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
        auto& host = *mainWindowData->host;
        if (!host.IsEditable() || !node) return;
        std::shared_ptr<lx::Operator> op;
        std::shared_ptr<lx::Port> port;
        if (auto opNode = std::dynamic_pointer_cast<mg::OperatorNode>(node))
            op = opNode->GetOperator();
        if (auto portNode = std::dynamic_pointer_cast<mg::PortNode>(node))
            port = portNode->GetPort();
        if (!(op ? lx::UIProviderFactory::HasDialog(op)
                 : port && lx::UIProviderFactory::HasDialog(port))) {
            return;
        }
        host.PrepareForChange(false);
        const bool accepted =
            op ? lx::UIProviderFactory::ShowDialog(op) : lx::UIProviderFactory::ShowDialog(port);
        if (accepted) {
            host.ChangeCompleted(false, true);
            host.PortValuesChanged();
        }
    };
    data.doubleClickHandler =
        data.canvas->OnMessage("doubleclick", [showDialog](const ZML::Event& event) {
            if (const auto* hit = std::any_cast<ZML::FlowGraphHit>(&event.detail))
                showDialog(hit->node);
        });

    // Menus.
    auto* file = menuBar()->addMenu(tr("&File"));
    AddItem(file, tr("&New"), QKeySequence::New, this, [this] {
        if (MaybeSave()) mainWindowData->host->NewModel();
    });
    AddItem(file, tr("&Open..."), QKeySequence::Open, this, [this] {
        if (!MaybeSave()) return;
        const QString path = QFileDialog::getOpenFileName(
            this, tr("Open model"), QString(), tr("Models (*.gmdx *.gmdc);;All files (*)"));
        if (!path.isEmpty()) OpenFile(path);
    });
    data.recentMenu = file->addMenu(tr("Open &Recent"));
    connect(data.recentMenu, &QMenu::aboutToShow, this, [this] {
        auto* menu = mainWindowData->recentMenu;
        menu->clear();
        for (const QString& path : RecentFiles()) {
            AddItem(menu, path, QKeySequence(), this, [this, path] {
                if (MaybeSave()) OpenFile(path);
            });
        }
        menu->setEnabled(true);
    });
    AddItem(file, tr("&Save"), QKeySequence::Save, this, [this] { Save(); });
    AddItem(file, tr("Save &As..."), QKeySequence::SaveAs, this, [this] {
        const QString path = QFileDialog::getSaveFileName(this, tr("Save model"), QString(),
                                                          tr("Models (*.gmdx *.gmdc)"));
        if (!path.isEmpty()) SaveAs(path);
    });
    file->addSeparator();
    AddItem(file, tr("&Quit"), QKeySequence::Quit, this, [this] { close(); });

    auto* edit = menuBar()->addMenu(tr("&Edit"));
    data.undo = AddItem(edit, tr("&Undo"), QKeySequence::Undo, this,
                        [this] { mainWindowData->host->Undo(); });
    data.redo = AddItem(edit, tr("&Redo"), QKeySequence::Redo, this,
                        [this] { mainWindowData->host->Redo(); });
    edit->addSeparator();
    AddItem(edit, tr("&Delete"), QKeySequence(), this,
            [this] { mainWindowData->host->RemoveSelectedOperators(); });
    AddItem(edit, tr("&Properties..."), QKeySequence(), this, [this, showDialog] {
        const auto selected = mainWindowData->canvas->GetSelectedNodes();
        if (selected.size() == 1) showDialog(selected.front());
    });
    AddItem(edit, tr("Add &Text..."), QKeySequence(), this, [this] {
        bool ok = false;
        const QString text = QInputDialog::getText(this, tr("Add text"), tr("Text:"),
                                                   QLineEdit::Normal, QString(), &ok);
        if (!ok || text.isEmpty()) return;
        const QPointF at =
            mainWindowData->view->CanvasPosition(mainWindowData->view->viewport()->rect().center());
        mainWindowData->host->AddTextAnnotation(text.toStdWString(), static_cast<int>(at.x()),
                                                static_cast<int>(at.y()));
    });
    edit->addSeparator();
    data.flowControl = AddItem(edit, tr("&Flow-Control Points"), QKeySequence(), this,
                               [this] { ToggleFlowControlPoints(); });
    data.flowControl->setObjectName(QStringLiteral("flowControlPoints"));
    data.flowControl->setCheckable(true);
    // The selection changes without any report to the window, so the state is read on opening.
    connect(edit, &QMenu::aboutToShow, this, [this] { RefreshFlowControlAction(); });

    auto* viewMenu = menuBar()->addMenu(tr("&View"));
    AddItem(viewMenu, tr("Zoom &In"), QKeySequence::ZoomIn, data.view,
            [this] { mainWindowData->view->ZoomBy(1.25); });
    AddItem(viewMenu, tr("Zoom &Out"), QKeySequence::ZoomOut, data.view,
            [this] { mainWindowData->view->ZoomBy(0.8); });
    AddItem(viewMenu, tr("Zoom to &Fit"), QKeySequence(), this,
            [this] { mainWindowData->view->ZoomToFit(); });
    AddItem(viewMenu, tr("&Automatic Layout"), QKeySequence(), this, [this] {
        QuarnLog::ErrorContext context("lattix::modeler::MainWindow::AutoLayout", __FILE__);
        if (!context.Run([&] { mainWindowData->host->AutoLayout(); })) {
            QMessageBox::warning(this, tr("Automatic layout"), ToQ(context.Text()));
        }
    });
    viewMenu->addSeparator();
    auto* names = viewMenu->addAction(tr("Show Port &Names"));
    names->setCheckable(true);
    names->setChecked(data.canvas->GetShowPortNames());
    connect(names, &QAction::toggled, this,
            [this](bool on) { mainWindowData->host->SetShowPortNames(on); });
    auto* values = viewMenu->addAction(tr("Show Port &Data"));
    values->setCheckable(true);
    values->setChecked(data.canvas->GetShowPortData());
    connect(values, &QAction::toggled, this,
            [this](bool on) { mainWindowData->host->SetShowPortData(on); });

    data.host->SetStateChangedCallback([this] {
        auto& host = *mainWindowData->host;
        const auto path = host.GetPath();
        const QString name = path.empty() ? tr("Untitled") : QFileInfo(ToQ(path)).fileName();
        setWindowTitle(name + QStringLiteral("[*] - Lattix Modeler"));
        setWindowModified(host.IsModified());
        mainWindowData->undo->setEnabled(host.GetUndoRedoManager()->CanUndo());
        mainWindowData->redo->setEnabled(host.GetUndoRedoManager()->CanRedo());
        RefreshFlowControlAction();
    });
    data.host->NewModel();
    resize(1100, 720);
    // The canvas is what the window is for: the docks start small.
    resizeDocks({paletteDock}, {220}, Qt::Horizontal);
    resizeDocks({messageDock}, {130}, Qt::Vertical);
}

MainWindow::~MainWindow() {
    auto& data = *mainWindowData;
    data.messagesToken.reset();
    data.moveScope.reset();
    data.canvas->RemoveMessage(data.doubleClickHandler);
    data.host->SetStateChangedCallback(nullptr);
    if (mg::Context::GetCurrentControl() == data.host.get()) {
        mg::Context::SetCurrentContext(nullptr);
    }
    data.context->SetControl(nullptr);
    data.providerToken.reset();
}

EditorHost& MainWindow::Host() const {
    return *mainWindowData->host;
}

ZML::Qt6::CanvasView* MainWindow::View() const {
    return mainWindowData->view;
}

QListWidget* MainWindow::Messages() const {
    return mainWindowData->messages;
}

QWidget* MainWindow::Palette() const {
    return mainWindowData->paletteWidget;
}

bool MainWindow::OpenFile(const QString& path, std::wstring* error) {
    QuarnLog::ErrorContext context("lattix::modeler::MainWindow::OpenFile", __FILE__);
    if (!context.Run([&] { mainWindowData->host->OpenModelFile(path.toStdWString()); })) {
        if (error) {
            *error = context.Text();
        } else {
            QMessageBox::warning(this, tr("Open model"), ToQ(context.Text()));
        }
        return false;
    }
    RememberRecent(path);
    RefreshMessages();
    return true;
}

bool MainWindow::Save() {
    const auto path = mainWindowData->host->GetPath();
    if (!path.empty()) return SaveAs(ToQ(path));
    const QString chosen = QFileDialog::getSaveFileName(this, tr("Save model"), QString(),
                                                        tr("Models (*.gmdx *.gmdc)"));
    return !chosen.isEmpty() && SaveAs(chosen);
}

bool MainWindow::SaveAs(const QString& path, std::wstring* error) {
    QuarnLog::ErrorContext context("lattix::modeler::MainWindow::SaveAs", __FILE__);
    if (!context.Run([&] { mainWindowData->host->SaveModelFile(path.toStdWString()); })) {
        if (error) {
            *error = context.Text();
        } else {
            QMessageBox::warning(this, tr("Save model"), ToQ(context.Text()));
        }
        return false;
    }
    RememberRecent(path);
    return true;
}

bool MainWindow::MaybeSave() {
    if (!mainWindowData->host->IsModified()) return true;
    const auto answer = QMessageBox::question(
        this, tr("Lattix Modeler"), tr("Save changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Cancel) return false;
    if (answer == QMessageBox::Discard) return true;
    return Save();
}

QStringList MainWindow::RecentFiles() {
    DefineRecentPreference();
    const QString stored = ToQ(qpmg::GetStringPreference(kPrefCategory, kPrefRecent));
    return stored.split('\n', Qt::SkipEmptyParts);
}

QImage MainWindow::Screenshot(const QSize& size) {
    resize(size);
    show();
    QApplication::processEvents();
    mainWindowData->view->ZoomToFit();
    RefreshMessages();
    QApplication::processEvents();
    return grab().toImage();
}

void MainWindow::ToggleFlowControlPoints(QStringList* kept) {
    std::vector<std::shared_ptr<lx::Operator>> keeping;
    QuarnLog::ErrorContext context("lattix::modeler::MainWindow::ToggleFlowControlPoints",
                                   __FILE__);
    if (!context.Run([&] { keeping = mainWindowData->host->ToggleFlowControl(); })) {
        QMessageBox::warning(this, tr("Flow-control points"), ToQ(context.Text()));
    }
    RefreshFlowControlAction();
    QStringList names;
    for (const auto& op : keeping) names << OperatorCaption(*op);
    if (kept) {
        *kept = names;
        return;
    }
    if (names.isEmpty()) return;
    QMessageBox::information(
        this, tr("Flow-control points"),
        tr("These operators keep their flow-control points because links are drawn at them: "
           "%1.\nDelete those links first to remove the points.")
            .arg(names.join(QStringLiteral(", "))));
}

void MainWindow::RefreshFlowControlAction() {
    auto& host = *mainWindowData->host;
    auto* action = mainWindowData->flowControl;
    action->setEnabled(host.CanToggleFlowControl());
    action->setChecked(host.SelectionShowsFlowControl());
}

void MainWindow::RefreshMessages() {
    auto* list = mainWindowData->messages;
    list->clear();
    for (const auto& message : mainWindowData->host->GetMessageManager()->GetMessages()) {
        QString where;
        if (const auto op = message->GetOperator()) {
            where = OperatorCaption(*op);
        }
        if (const auto port = message->GetPort()) {
            where += (where.isEmpty() ? QString() : QStringLiteral(".")) + ToQ(port->GetName());
        }
        const QString text = SeverityName(message->GetSeverity()) + QStringLiteral(": ") +
                             (where.isEmpty() ? QString() : where + QStringLiteral(": ")) +
                             ToQ(message->GetText());
        auto* item = new QListWidgetItem(text, list);
        const auto icon = message->GetSeverity() == lx::Issue::Severity::Error
                              ? QStyle::SP_MessageBoxCritical
                          : message->GetSeverity() == lx::Issue::Severity::Warning
                              ? QStyle::SP_MessageBoxWarning
                              : QStyle::SP_MessageBoxInformation;
        item->setIcon(style()->standardIcon(icon));
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (MaybeSave()) {
        event->accept();
    } else {
        event->ignore();
    }
}

// Delete in the canvas removes the whole selection as one undoable change.
bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == mainWindowData->view && event->type() == QEvent::KeyPress) {
        const auto key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Delete || key == Qt::Key_Backspace) {
            mainWindowData->host->RemoveSelectedOperators();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

}  // namespace lattix::modeler

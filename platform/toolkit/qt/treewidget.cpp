#include "treewidget.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QDrag>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>

#include "ZML/Frame.h"
#include "ZML/TreeViewNode.h"
#include "ZMLQt/QtBackend.h"
#include "guard.h"
#include "qtcolor.h"

namespace ZML::Qt6 {

namespace {

// The node of the drag in progress (or last started) in this process. A drag's MIME data names
// the process and the node's address; both must match for a drop to take the node.
std::weak_ptr<TreeViewNode>& DraggedNode() {
    static std::weak_ptr<TreeViewNode> node;
    return node;
}

QByteArray DragKey(const TreeViewNode* node) {
    return QByteArray::number(QCoreApplication::applicationPid()) + ":" +
           QByteArray::number(reinterpret_cast<quintptr>(node));
}

Modifier ModifiersOf(::Qt::KeyboardModifiers modifiers) {
    unsigned result = ModNone;
    if (modifiers & ::Qt::ShiftModifier) {
        result |= ModShift;
    }
    if (modifiers & ::Qt::ControlModifier) {
        result |= ModControl;
    }
    if (modifiers & ::Qt::AltModifier) {
        result |= ModAlt;
    }
    return static_cast<Modifier>(result);
}

std::shared_ptr<Frame> FrameOf(const std::shared_ptr<Part>& part) {
    for (auto at = part; at; at = at->Parent()) {
        if (auto frame = std::dynamic_pointer_cast<Frame>(at)) {
            return frame;
        }
    }
    return nullptr;
}

}  // namespace

const char* TreeNodeMimeType() {
    return "application/x-lattix-treenode";
}

std::shared_ptr<TreeViewNode> DraggedTreeNode(const QMimeData& mime) {
    auto node = DraggedNode().lock();
    if (!node || !mime.hasFormat(TreeNodeMimeType()) ||
        mime.data(TreeNodeMimeType()) != DragKey(node.get())) {
        return nullptr;
    }
    return node;
}

TreeWidget::TreeWidget(std::weak_ptr<TreeView> tree, QWidget* parent)
    : QTreeWidget(parent), tree(std::move(tree)) {
    setHeaderHidden(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    connect(this, &QTreeWidget::itemPressed, this, [this](QTreeWidgetItem* item, int) {
        auto held = this->tree.lock();
        auto node = NodeOf(item);
        if (!held || !node || syncing) {
            return;
        }
        Guarded("ZML::Qt6::TreeView click",
                [&] { held->UserClick(node, ModifiersOf(QGuiApplication::keyboardModifiers())); });
        SyncSelection();
    });
    connect(this, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item, int) {
        auto held = this->tree.lock();
        auto node = NodeOf(item);
        if (held && node && !syncing) {
            Guarded("ZML::Qt6::TreeView double click", [&] { held->UserDoubleClick(node); });
        }
    });
    auto toggled = [this](QTreeWidgetItem* item, bool expand) {
        auto held = this->tree.lock();
        auto node = NodeOf(item);
        if (held && node && !syncing && node->IsExpanded() != expand) {
            Guarded("ZML::Qt6::TreeView toggle", [&] { held->Expand(node, expand); });
        }
    };
    connect(this, &QTreeWidget::itemExpanded, this,
            [toggled](QTreeWidgetItem* item) { toggled(item, true); });
    connect(this, &QTreeWidget::itemCollapsed, this,
            [toggled](QTreeWidgetItem* item) { toggled(item, false); });
}

std::shared_ptr<TreeViewNode> TreeWidget::NodeOf(QTreeWidgetItem* item) const {
    auto found = nodes.find(item);
    return found == nodes.end() ? nullptr : found->second.lock();
}

namespace {

void Collect(const std::shared_ptr<TreeViewNode>& node, int depth,
             std::vector<std::pair<const TreeViewNode*, int>>& into) {
    into.emplace_back(node.get(), depth);
    for (const auto& child : node->Children()) {
        Collect(child, depth + 1, into);
    }
}

}  // namespace

void TreeWidget::Rebuild() {
    auto held = tree.lock();
    std::vector<std::pair<const TreeViewNode*, int>> wanted;
    if (held) {
        for (const auto& root : held->GetRootNodes()) {
            Collect(root, 0, wanted);
        }
    }
    syncing = true;
    if (held && wanted == shown) {
        for (const auto& [item, weak] : nodes) {
            auto node = weak.lock();
            if (!node) {
                continue;
            }
            item->setText(0, ToQString(node->Text()));
            item->setExpanded(node->IsExpanded());
            // Icons may show whether a node is open.
            const std::wstring icon = held->PropertiesFor(node)->GetIconName(node);
            item->setIcon(0,
                          icon.empty() ? QIcon() : QIcon(QPixmap::fromImage(IconImage(icon, 16))));
        }
    } else {
        clear();
        nodes.clear();
        if (held) {
            for (const auto& root : held->GetRootNodes()) {
                AddItems(held, root, nullptr);
            }
        }
        shown = std::move(wanted);
    }
    syncing = false;
    SyncSelection();
}

void TreeWidget::AddItems(const std::shared_ptr<TreeView>& owner,
                          const std::shared_ptr<TreeViewNode>& node, QTreeWidgetItem* parent) {
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(this);
    item->setText(0, ToQString(node->Text()));
    const auto properties = owner->PropertiesFor(node);
    const std::wstring icon = properties->GetIconName(node);
    if (!icon.empty()) {
        item->setIcon(0, QPixmap::fromImage(IconImage(icon, 16)));
    }
    nodes.emplace(item, node);
    for (const auto& child : node->Children()) {
        AddItems(owner, child, item);
    }
    item->setExpanded(node->IsExpanded());
}

void TreeWidget::SyncSelection() {
    syncing = true;
    for (const auto& [item, weak] : nodes) {
        auto node = weak.lock();
        item->setSelected(node && node->IsSelected());
    }
    syncing = false;
}

void TreeWidget::startDrag(::Qt::DropActions supportedActions) {
    auto held = tree.lock();
    auto node = NodeOf(currentItem());
    if (!held || !node) {
        return;
    }
    bool allowed = false;
    Guarded("ZML::Qt6::TreeView drag", [&] { allowed = held->UserStartDrag(node); });
    if (!allowed) {
        return;
    }
    DraggedNode() = node;
    auto* mime = new QMimeData();
    mime->setData(TreeNodeMimeType(), DragKey(node.get()));
    mime->setText(ToQString(node->Text()));
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->exec(supportedActions & ::Qt::CopyAction ? ::Qt::CopyAction : supportedActions);
}

void TreeWidget::contextMenuEvent(QContextMenuEvent* event) {
    auto held = tree.lock();
    auto node = NodeOf(itemAt(event->pos()));
    if (!held || !node) {
        return;
    }
    std::string menuName;
    Guarded("ZML::Qt6::TreeView context menu", [&] { menuName = held->UserContextMenu(node); });
    SyncSelection();
    auto frame = FrameOf(held);
    auto declared = frame && !menuName.empty() ? frame->FindMenu(menuName) : std::nullopt;
    if (!declared) {
        return;
    }
    QMenu menu(this);
    for (const auto& item : declared->items) {
        if (item.separator) {
            menu.addSeparator();
        } else {
            menu.addAction(ToQString(item.title))->setData(QString::fromStdString(item.name));
        }
    }
    QAction* chosen = menu.exec(event->globalPos());
    if (!chosen) {
        return;
    }
    Event fired;
    fired.text = ToWide(chosen->data().toString());
    fired.detail = node;
    Guarded("ZML::Qt6::TreeView menu", [&] { held->UserEvent("menu", fired); });
}

}  // namespace ZML::Qt6

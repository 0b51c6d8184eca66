#pragma once

#include <QTreeWidget>
#include <memory>
#include <unordered_map>

#include "ZML/TreeView.h"

namespace ZML::Qt6 {

// The widget of a tree view part: rebuilt from the part's nodes when their content changes (trees
// of the suite are small), selection and open nodes kept in step both ways, drags offered for the
// nodes whose properties allow them, and the context menus the dialog script declares.
class TreeWidget : public QTreeWidget {
public:
    // `tree` is observed, not owned.
    TreeWidget(std::weak_ptr<ZML::TreeView> tree, QWidget* parent);

    // Rebuilds the items from the part.
    void Rebuild();
    // Copies the part's selection into the items.
    void SyncSelection();
    std::shared_ptr<ZML::TreeViewNode> NodeOf(QTreeWidgetItem* item) const;

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void AddItems(const std::shared_ptr<ZML::TreeView>& tree,
                  const std::shared_ptr<ZML::TreeViewNode>& node, QTreeWidgetItem* parent);

    std::weak_ptr<ZML::TreeView> tree;
    std::unordered_map<QTreeWidgetItem*, std::weak_ptr<ZML::TreeViewNode>> nodes;
    bool syncing = false;
};

}  // namespace ZML::Qt6

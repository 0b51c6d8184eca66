#pragma once

#include <QTreeWidget>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ZML/TreeView.h"

namespace ZML::Qt6 {

// The widget of a tree view part: rebuilt from the part's nodes when their content changes (trees
// of the suite are small), selection and open nodes kept in step both ways, drags offered for the
// nodes whose properties allow them, and the context menus the dialog script declares.
class TreeWidget : public QTreeWidget {
public:
    // `tree` is observed, not owned.
    TreeWidget(std::weak_ptr<ZML::TreeView> tree, QWidget* parent);

    // Brings the items in step with the part: texts, icons, open nodes and selection in place
    // while the nodes are the same (so that items outlive the signals that changed them), a new
    // set of items when nodes were added, removed or replaced.
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
    // The nodes the items show, depth first, with their depths.
    std::vector<std::pair<const ZML::TreeViewNode*, int>> shown;
    bool syncing = false;
};

}  // namespace ZML::Qt6

#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>
#include <vector>

#include "ZML/Part.h"
#include "ZML/PartPeer.h"

namespace ZML::Qt6 {

// The peer of one realised part: the widget that shows it, the widget its children go into (the
// same one but for scroll groups), and the label that carries its title when the widget itself
// cannot. Refresh copies the part's state into the widgets; a guard keeps the widgets' own change
// signals from echoing that back into the part.
class WidgetPeer : public ZML::PartPeer {
public:
    // `widget` must not be null. A widget without a parent (a window) belongs to the peer and
    // goes with it; otherwise its parent widget owns it and the peer only lets it go early.
    WidgetPeer(const std::shared_ptr<Part>& part, QWidget* widget, QWidget* container);
    ~WidgetPeer() override;

    void Refresh(Part& part, PartChange change) override;

    QWidget* Widget() const;
    QWidget* Container() const;
    // True while Refresh writes into the widgets.
    bool Updating() const;

private:
    void RefreshTitle(Part& part);
    void RefreshGeometry(Part& part);
    void RefreshContent(Part& part);
    void RefreshChildren(Part& part);

    std::weak_ptr<Part> part;
    QPointer<QWidget> widget;
    QPointer<QWidget> container;
    QPointer<QWidget> titleLabel;
    std::vector<std::weak_ptr<Part>> realisedChildren;
    bool updating = false;
};

// Creates the widgets and peers of `part` and its children under `parentWidget` (null: `part`
// becomes a window of its own). A part that has a peer already keeps it.
void RealizePart(Part& part, QWidget* parentWidget);

}  // namespace ZML::Qt6

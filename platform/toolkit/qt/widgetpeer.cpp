#include "widgetpeer.h"

#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QToolButton>
#include <algorithm>

#include "ZML/Button.h"
#include "ZML/Dialog.h"
#include "ZML/EditText.h"
#include "ZML/Filename.h"
#include "ZML/FlowGraphPart.h"
#include "ZML/Frame.h"
#include "ZML/Group.h"
#include "ZML/Icon.h"
#include "ZML/Label.h"
#include "ZML/Number.h"
#include "ZML/PopupList.h"
#include "ZML/ScrollGroup.h"
#include "ZML/ScrollList.h"
#include "ZML/SplitPanel.h"
#include "ZML/TreeView.h"
#include "ZMLQt/CanvasView.h"
#include "guard.h"
#include "numberspinbox.h"
#include "qtcolor.h"
#include "treewidget.h"

namespace ZML::Qt6 {

namespace {

// The part behind a widget's signal, or null when it is gone or its peer is writing into the
// widget (the signal then echoes the part's own state).
template <class T>
std::shared_ptr<T> Live(const std::weak_ptr<T>& weak) {
    auto part = weak.lock();
    if (!part) {
        return nullptr;
    }
    auto peer = std::dynamic_pointer_cast<WidgetPeer>(part->Peer());
    if (peer && peer->Updating()) {
        return nullptr;
    }
    return part;
}

// A frame shown as a window. Closing the window is the frame's cancel step, so that the rules of
// the toolkit decide what closing means; resizing lays the parts out by their locks.
class FrameDialog : public QDialog {
public:
    FrameDialog(std::weak_ptr<Frame> frame) : frame(std::move(frame)) {}

    void reject() override {
        auto held = frame.lock();
        if (!held) {
            QDialog::reject();
            return;
        }
        Guarded("ZML::Qt6::FrameDialog::reject", [&held] {
            if (auto dialog = std::dynamic_pointer_cast<Dialog>(held)) {
                dialog->Cancel();
            } else {
                held->EndModal(ResultCancel);
            }
        });
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QDialog::resizeEvent(event);
        auto held = Live(frame);
        if (!held) {
            return;
        }
        const Rect old = held->Geometry();
        const int width = event->size().width();
        const int height = event->size().height();
        if (old.width <= 0 || old.height <= 0 || (old.width == width && old.height == height)) {
            return;
        }
        // Setting the frame's size lays its parts out by their locks.
        Guarded("ZML::Qt6::FrameDialog::resizeEvent",
                [&] { held->GeometrySet(old.x, old.y, width, height); });
    }

private:
    std::weak_ptr<Frame> frame;
};

bool ShowsOwnTitle(const Part& part) {
    return dynamic_cast<const Frame*>(&part) || dynamic_cast<const Button*>(&part) ||
           dynamic_cast<const Label*>(&part) || dynamic_cast<const Group*>(&part) ||
           dynamic_cast<const SplitPanel*>(&part);
}

QWidget* MakeEditText(const std::shared_ptr<EditText>& edit, QWidget* parent) {
    std::weak_ptr<EditText> weak = edit;
    auto typed = [weak](const QString& text) {
        if (auto held = Live(weak)) {
            Guarded("ZML::Qt6::EditText input", [&] {
                held->SetUnicodeText(ToWide(text));
                Event event;
                event.text = ToWide(text);
                held->UserEvent("input", event);
                held->UserEvent("valuechanged", event);
            });
        }
    };
    if (edit->IsMultiLine()) {
        auto* widget = new QPlainTextEdit(parent);
        QObject::connect(widget, &QPlainTextEdit::textChanged,
                         [widget, typed] { typed(widget->toPlainText()); });
        return widget;
    }
    auto* widget = new QLineEdit(parent);
    QObject::connect(widget, &QLineEdit::textEdited, typed);
    return widget;
}

QWidget* MakeFilename(const std::shared_ptr<Filename>& file, QWidget* parent) {
    auto* widget = new QWidget(parent);
    auto* layout = new QHBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* edit = new QLineEdit(widget);
    edit->setObjectName("path");
    auto* browse = new QToolButton(widget);
    browse->setText("...");
    layout->addWidget(edit, 1);
    layout->addWidget(browse);
    std::weak_ptr<Filename> weak = file;
    QObject::connect(edit, &QLineEdit::editingFinished, [weak, edit] {
        if (auto held = Live(weak); held && ToWide(edit->text()) != held->GetPath()) {
            Guarded("ZML::Qt6::Filename edit", [&] { held->UserSelect(ToWide(edit->text())); });
        }
    });
    QObject::connect(browse, &QToolButton::clicked, [weak, widget] {
        auto held = Live(weak);
        if (!held) {
            return;
        }
        const QString start = ToQString(held->GetPath());
        const QString chosen = held->Mode() == FilenameOutput
                                   ? QFileDialog::getSaveFileName(widget, QString(), start)
                                   : QFileDialog::getOpenFileName(widget, QString(), start);
        if (!chosen.isEmpty()) {
            Guarded("ZML::Qt6::Filename browse", [&] { held->UserSelect(ToWide(chosen)); });
        }
    });
    return widget;
}

// The widget for `part`, by kind; `container` receives the widget its children go into.
QWidget* MakeWidget(const std::shared_ptr<Part>& part, QWidget* parent, QWidget*& container) {
    container = nullptr;
    if (auto canvas = std::dynamic_pointer_cast<FlowGraphPart>(part)) {
        return new CanvasView(std::weak_ptr<FlowGraphPart>(canvas), parent);
    }
    if (auto frame = std::dynamic_pointer_cast<Frame>(part)) {
        if (!parent) {
            return new FrameDialog(frame);
        }
        return new QWidget(parent);
    }
    if (auto split = std::dynamic_pointer_cast<SplitPanel>(part)) {
        auto* widget = new QSplitter(parent);
        std::weak_ptr<SplitPanel> weak = split;
        QObject::connect(widget, &QSplitter::splitterMoved, [weak](int position, int) {
            if (auto held = Live(weak)) {
                held->SplitPositionSet(position);
            }
        });
        return widget;
    }
    if (auto scroll = std::dynamic_pointer_cast<ScrollGroup>(part)) {
        auto* widget = new QScrollArea(parent);
        container = new QWidget();
        widget->setWidget(container);
        widget->setWidgetResizable(false);
        return widget;
    }
    if (auto group = std::dynamic_pointer_cast<Group>(part)) {
        if (group->BackgroundType() == BackgroundFramed) {
            return new QGroupBox(parent);
        }
        return new QFrame(parent);
    }
    if (std::dynamic_pointer_cast<Label>(part)) {
        return new QLabel(parent);
    }
    if (auto button = std::dynamic_pointer_cast<Button>(part)) {
        auto* widget = new QPushButton(parent);
        widget->setAutoDefault(false);
        std::weak_ptr<Button> weak = button;
        QObject::connect(widget, &QPushButton::clicked, [weak] {
            if (auto held = Live(weak)) {
                Guarded("ZML::Qt6::Button press", [&] { held->Press(); });
            }
        });
        return widget;
    }
    if (auto edit = std::dynamic_pointer_cast<EditText>(part)) {
        return MakeEditText(edit, parent);
    }
    if (auto number = std::dynamic_pointer_cast<Number>(part)) {
        return new NumberSpinBox(std::weak_ptr<Number>(number), parent);
    }
    if (auto popup = std::dynamic_pointer_cast<PopupList>(part)) {
        auto* widget = new QComboBox(parent);
        std::weak_ptr<PopupList> weak = popup;
        QObject::connect(widget, &QComboBox::activated, [weak](int index) {
            if (auto held = Live(weak)) {
                Guarded("ZML::Qt6::PopupList choice", [&] { held->UserChoose(index); });
            }
        });
        return widget;
    }
    if (auto file = std::dynamic_pointer_cast<Filename>(part)) {
        return MakeFilename(file, parent);
    }
    if (auto list = std::dynamic_pointer_cast<ScrollList>(part)) {
        auto* widget = new QListWidget(parent);
        std::weak_ptr<ScrollList> weak = list;
        QObject::connect(widget, &QListWidget::clicked, [weak](const QModelIndex& index) {
            if (auto held = Live(weak)) {
                Guarded("ZML::Qt6::ScrollList click", [&] { held->UserClick(index.row()); });
            }
        });
        QObject::connect(widget, &QListWidget::doubleClicked, [weak](const QModelIndex& index) {
            if (auto held = Live(weak)) {
                Guarded("ZML::Qt6::ScrollList double click",
                        [&] { held->UserDoubleClick(index.row()); });
            }
        });
        return widget;
    }
    if (auto tree = std::dynamic_pointer_cast<TreeView>(part)) {
        return new TreeWidget(tree, parent);
    }
    return new QWidget(parent);
}

}  // namespace

WidgetPeer::WidgetPeer(const std::shared_ptr<Part>& part, QWidget* widget, QWidget* container)
    : part(part), widget(widget), container(container ? container : widget) {}

WidgetPeer::~WidgetPeer() {
    // Deferred: the peer may go while one of the widget's own signals is being delivered.
    if (titleLabel) {
        titleLabel->deleteLater();
    }
    if (widget) {
        widget->hide();
        widget->deleteLater();
    }
}

QWidget* WidgetPeer::Widget() const {
    return widget;
}

QWidget* WidgetPeer::Container() const {
    return container;
}

bool WidgetPeer::Updating() const {
    return updating;
}

void WidgetPeer::Refresh(Part& changed, PartChange change) {
    if (!widget) {
        return;
    }
    updating = true;
    const bool all = change == PartChange::All;
    if (all || change == PartChange::Title) {
        RefreshTitle(changed);
    }
    if (all || change == PartChange::Geometry || change == PartChange::Title) {
        RefreshGeometry(changed);
    }
    if (all || change == PartChange::Enabled) {
        widget->setEnabled(changed.IsEnabled());
    }
    if ((all || change == PartChange::Visible) && !widget->isWindow()) {
        widget->setVisible(changed.IsVisible());
        if (titleLabel) {
            titleLabel->setVisible(changed.IsVisible());
        }
    }
    if (all || change == PartChange::Info) {
        widget->setToolTip(ToQString(changed.Info()));
    }
    if (all || change == PartChange::Value || change == PartChange::Content ||
        change == PartChange::Properties) {
        RefreshContent(changed);
    }
    updating = false;
    if (all || change == PartChange::Children) {
        RefreshChildren(changed);
    }
}

void WidgetPeer::RefreshTitle(Part& changed) {
    const QString title = ToQString(changed.Title());
    if (widget->isWindow()) {
        widget->setWindowTitle(title);
    }
    if (auto* button = qobject_cast<QPushButton*>(widget.data())) {
        button->setText(title);
    } else if (auto* label = qobject_cast<QLabel*>(widget.data())) {
        label->setText(title);
    } else if (auto* box = qobject_cast<QGroupBox*>(widget.data())) {
        box->setTitle(title);
    }
    if (ShowsOwnTitle(changed) || title.isEmpty() || !widget->parentWidget()) {
        if (titleLabel) {
            titleLabel->hide();
        }
        return;
    }
    if (!titleLabel) {
        titleLabel = new QLabel(widget->parentWidget());
    }
    static_cast<QLabel*>(titleLabel.data())->setText(title);
    titleLabel->adjustSize();
    titleLabel->setVisible(changed.IsVisible());
}

void WidgetPeer::RefreshGeometry(Part& changed) {
    const Rect at = changed.Geometry();
    if (widget->isWindow()) {
        if (at.width > 0 && at.height > 0) {
            widget->resize(at.width, at.height);
        }
    } else if (!qobject_cast<QSplitter*>(widget->parentWidget())) {
        widget->setGeometry(at.x, at.y, at.width, at.height);
    }
    if (!titleLabel || titleLabel->isHidden()) {
        return;
    }
    const QSize size = titleLabel->sizeHint();
    const int gap = changed.TitleOffset();
    int x = at.x;
    int y = at.y;
    switch (changed.TitleWhere()) {
        case TitleAboveLeft:
        case TitleAbove:
        case TitleAboveRight:
            y = at.y - gap - size.height();
            break;
        case TitleBelowLeft:
        case TitleBelow:
        case TitleBelowRight:
            y = at.y + at.height + gap;
            break;
        case TitleLeft:
            x = at.x - gap - size.width();
            break;
        case TitleRight:
            x = at.x + at.width + gap;
            break;
        default:
            break;
    }
    switch (changed.TitleWhere()) {
        case TitleAbove:
        case TitleBelow:
            x = at.x + (at.width - size.width()) / 2;
            break;
        case TitleAboveRight:
        case TitleBelowRight:
            x = at.x + at.width - size.width();
            break;
        default:
            break;
    }
    titleLabel->setGeometry(x, y, size.width(), size.height());
}

void WidgetPeer::RefreshContent(Part& changed) {
    QWidget* w = widget;
    if (auto* label = dynamic_cast<Label*>(&changed)) {
        static_cast<QLabel*>(w)->setWordWrap(label->IsWrapText());
    } else if (auto* button = dynamic_cast<Button*>(&changed)) {
        if (auto icon = button->GetIcon()) {
            const QImage image = IconImage(icon->RequestedName(), 16);
            static_cast<QPushButton*>(w)->setIcon(QIcon(QPixmap::fromImage(image)));
        }
    } else if (auto* edit = dynamic_cast<EditText*>(&changed)) {
        const QString text = ToQString(edit->GetUnicodeText());
        if (auto* line = qobject_cast<QLineEdit*>(w)) {
            if (line->text() != text) {
                line->setText(text);
            }
            line->setPlaceholderText(ToQString(edit->Hint()));
            line->setReadOnly(edit->IsReadOnly());
            line->setSelection(edit->SelectionStart(),
                               edit->SelectionEnd() - edit->SelectionStart());
        } else if (auto* plain = qobject_cast<QPlainTextEdit*>(w)) {
            if (plain->toPlainText() != text) {
                plain->setPlainText(text);
            }
            plain->setPlaceholderText(ToQString(edit->Hint()));
            plain->setReadOnly(edit->IsReadOnly());
        }
    } else if (auto* number = dynamic_cast<Number*>(&changed)) {
        static_cast<NumberSpinBox*>(w)->ShowText(ToQString(number->Text()));
    } else if (auto* popup = dynamic_cast<PopupList*>(&changed)) {
        auto* combo = static_cast<QComboBox*>(w);
        QStringList items;
        for (const auto& value : popup->ValueList()) {
            items << ToQString(value);
        }
        QStringList shown;
        for (int i = 0; i < combo->count(); ++i) {
            shown << combo->itemText(i);
        }
        if (shown != items) {
            combo->clear();
            combo->addItems(items);
        }
        combo->setCurrentIndex(popup->SelectedPos());
    } else if (auto* file = dynamic_cast<Filename*>(&changed)) {
        if (auto* edit = w->findChild<QLineEdit*>("path")) {
            edit->setText(ToQString(file->GetPath()));
        }
    } else if (auto* list = dynamic_cast<ScrollList*>(&changed)) {
        auto* rows = static_cast<QListWidget*>(w);
        const auto wanted = list->Rows();
        bool same = rows->count() == static_cast<int>(wanted.size());
        for (int i = 0; same && i < rows->count(); ++i) {
            same = rows->item(i)->text() == ToQString(wanted[i].text);
        }
        if (!same) {
            rows->clear();
            for (const auto& row : wanted) {
                auto* item = new QListWidgetItem(ToQString(row.text), rows);
                if (row.icon) {
                    item->setIcon(QPixmap::fromImage(IconImage(row.icon->RequestedName(), 16)));
                }
            }
        }
        rows->setCurrentRow(list->GetSelectedPos());
    } else if (dynamic_cast<TreeView*>(&changed)) {
        static_cast<TreeWidget*>(w)->Rebuild();
    } else if (auto* split = dynamic_cast<SplitPanel*>(&changed)) {
        auto* splitter = static_cast<QSplitter*>(w);
        splitter->setOrientation(split->IsHorizontal() ? ::Qt::Vertical : ::Qt::Horizontal);
        const int total = split->IsHorizontal() ? splitter->height() : splitter->width();
        const int position = split->SplitPosition();
        if (position > 0 && total > position) {
            splitter->setSizes({position, total - position});
        }
    } else if (auto* scroll = dynamic_cast<ScrollGroup*>(&changed)) {
        auto* area = static_cast<QScrollArea*>(w);
        const Rect content = scroll->ContentSize();
        if (container) {
            container->resize(content.width, content.height);
        }
        area->horizontalScrollBar()->setValue(scroll->ScrollX());
        area->verticalScrollBar()->setValue(scroll->ScrollY());
    } else if (auto* group = dynamic_cast<Group*>(&changed)) {
        if (auto* frame = qobject_cast<QFrame*>(w)) {
            switch (group->BackgroundType()) {
                case BackgroundRaised:
                    frame->setFrameStyle(QFrame::Panel | QFrame::Raised);
                    break;
                case BackgroundSunken:
                    frame->setFrameStyle(QFrame::Panel | QFrame::Sunken);
                    break;
                default:
                    frame->setFrameStyle(QFrame::NoFrame);
                    break;
            }
            frame->setAutoFillBackground(group->BackgroundType() != BackgroundNone);
        }
    }
}

void WidgetPeer::RefreshChildren(Part& changed) {
    const auto children = changed.Children();
    // Children that left this part lose their widgets.
    for (const auto& weak : realisedChildren) {
        auto child = weak.lock();
        if (child && std::find(children.begin(), children.end(), child) == children.end()) {
            child->PeerSet(nullptr);
        }
    }
    realisedChildren.clear();
    for (const auto& child : children) {
        if (!child->Peer()) {
            RealizePart(*child, container);
        }
        realisedChildren.push_back(child);
    }
}

void RealizePart(Part& part, QWidget* parentWidget) {
    if (part.Peer()) {
        return;
    }
    auto held = part.shared_from_this();
    QWidget* container = nullptr;
    QWidget* widget = MakeWidget(held, parentWidget, container);
    if (auto* splitter = qobject_cast<QSplitter*>(parentWidget)) {
        splitter->addWidget(widget);
    }
    widget->setObjectName(QString::fromStdString(part.Name()));
    part.PeerSet(std::make_shared<WidgetPeer>(held, widget, container));
    if (parentWidget && part.IsVisible()) {
        widget->show();
    }
}

}  // namespace ZML::Qt6

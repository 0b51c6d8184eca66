#include "ZMLQt/QtBackend.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPointer>
#include <QUrl>

#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "ZML/Frame.h"
#include "ZMLQt/QtClipboardBackend.h"
#include "qtcolor.h"
#include "qttextmetrics.h"
#include "qtxt/Text.h"
#include "quarn/os/Clipboard.h"
#include "widgetpeer.h"

namespace ZML::Qt6 {

struct qtBackendData {
    // Frames in a modal run, innermost last: a box opened meanwhile belongs to the innermost.
    std::vector<QPointer<QWidget>> modalWindows;
};

namespace {

QWidget* PeerWidget(const Part& part) {
    auto peer = std::dynamic_pointer_cast<WidgetPeer>(part.Peer());
    return peer ? peer->Widget() : nullptr;
}

QWidget* ParentWidgetOf(const Part& part) {
    auto parent = part.Parent();
    if (!parent) {
        return nullptr;
    }
    if (!parent->Peer()) {
        RealizePart(*parent, ParentWidgetOf(*parent));
    }
    auto peer = std::dynamic_pointer_cast<WidgetPeer>(parent->Peer());
    return peer ? peer->Container() : nullptr;
}

QWidget* BoxParent(const qtBackendData& data) {
    for (auto it = data.modalWindows.rbegin(); it != data.modalWindows.rend(); ++it) {
        if (*it) {
            return *it;
        }
    }
    return QApplication::activeWindow();
}

}  // namespace

QtBackend::QtBackend() : qtBackendRecord(std::make_shared<qtBackendData>()) {}

QtBackend::~QtBackend() = default;

void QtBackend::Realize(Part& part) {
    if (PeerWidget(part)) {
        return;
    }
    // A peer whose widget Qt destroyed (its window closed for good) is replaced.
    part.PeerSet(nullptr);
    RealizePart(part, ParentWidgetOf(part));
}

int QtBackend::RunModal(Frame& frame) {
    Realize(frame);
    QWidget* widget = PeerWidget(frame);
    auto* dialog = qobject_cast<QDialog*>(widget);
    frame.Display();
    if (!frame.IsOpen()) {
        return frame.ModalResult();
    }
    if (!dialog) {
        QUARN_THROW("The frame \"" + frame.Name() +
                    "\" is part of another window and cannot run modally.");
    }
    qtBackendRecord->modalWindows.emplace_back(dialog);
    dialog->setModal(true);
    dialog->exec();
    qtBackendRecord->modalWindows.pop_back();
    if (frame.IsOpen()) {
        // The dialog went without the frame's own ending (the application is quitting).
        frame.EndModal(ResultCancel);
    }
    return frame.ModalResult();
}

void QtBackend::Show(Frame& frame) {
    Realize(frame);
    frame.Display();
    if (QWidget* widget = PeerWidget(frame)) {
        widget->show();
        widget->raise();
    }
}

void QtBackend::Close(Frame& frame) {
    QWidget* widget = PeerWidget(frame);
    if (auto* dialog = qobject_cast<QDialog*>(widget)) {
        dialog->done(frame.ModalResult());
    } else if (widget && widget->isWindow()) {
        widget->hide();
    }
}

MessageReply QtBackend::Ask(const MessageRequest& request) {
    QWidget* parent = BoxParent(*qtBackendRecord);
    const QString caption = ToQString(request.caption);
    const QString text = ToQString(request.text);
    switch (request.kind) {
        case MessageKind::Warning:
            QMessageBox::warning(parent, caption, text);
            return {};
        case MessageKind::Error:
            QMessageBox::critical(parent, caption, text);
            return {};
        case MessageKind::Information:
            QMessageBox::information(parent, caption, text);
            return {};
        case MessageKind::YesNo:
            return {QMessageBox::question(parent, caption, text,
                                          QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes
                        ? Answer::Yes
                        : Answer::No,
                    std::nullopt};
        case MessageKind::YesNoCancel: {
            const auto button = QMessageBox::question(
                parent, caption, text, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                QMessageBox::Cancel);
            return {button == QMessageBox::Yes  ? Answer::Yes
                    : button == QMessageBox::No ? Answer::No
                                                : Answer::Cancel,
                    std::nullopt};
        }
        case MessageKind::EditText: {
            bool ok = false;
            const QString entered = QInputDialog::getText(parent, caption, text, QLineEdit::Normal,
                                                          ToQString(request.initialText), &ok);
            if (!ok) {
                return {Answer::Cancel, std::nullopt};
            }
            return {Answer::Ok, ToWide(entered)};
        }
    }
    return {};
}

void QtBackend::OpenDocument(const std::wstring& target) {
    const QString text = ToQString(target);
    // Addresses keep their query and anchor ("file:///.../missing.html?topic=x"); plain paths
    // are files.
    const QUrl url = text.contains("://") ? QUrl(text) : QUrl::fromLocalFile(text);
    if (!QDesktopServices::openUrl(url)) {
        QuarnLog::Write(QuarnLog::Level::Warning, "ZML::Qt6::QtBackend::OpenDocument", __FILE__,
                        "The desktop could not open " + qtxt::DefaultWideToUTF8(target) +
                            " (QDesktopServices::openUrl failed).");
    }
}

void InstallBackend(QApplication&) {
    Backend::Install(std::make_shared<QtBackend>());
    quarn::os::SetClipboardBackend(std::make_shared<QtClipboardBackend>());
    TextMetrics::Install(std::make_shared<QtTextMetrics>());
}

void UninstallBackend() {
    TextMetrics::Install(nullptr);
    Backend::Install(nullptr);
    quarn::os::SetClipboardBackend(nullptr);
}

QWidget* WidgetOf(const std::shared_ptr<Part>& part) {
    if (!part) {
        QUARN_THROW("WidgetOf needs a part.");
    }
    if (QWidget* widget = PeerWidget(*part)) {
        return widget;
    }
    part->PeerSet(nullptr);
    RealizePart(*part, ParentWidgetOf(*part));
    return PeerWidget(*part);
}

}  // namespace ZML::Qt6

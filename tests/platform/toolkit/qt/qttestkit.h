#pragma once

// What the backend tests share: one QApplication for the whole program, and canvas nodes and
// points (the canvas classes only have protected constructors).

#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <memory>
#include <string>

#include "ZML/FlowGraphPart.h"

namespace qttest {

// Qt wants its application object made on the main thread before any widget and gone after the
// last one; a test environment brackets the whole program.
class ApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        // Headless unless the caller chose a platform (the clipboard test between processes runs
        // under a private X server), with the source tree's resources.
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        if (qEnvironmentVariableIsEmpty("LATTIX_RESOURCE_PATH")) {
            qputenv("LATTIX_RESOURCE_PATH", LATTIX_SOURCE_DIR "/resources");
        }
        static int argc = 1;
        static char name[] = "zml_qt_tests";
        static char* argv[] = {name, nullptr};
        application = std::make_unique<QApplication>(argc, argv);
    }
    void TearDown() override {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        application.reset();
    }

private:
    std::unique_ptr<QApplication> application;
};

// Widgets of a peer go with deferred deletion; tests flush it before checking for leftovers.
inline void FlushDeletes() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

class Node : public ZML::FlowGraphNodeEx {
public:
    Node() = default;
};

// A point whose CanConnect answer can be forced.
class Point : public ZML::FlowGraphConnectionPointEx {
public:
    Point() = default;
    bool CanConnect(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) override {
        return refuse ? false : FlowGraphConnectionPointEx::CanConnect(other);
    }
    bool refuse = false;
};

inline std::shared_ptr<Point> MakePoint(bool input, const std::wstring& caption) {
    auto point = std::make_shared<Point>();
    input ? point->SetInput() : point->SetOutput();
    point->SetCaption(caption);
    return point;
}

// A node at (x, y) with one input and one output, put on `canvas`.
inline std::shared_ptr<Node> AddNode(ZML::FlowGraphPart& canvas, const std::wstring& caption, int x,
                                     int y) {
    auto node = std::make_shared<Node>();
    node->SetCaption(caption);
    node->SetLocation(x, y);
    node->AddConnectionPoint(MakePoint(true, L"in"));
    node->AddConnectionPoint(MakePoint(false, L"out"));
    canvas.AddNode(node);
    return node;
}

inline std::shared_ptr<Point> PointOf(const std::shared_ptr<Node>& node, bool input) {
    for (const auto& point : node->GetFlowConnectionPoints()) {
        if (point->IsInput() == input) {
            return std::static_pointer_cast<Point>(point);
        }
    }
    return nullptr;
}

}  // namespace qttest

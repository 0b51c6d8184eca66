#pragma once

// What the editor tests share: one QApplication with the toolkit's Qt backend for the whole
// program, the example models, a fixture with an editor window, and model helpers.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QStringList>
#include <memory>
#include <string>

#include "EditorHost.h"
#include "MainWindow.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/Operator.h"
#include "ZML/FlowGraphPart.h"
#include "ZMLQt/QtBackend.h"

namespace modelertest {

class ApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "modeler_tests";
        static char* argv[] = {name, nullptr};
        application = std::make_unique<QApplication>(argc, argv);
        ZML::Qt6::InstallBackend(*application);
    }
    void TearDown() override {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ZML::Qt6::UninstallBackend();
        application.reset();
    }

private:
    std::unique_ptr<QApplication> application;
};

// Registered here, once for the program however many test files include this header: a second
// QApplication would crash the program when the environments are torn down.
inline const auto* const applicationEnvironment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

inline QStringList ExampleModels() {
    QDir examples(QStringLiteral(LATTIX_SOURCE_DIR "/examples"));
    QStringList paths;
    for (const QString& name :
         examples.entryList({QStringLiteral("*.gmdx")}, QDir::Files, QDir::Name)) {
        paths << examples.filePath(name);
    }
    return paths;
}

// The model as its plain-format file text.
inline std::wstring Text(const std::shared_ptr<Velmar::Lattix::Model>& model) {
    return Velmar::Lattix::ModelFormatFactory::SaveToBuffer(
        model, Velmar::Lattix::ModelFormatFactory::PlainFormatName);
}

// The first operator of `model` of the type called `name`, or empty.
inline std::shared_ptr<Velmar::Lattix::Operator> OperatorOfType(
    const std::shared_ptr<Velmar::Lattix::Model>& model, const std::wstring& name) {
    for (const auto& op : model->GetOperators()) {
        if (op->GetOperatorName() == name) return op;
    }
    return nullptr;
}

// A fresh editor window for each test.
class WindowTest : public ::testing::Test {
protected:
    void SetUp() override { window = std::make_unique<lattix::modeler::MainWindow>(); }
    void TearDown() override {
        window.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    lattix::modeler::EditorHost& Host() { return window->Host(); }
    std::shared_ptr<ZML::FlowGraphPart> Canvas() { return Host().GetFlowGraphPart(); }

    std::unique_ptr<lattix::modeler::MainWindow> window;
};

}  // namespace modelertest

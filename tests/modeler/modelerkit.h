#pragma once

// What the editor tests share: one QApplication with the toolkit's Qt backend for the whole
// program, and the example models.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QStringList>
#include <memory>

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

}  // namespace modelertest

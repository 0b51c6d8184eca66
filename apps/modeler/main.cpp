// lattix-modeler: the desktop editor of dataflow models.
//
//   lattix-modeler [model.gmdx]
//   lattix-modeler --screenshot FILE.png [model.gmdx]

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "MainWindow.h"
#include "ZMLQt/QtBackend.h"
#include "qtxt/Text.h"

namespace {

int Usage(const char* problem) {
    std::fprintf(stderr,
                 "lattix-modeler: %s\n"
                 "usage: lattix-modeler [--screenshot FILE.png] [model.gmdx]\n",
                 problem);
    return 2;
}

// Runs the editor; the backend is installed for exactly the life of the window.
int Run(QApplication& application, const QString& model, const QString& screenshot) {
    ZML::Qt6::InstallBackend(application);
    int status = 0;
    {
        lattix::modeler::MainWindow window;
        std::wstring error;
        if (!model.isEmpty() && !window.OpenFile(model, screenshot.isEmpty() ? nullptr : &error)) {
            if (!screenshot.isEmpty()) {
                std::fprintf(stderr, "lattix-modeler: cannot open %s: %s\n",
                             model.toLocal8Bit().constData(),
                             qtxt::DefaultWideToUTF8(error).c_str());
                status = 1;
            }
        }
        if (status == 0 && !screenshot.isEmpty()) {
            const QImage picture = window.Screenshot(QSize(1100, 720));
            const QFileInfo target(screenshot);
            QDir().mkpath(target.absolutePath());
            if (picture.isNull() || !picture.save(screenshot, "PNG")) {
                std::fprintf(stderr, "lattix-modeler: cannot write the picture %s\n",
                             screenshot.toLocal8Bit().constData());
                status = 1;
            }
        } else if (status == 0) {
            window.show();
            status = application.exec();
        }
    }
    ZML::Qt6::UninstallBackend();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    QString screenshot;
    QString model;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--screenshot") {
            if (i + 1 >= argc) return Usage("--screenshot needs a file name");
            screenshot = QString::fromLocal8Bit(argv[++i]);
        } else if (arg == "--help" || arg == "-h") {
            Usage("the model editor");
            return 0;
        } else if (!arg.empty() && arg[0] == '-') {
            return Usage(("unknown option '" + arg + "'").c_str());
        } else if (model.isEmpty()) {
            model = QString::fromLocal8Bit(argv[i]);
        } else {
            return Usage("give at most one model");
        }
    }
    // A picture needs no display: without one, draw on Qt's offscreen platform.
    if (!screenshot.isEmpty() && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName("lattix-modeler");
    return Run(application, model, screenshot);
}

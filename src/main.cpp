// SPDX-License-Identifier: MIT
#include "KelvoBuild.h"
#include "KelvoGUIMain.h"
#include "KelvoRegistry.h"
#include "Recorder.h"
#include "platform/DisplayCheck.h"
#include "platform/DisplayLoss.h"
#include "platform/StandardErrorLog.h"
#include "platform/TerminationSignals.h"

#include <QApplication>
#include <QDebug>
#include <QUrl>

#include <cstdio>
#include <memory>

namespace {
const char *argumentOrEmpty(int argc, char *argv[], int index)
{
    return index < argc ? argv[index] : "";
}
} // namespace

int main(int argc, char *argv[])
{
    StandardErrorLog::install();
    DisplayCheck::useNamedDisplay(argc, argv);
    DisplayCheck::preferX11();
    const QString problem = DisplayCheck::problem(argc, argv);
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "kelvo-test-gui: %s\n", qPrintable(problem));
        return 1;
    }

    // Outlives the application, at whose end the back ends stop: that is recorded, too.
    std::unique_ptr<Recorder> recorder;
    QApplication application(argc, argv);
    DisplayLoss::prepare();
    recorder = Recorder::start(KelvoRegistry::instance(),
        {QStringLiteral("kelvo-test-gui"), QStringLiteral(KELVO_VERSION), KelvoBuild::revision()});
    const TerminationSignals signals;
    QObject::connect(
        &signals, &TerminationSignals::closeRequested, &application, &TerminationSignals::closeWindows);
    auto *guiMain = new KelvoGUIMain(&application);
    qDebug() << argc << argumentOrEmpty(argc, argv, 0) << argumentOrEmpty(argc, argv, 1)
             << argumentOrEmpty(argc, argv, 2);
    if (argc > 1) {
        const QUrl url(QString::fromLocal8Bit(argv[argc - 1]));
        qDebug() << "Found URL:" << url;
        if (url.isValid())
            guiMain->playPlaylist(url, QStringLiteral("audio/x-scpls"));
    }
    return QApplication::exec();
}

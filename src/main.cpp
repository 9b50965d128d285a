// SPDX-License-Identifier: MIT
#include "Contrast.h"
#include "KelvoBuild.h"
#include "KelvoGUIMain.h"
#include "KelvoRegistry.h"
#include "Recorder.h"
#include "ScreenLock.h"
#include "UserFolders.h"
#include "platform/CommandLine.h"
#include "platform/DesktopEntry.h"
#include "platform/DisplayCheck.h"
#include "platform/DisplayLoss.h"
#include "platform/EarlyWork.h"
#include "platform/FileLimit.h"
#include "platform/PlayFirst.h"
#include "platform/StandardErrorLog.h"
#include "platform/StandstillLog.h"
#include "platform/TerminationSignals.h"
#include "platform/ThreadHeaps.h"

#include <QApplication>
#include <QDebug>
#include <QUrl>

#include <cstdio>
#include <memory>
#include <optional>

namespace {
const char *argumentOrEmpty(int argc, char *argv[], int index)
{
    return index < argc ? argv[index] : "";
}
} // namespace

int main(int argc, char *argv[])
{
    const QByteArray answer = CommandLine::answerTo(argc, argv);
    if (!answer.isEmpty())
        return std::fputs(answer.constData(), stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
    ThreadHeaps::share();
    StandardErrorLog::install();
    FileLimit::raise();
    DisplayCheck::useNamedDisplay(argc, argv);
    DisplayCheck::preferX11();
    const QString problem = DisplayCheck::problem(argc, argv);
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "kelvo-test-gui: %s\n", qPrintable(problem));
        return 1;
    }
    EarlyWork early;
    early.beginIfSettled();

    // Outlives the application, at whose end the back ends stop: that is recorded, too.
    std::unique_ptr<Recorder> recorder;
    QApplication application(argc, argv);
    DisplayCheck::forgetUnusedX11();
    early.begin();
    DesktopEntry::apply();
    DisplayLoss::prepare();
    QApplication::setPalette(Contrast::withReadableHighlight(QApplication::palette()));
    UserFolders::takeOverOld();
    recorder = Recorder::start(KelvoRegistry::instance(),
        {QStringLiteral("kelvo-test-gui"), QStringLiteral(KELVO_VERSION), KelvoBuild::revision()});
    const ScreenLock screenLock(KelvoRegistry::instance());
    const TerminationSignals signals;
    early.waitForFonts();
    QObject::connect(
        &signals, &TerminationSignals::closeRequested, &application, &TerminationSignals::closeWindows);
    const QUrl url = argc > 1 ? CommandLine::urlOf(argv[argc - 1]) : QUrl();
    std::optional<PlayFirst> playFirst;
    if (url.isValid())
        playFirst.emplace(KelvoRegistry::instance());
    auto *guiMain = new KelvoGUIMain(&application);
    qDebug() << argc << argumentOrEmpty(argc, argv, 0) << argumentOrEmpty(argc, argv, 1)
             << argumentOrEmpty(argc, argv, 2);
    if (argc > 1) {
        qDebug() << "Found URL:" << url;
        if (url.isValid())
            guiMain->playPlaylist(url, QStringLiteral("audio/x-scpls"));
    }
    const StandstillLog standstills;
    return QApplication::exec();
}

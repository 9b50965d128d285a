// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

#include "ComboLabels.h"
#include "FocusKeys.h"
#include "KelvoBuild.h"
#include "KelvoFullScreenVideoWidget.h"
#include "KelvoHelpDialog.h"
#include "KelvoPlayUriDialog.h"
#include "KelvoPlaylistDialog.h"
#include "KelvoRendererErrorLogDialog.h"
#include "KelvoSearchDialog.h"
#include "KelvoSelectItemsDialog.h"
#include "KelvoSourceDialog.h"
#include "KelvoSourcePropertiesDialog.h"
#include "KelvoVolumeDialog.h"
#include "platform/QInputContext.h"

#include <QCoreApplication>
#include <QDebug>
#include <QGuiApplication>

KelvoMainWindow::KelvoMainWindow(KelvoGUIMain *guiMain, QWidget *parent)
    : QMainWindow(parent)
    , m_guiMain(guiMain)
{
    logBuild();
    setupUi(this);
    ComboLabels::add(this);
    setAttribute(Qt::WA_DeleteOnClose);
    makeVideoPageNative();
    createDialogs(createInputContext());
    m_tabs->setCurrentWidget(tab_music);
    showDuration(0);
    m_video_videoLabel->setCursor(Qt::BlankCursor);
    createFullScreenVideo();
    setUpPlaybackDisplay();
    setUpResultDisplay();
    connectWindowActions();
    connectQueryTimer();
    connectResultActions();
    connectPauseAtActions();
}

KelvoMainWindow::~KelvoMainWindow()
{
    delete m_fullScreenVideoWidget;
    qDebug() << "KelvoMainWindow::~KelvoMainWindow";
}

void KelvoMainWindow::logBuild() const
{
    qDebug() << "kelvo-test-gui revision:" << KelvoBuild::revision();
    qDebug() << "kelvo-test-gui builtime:" << KelvoBuild::time();
    qDebug() << "KelvoMainWindow::KelvoMainWindow()";
}

void KelvoMainWindow::makeVideoPageNative()
{
    // Renderers put their window into this one: it is unmapped with the page when another tab is shown. It is
    // made now, because renderers are told its id before the tab has ever been shown. Its siblings, and through
    // them their ancestors, would become native too if the toolkit were left to it.
    QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
    tab_video->setAttribute(Qt::WA_DontCreateNativeAncestors);
    tab_video->setAttribute(Qt::WA_NativeWindow);
    tab_video->winId();
    // Renderers draw by X11, so this box stays empty; what plays is told to have no output, too.
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        m_video_videoLabel->setText(QStringLiteral("no video output"));
}

QInputContext *KelvoMainWindow::createInputContext()
{
    bool isNumber = false;
    const int use = qEnvironmentVariable("QKELVO_USE_INPUT_CTX").toInt(&isNumber, 10);
    if (!isNumber || use < 1)
        return nullptr;
    qDebug() << "Using ZuvInputContext";
    return QInputContextFactory::create(QStringLiteral("ZuvInputContext"), this);
}

void KelvoMainWindow::createDialogs(QInputContext *inputContext)
{
    m_helpDialog = new KelvoHelpDialog(this);
    m_playlistDialog = new KelvoPlaylistDialog(inputContext, this);
    m_playUriDialog = new KelvoPlayUriDialog(this);
    m_rendererErrorLogDialog = new KelvoRendererErrorLogDialog(this);
    m_searchDialog = new KelvoSearchDialog(inputContext, this);
    m_sourceDialog = new KelvoSourceDialog(this);
    m_sourcePropertiesDialog = new KelvoSourcePropertiesDialog(this);
    m_volumeDialog = new KelvoVolumeDialog(this);
    m_loadPluginsDialog = new KelvoSelectItemsDialog(QStringLiteral("Load plugins"), this);
    m_loadPlaylistsDialog = new KelvoSelectItemsDialog(QStringLiteral("Load playlists"), this);
}

void KelvoMainWindow::createFullScreenVideo()
{
    m_videoFullScreen = false;
    m_fullScreenVideoWidget = new KelvoFullScreenVideoWidget(nullptr);
    connect(m_fullScreenVideoWidget, SIGNAL(screenTapped()), this, SLOT(hideFullScreenVideo()));
}

void KelvoMainWindow::connectWindowActions()
{
    FocusKeys::openMenuByF10(menubar);
    connect(m_actionHelp, SIGNAL(triggered(bool)), this, SLOT(showHelpDialog()));
    connect(m_actionExit, SIGNAL(triggered(bool)), this, SLOT(close()));
}

void KelvoMainWindow::connectResultActions()
{
    connect(m_actionLaunchBrowser, SIGNAL(triggered(bool)), this, SLOT(launchBrowser()));
    connect(m_actionQuery_properties, SIGNAL(triggered(bool)), this, SLOT(showQueryPropertiesDialog()));
}

void KelvoMainWindow::connectPauseAtActions()
{
    // action2_sec is in no menu and stays without a second of its own.
    const std::pair<QAction *, int> actions[] = {
        {m_action0_sec, 0},
        {m_action1_sec, 1},
        {m_action3_sec, 3},
        {m_action6_sec, 6},
        {m_action10_sec, 10},
    };
    for (const auto &[action, second] : actions) {
        connect(action, SIGNAL(triggered(bool)), this, SLOT(immediateSeekRequest()));
        action->setProperty("pause-at", second);
    }
}

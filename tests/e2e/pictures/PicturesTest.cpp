// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "LayoutJudge.h"
#include "Scene.h"
#include "TestGroup.h"

#include <QTest>
#include <QtWidgets>

#include <functional>

namespace {
// Nobody compares the pictures, so they may be lossy: without loss they took half the time of this test.
constexpr int quality = 90;

/// The touch screen that the window is made for.
constexpr QSize smallScreen(800, 480);

QString variable(const char *name)
{
    return qEnvironmentVariable(name);
}

QPalette paletteOf(const QColor &window, const QColor &base, const QColor &button, const QColor &ink)
{
    QPalette palette(ink, button, button.lighter(), button.darker(), button, ink, Qt::white, base, window);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, Qt::gray);
    palette.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    palette.setColor(QPalette::HighlightedText, Qt::black);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, ink);
    return palette;
}

void takeLook(const QString &look)
{
    QApplication::setStyle(QStringLiteral("Fusion"));
    if (look == u"dark")
        QApplication::setPalette(paletteOf(QColor(0x31, 0x36, 0x3b), QColor(0x23, 0x26, 0x29),
            QColor(0x31, 0x36, 0x3b), QColor(0xef, 0xf0, 0xf1)));
    else if (look == u"contrast")
        QApplication::setPalette(paletteOf(Qt::black, Qt::black, QColor(0x30, 0x30, 0x30), Qt::white));
}

QDialog *openDialog()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCoreApplication::processEvents();
}
} // namespace

/// All that the program shows, judged and kept as pictures: on the platform, in the scale and in the language's direction
/// of the environment, with the look named by KELVO_PICTURES_LOOK ("dark", "contrast"), mirrored with
/// KELVO_PICTURES_MIRRORED. Pictures go to KELVO_PICTURES_FOLDER; their names begin with KELVO_PICTURES_NAME.
class PicturesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(!variable("KELVO_PICTURES_FOLDER").isEmpty());
        QVERIFY(QDir().mkpath(variable("KELVO_PICTURES_FOLDER")));
        takeLook(variable("KELVO_PICTURES_LOOK"));
        if (!variable("KELVO_PICTURES_MIRRORED").isEmpty())
            QApplication::setLayoutDirection(Qt::RightToLeft);
        m_scene = std::make_unique<Scene>();
        m_window = m_scene->window();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }
    void cleanupTestCase() { m_scene.reset(); }
    void init()
    {
        KelvoTestCase::init();
        m_faults.clear();
    }

    void theTabs()
    {
        auto *tabs = m_window->findChild<QTabWidget *>(QStringLiteral("m_tabs"));
        for (const QSize size : {smallScreen, QSize(1200, 700)}) {
            if (!fits(size))
                continue;
            m_window->resize(size);
            QVERIFY(QTest::qWaitFor([this, size] { return m_window->size() == size; }));
            for (int i = 0; i < tabs->count(); ++i) {
                tabs->setCurrentIndex(i);
                look(m_window, tabs->tabText(i).trimmed() + u' ' + QString::number(size.width()));
            }
        }
        m_window->resize(smallScreen);
        QVERIFY2(m_faults.isEmpty(), qPrintable(m_faults.join(u'\n')));
    }

    /// Renderers draw by X11.
    void theVideoBoxSaysWhenThereIsNoOutput()
    {
        const bool isOnWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
        const auto *box = m_window->findChild<QLabel *>(QStringLiteral("m_video_videoLabel"));
        QCOMPARE(box->text(), isOnWayland ? QStringLiteral("no video output") : QString());
    }

    void whatComesAndGoesOnTheTabs()
    {
        m_window->findChild<QTabWidget *>(QStringLiteral("m_tabs"))->setCurrentIndex(0);
        m_window->showBufferingInfo(QString(), 0.4F);
        look(m_window, QStringLiteral("Buffering"));
        m_window->showBufferingInfo(QStringLiteral("Scanning"), 0.7F);
        m_window->showPolicyOverride(true);
        look(m_window, QStringLiteral("Scanning and override"));
        m_window->showBufferingInfo(QString(), 1);
        m_window->showPolicyOverride(false);
        QVERIFY2(m_faults.isEmpty(), qPrintable(m_faults.join(u'\n')));
    }

    void theMenus()
    {
        const QList<QMenu *> menus = m_window->findChildren<QMenu *>();
        QVERIFY(menus.size() >= 6);
        for (const QMenu *menu : menus) {
            const QSize wanted = menu->sizeHint();
            if (wanted.width() > smallScreen.width() || wanted.height() > smallScreen.height())
                m_faults += QStringLiteral("menu %1 is %2 high").arg(menu->title()).arg(wanted.height());
        }
        QVERIFY2(m_faults.isEmpty(), qPrintable(m_faults.join(u'\n')));
    }

    void theDialogs_data()
    {
        QTest::addColumn<QByteArray>("action");
        QTest::newRow("Help") << QByteArray("m_actionHelp");
        QTest::newRow("Plugins") << QByteArray("m_actionPlugins");
        QTest::newRow("Volume") << QByteArray("m_actionVolume");
        QTest::newRow("Create playlist") << QByteArray("m_actionCreateNew");
        QTest::newRow("Play uri") << QByteArray("m_actionPlayUri");
        QTest::newRow("Select sources") << QByteArray("m_actionSelectSources");
        QTest::newRow("Search") << QByteArray("m_actionSearch");
        QTest::newRow("Source properties") << QByteArray("m_actionSourceProperties");
        QTest::newRow("Query properties") << QByteArray("m_actionQuery_properties");
    }

    void theDialogs()
    {
        QFETCH(QByteArray, action);
        visitDialog(
            QString::fromLatin1(QTest::currentDataTag()), [&] { m_scene->action(action)->trigger(); });
        QVERIFY2(m_faults.isEmpty(), qPrintable(m_faults.join(u'\n')));
    }

    void theErrorLog()
    {
        visitDialog(QStringLiteral("Error log"),
            [this] { m_window->showRendererErrorLog(100, QStringLiteral("The resource was not found.")); });
        QVERIFY2(m_faults.isEmpty(), qPrintable(m_faults.join(u'\n')));
    }

    void theEndOfPlayback()
    {
        visitDialog(QStringLiteral("Playback completed"), [this] { m_scene->completePlayback(); });
        QVERIFY2(m_faults.isEmpty(), qPrintable(m_faults.join(u'\n')));
    }

private:
    bool fits(const QSize &size) const
    {
        const QSize screen = m_window->screen()->size();
        return size == smallScreen || (size.width() <= screen.width() && size.height() <= screen.height());
    }

    /// Looks at the dialog that `open` opens, and closes it.
    void visitDialog(const QString &name, const std::function<void()> &open)
    {
        bool isDone = false;
        QTimer::singleShot(0, this, [&] {
            if (!QTest::qWaitFor([] { return openDialog(); })) {
                m_faults += name + QStringLiteral(" does not open");
            } else {
                look(openDialog(), name);
                openDialog()->reject();
            }
            isDone = true;
        });
        open();
        QTRY_VERIFY(isDone);
    }

    void look(QWidget *window, const QString &name)
    {
        if (!QTest::qWaitForWindowExposed(window))
            m_faults += name + QStringLiteral(" does not show");
        settle();
        QStringList found = LayoutJudge::faults(window);
        // Nothing is made for a larger screen than that.
        if (window != m_window
            && (window->width() > smallScreen.width() || window->height() > smallScreen.height()))
            found += QStringLiteral("it is %1x%2 large").arg(window->width()).arg(window->height());
        for (const QString &fault : std::as_const(found))
            m_faults += name + QStringLiteral(": ") + fault;
        save(window, name);
    }

    void save(QWidget *window, QString name)
    {
        const QString file = QStringLiteral("%1/%2-%3.jpg")
                                 .arg(variable("KELVO_PICTURES_FOLDER"), variable("KELVO_PICTURES_NAME"),
                                     name.replace(u' ', u'-'));
        if (!window->grab().save(file, "JPG", quality))
            m_faults += file + QStringLiteral(" cannot be written");
    }

    std::unique_ptr<Scene> m_scene;
    KelvoMainWindow *m_window = nullptr;
    QStringList m_faults;
};

KELVO_WIDGET_TEST(PicturesTest)
#include "PicturesTest.moc"

// SPDX-License-Identifier: MIT
#include "LayoutJudge.h"
#include "CheckFrames.h"
#include "ConsoleFixture.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>
#include <QtWidgets>

#include <functional>

using Spoil = std::function<void(KelvoMainWindow *)>;
Q_DECLARE_METATYPE(Spoil)

namespace {
QWidget *in(const KelvoMainWindow *window, const char *name)
{
    auto *widget = window->findChild<QWidget *>(QLatin1String(name));
    if (!widget)
        qFatal("no %s", name);
    return widget;
}

void squeeze(const KelvoMainWindow *window, const char *name, int width, int height)
{
    in(window, name)->setMinimumSize(0, 0);
    in(window, name)->resize(width, height);
}
} // namespace

/// A window that is right has no faults, and each way to spoil it has its own.
class LayoutJudgeTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void aGoodWindowHasNoFaults()
    {
        const std::unique_ptr<KelvoMainWindow> window = show();
        QCOMPARE(LayoutJudge::faults(window.get()), QStringList());
    }

    void aSpoiltWindowHasAFault_data()
    {
        QTest::addColumn<Spoil>("spoil");
        QTest::addColumn<QString>("fault");
        QTest::newRow("a button too narrow")
            << Spoil([](auto *window) { squeeze(window, "m_music_stopButton", 20, 100); })
            << "\"Stop\" of QToolButton m_music_stopButton needs ";
        QTest::newRow("a button too low")
            << Spoil([](auto *window) { squeeze(window, "m_music_stopButton", 80, 8); })
            << "\"Stop\" of QToolButton m_music_stopButton needs ";
        QTest::newRow("a button of no size")
            << Spoil([](auto *window) { squeeze(window, "m_music_stopButton", 0, 0); })
            << "QToolButton m_music_stopButton is cut by QWidget tab_music";
        QTest::newRow("a button half outside")
            << Spoil([](auto *window) { in(window, "m_music_playButton")->move(-40, 100); })
            << "QToolButton m_music_playButton is cut by QWidget tab_music";
        QTest::newRow("two buttons at one place") << Spoil([](auto *window) {
            in(window, "m_music_stopButton")->setGeometry(in(window, "m_music_playButton")->geometry());
        }) << "QToolButton m_music_playButton and QToolButton m_music_stopButton cover one another";
        QTest::newRow("a label too narrow")
            << Spoil([](auto *window) { squeeze(window, "m_music_durationLabel", 10, 60); })
            << "of QLabel m_music_durationLabel needs ";
        QTest::newRow("an entry too long for its box") << Spoil([](auto *window) {
            window->showRendererName(QString(60, u'w'), QStringLiteral("long"), true);
        }) << "of QComboBox m_music_rendererCombo needs ";
        QTest::newRow("a box too low for its entry") << Spoil([](auto *window) {
            window->showRendererName(QStringLiteral("gg"), QStringLiteral("low"), true);
            squeeze(window, "m_music_rendererCombo", 300, 28);
        }) << "\"gg\" of QComboBox m_music_rendererCombo is cut";
        QTest::newRow("a tab that leaves the bar") << Spoil([](auto *window) {
            auto *bar = window->template findChild<QTabBar *>();
            bar->resize(300, bar->height());
        }) << "tab \"Query\" is cut";
        QTest::newRow("a menu that leaves the bar")
            << Spoil([](auto *window) { window->menuBar()->resize(300, window->menuBar()->height()); })
            << "is cut";
        QTest::newRow("a text in the colour of its ground") << Spoil([](auto *window) {
            QPalette palette;
            palette.setColor(QPalette::Button, Qt::gray);
            palette.setColor(QPalette::ButtonText, Qt::darkGray);
            in(window, "m_music_playButton")->setPalette(palette);
        }) << "QToolButton m_music_playButton is #808080 on #a0a0a4";
    }

    void aSpoiltWindowHasAFault()
    {
        QFETCH(Spoil, spoil);
        QFETCH(QString, fault);
        const std::unique_ptr<KelvoMainWindow> window = show();
        spoil(window.get());
        const QStringList faults = LayoutJudge::faults(window.get());
        QVERIFY2(!faults.filter(fault).isEmpty(), qPrintable(faults.join(u'\n')));
    }

    void aSpoiltDialogHasAFault_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("isGood");
        QTest::newRow("wide") << 600 << true;
        QTest::newRow("narrow") << 60 << false;
    }

    void aSpoiltDialogHasAFault()
    {
        QFETCH(int, width);
        QFETCH(bool, isGood);
        QDialog dialog;
        auto *push = new QPushButton(QStringLiteral("A long caption"), &dialog);
        auto *box = new QCheckBox(QStringLiteral("A long caption"), &dialog);
        auto *label
            = new QLabel(QStringLiteral("Several words that are wrapped when they have to be"), &dialog);
        label->setWordWrap(true);
        dialog.resize(600, 300);
        push->setGeometry(0, 0, width, 40);
        box->setGeometry(0, 50, width, 40);
        label->setGeometry(0, 100, width, 40);
        dialog.show();
        const QStringList faults = LayoutJudge::faults(&dialog);
        for (const char *type : {"QPushButton", "QCheckBox", "QLabel"})
            QVERIFY2(faults.filter(QLatin1String(type)).isEmpty() == isGood, qPrintable(faults.join(u'\n')));
    }

    void aBoxThatIsNotSeenIsAFault()
    {
        QDialog dialog;
        dialog.setPalette(QPalette(Qt::black));
        auto *box = new QCheckBox(QStringLiteral("Is Playlist"), &dialog);
        box->setGeometry(10, 10, 180, 40);
        dialog.resize(200, 60);
        dialog.show();
        QCOMPARE(LayoutJudge::faults(&dialog), QStringList("QCheckBox shows no box"));
        CheckFrames::makeVisible(box);
        QCOMPARE(LayoutJudge::faults(&dialog), QStringList());
    }

    void anEmptyWindowIsAFault()
    {
        QWidget window;
        window.show();
        QCOMPARE(LayoutJudge::faults(&window), QStringList("QWidget shows nothing"));
    }

private:
    static std::unique_ptr<KelvoMainWindow> show()
    {
        auto window = std::make_unique<KelvoMainWindow>(nullptr, nullptr);
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->show();
        if (!QTest::qWaitForWindowExposed(window.get()))
            qFatal("the window does not show");
        return window;
    }
};

KELVO_WIDGET_TEST(LayoutJudgeTest)
#include "LayoutJudgeTest.moc"

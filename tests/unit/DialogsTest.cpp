// SPDX-License-Identifier: MIT
#include "FormTable.h"
#include "KelvoPlayUriDialog.h"
#include "KelvoPlaylistDialog.h"
#include "KelvoRendererErrorLogDialog.h"
#include "KelvoTestCase.h"
#include "KelvoVolumeDialog.h"
#include "LogRecorder.h"
#include "RecordingContext.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"
#include "platform/QInputContext.h"

#include <QDir>
#include <QGridLayout>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

#include <sys/stat.h>
#include <unistd.h>

namespace {
const FormCell volumeForm[] = {
    {"m_upButton", "QPushButton", "^", 26, 0, 0, 1, 1},
    {"m_volumeSlider", "QSlider", nullptr, 20, 0, 1, 4, 1},
    {"label", "QLabel", "Current value", 14, 1, 0, 1, 1},
    {"m_doneButton", "QPushButton", "Close", 18, 1, 2, 3, 1},
    {"m_volumeField", "QLabel", "", 18, 2, 0, 1, 1},
    {"m_downButton", "QPushButton", "v", 20, 3, 0, 1, 1},
};

const FormCell errorLogForm[] = {
    {"label", "QLabel", "Renderer errors:", 14, 0, 0, 1, 1},
    {"m_errorLogField", "QTextEdit", nullptr, 0, 1, 0, 2, 2},
    {"m_clearButton", "QPushButton", "Clear", 16, 1, 2, 1, 1},
    {"m_okButton", "QPushButton", "Ok", 0, 2, 2, 1, 1},
};

const FormCell createForm[] = {
    {"label", "QLabel", "Name of the empty playlist:", 16, 0, 0, 1, 3},
    {"m_nameEdit", "QLineEdit", "", 18, 1, 0, 1, 3},
    {"m_okButton", "QPushButton", "OK", 16, 3, 0, 1, 1},
    {"m_cancelButton", "QPushButton", "Cancel", 16, 3, 2, 1, 1},
};

const FormCell playUriForm[] = {
    {"label", "QLabel", "Select object to play:", 14, 0, 0, 1, 1},
    {"m_playlistView", "QListWidget", nullptr, 20, 1, 0, 4, 1},
    {"m_playButton", "QPushButton", "Play uri", 16, 1, 1, 1, 1},
    {"m_cancelButton", "QPushButton", "Cancel", 16, 4, 1, 1, 1},
    {"m_enterUriButton", "QPushButton", "Add uri", 16, 5, 1, 2, 1},
    {"m_selectUriComboBox", "QComboBox", nullptr, 20, 5, 0, 2, 1},
    {"m_isPlaylistCheckBox", "QCheckBox", "Is Playlist", 16, 2, 1, 1, 1},
};

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}
} // namespace

/// The small dialogs, each for itself.
class DialogsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { QFile::remove(uriFile()); }

    void volumeDialogForm()
    {
        const KelvoVolumeDialog dialog(nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("VolumeDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Adjust volume"));
        QCOMPARE(dialog.size(), QSize(581, 300));
        compareForm(dialog, volumeForm);
        const auto *slider = dialog.findChild<QSlider *>("m_volumeSlider");
        QCOMPARE(slider->orientation(), Qt::Vertical);
        QCOMPARE(
            QList<int>({slider->minimum(), slider->maximum(), slider->singleStep()}), QList<int>({0, 99, 1}));
    }

    void volumeDialogLogs()
    {
        LogRecorder log;
        KelvoVolumeDialog dialog(nullptr);
        dialog.setVolume(5, nullptr);
        dialog.increase();
        dialog.decrease();
        dialog.setRange(0, 50);
        dialog.volume();
        QCOMPARE(log.lines(),
            QStringList({"KelvoVolumeDialog::KelvoVolumeDialog", "KelvoVolumeDialog::setVolume",
                "KelvoVolumeDialog::updateVolumeField 5", "KelvoVolumeDialog::increase 5",
                "KelvoVolumeDialog::updateVolumeField 6", "KelvoVolumeDialog::decrease 6",
                "KelvoVolumeDialog::updateVolumeField 5", "KelvoVolumeDialog::setRange",
                "KelvoVolumeDialog::volume"}));
    }

    void volumeIsClampedAndSentBack()
    {
        KelvoVolumeDialog dialog(nullptr);
        RecordingRenderer renderer("r");
        dialog.setVolume(120, &renderer);
        QCOMPARE(dialog.volume(), 99);
        QCOMPARE(renderer.takeCalls(), QStringList("setKelvoProperty(volume,int,99)"));
        QCOMPARE(dialog.findChild<QLabel *>("m_volumeField")->text(), QStringLiteral("99"));
        dialog.findChild<QPushButton *>("m_upButton")->click();
        QCOMPARE(renderer.takeCalls(), QStringList());
        dialog.setVolume(99, &renderer); // the same as last time
        QCOMPARE(renderer.takeCalls(), QStringList());
    }

    void everyMovementSendsOneVolume()
    {
        KelvoVolumeDialog dialog(nullptr);
        RecordingRenderer renderer("r");
        dialog.setVolume(0, &renderer);
        QCOMPARE(renderer.calls(), QStringList()); // the slider stood there already
        dialog.findChild<QPushButton *>("m_upButton")->click();
        dialog.findChild<QPushButton *>("m_downButton")->click();
        dialog.findChild<QPushButton *>("m_downButton")->click();
        dialog.findChild<QSlider *>("m_volumeSlider")->setValue(40);
        QCOMPARE(renderer.calls(),
            QStringList({"setKelvoProperty(volume,int,1)", "setKelvoProperty(volume,int,0)",
                "setKelvoProperty(volume,int,40)"}));
    }

    void volumeWithoutARendererOnlyShows()
    {
        KelvoVolumeDialog dialog(nullptr);
        {
            RecordingRenderer renderer("r");
            dialog.setVolume(10, &renderer);
        }
        dialog.increase(); // the renderer is gone
        QCOMPARE(dialog.findChild<QLabel *>("m_volumeField")->text(), QStringLiteral("11"));
    }

    void volumeCloseAccepts()
    {
        KelvoVolumeDialog dialog(nullptr);
        QSignalSpy accepted(&dialog, SIGNAL(accepted()));
        dialog.show();
        dialog.findChild<QPushButton *>("m_doneButton")->click();
        QCOMPARE(accepted.count(), 1);
    }

    void errorLogDialogForm()
    {
        const KelvoRendererErrorLogDialog dialog(nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("RendererErrorLogDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Renderer error log"));
        QCOMPARE(dialog.size(), QSize(628, 300));
        QVERIFY(dialog.isModal());
        compareForm(dialog, errorLogForm);
        QVERIFY(dialog.findChild<QTextEdit *>("m_errorLogField")->isReadOnly());
        const auto *ok = dialog.findChild<QPushButton *>("m_okButton");
        QVERIFY(!ok->testAttribute(Qt::WA_SetFont)); // no font of its own
        QCOMPARE(ok->font().pointSize(), dialog.font().pointSize());
    }

    void errorLogShowsItsNewestLine()
    {
        KelvoRendererErrorLogDialog dialog(nullptr);
        dialog.show();
        const auto *field = dialog.findChild<QTextEdit *>("m_errorLogField");
        for (uint code = 0; code < 50; ++code) {
            dialog.appendError(code, "a reason of some words");
            QCOMPARE(field->verticalScrollBar()->value(), field->verticalScrollBar()->maximum());
        }
        QVERIFY(field->verticalScrollBar()->maximum() > 0);
        QCoreApplication::processEvents();
        QCOMPARE(field->verticalScrollBar()->value(), field->verticalScrollBar()->maximum());
    }

    void errorLogReopenedShowsItsNewestLine()
    {
        KelvoRendererErrorLogDialog dialog(nullptr);
        dialog.show();
        const auto *field = dialog.findChild<QTextEdit *>("m_errorLogField");
        for (uint code = 0; code < 50; ++code)
            dialog.appendError(code, "a reason of some words");
        dialog.hide();
        field->verticalScrollBar()->setValue(0);
        dialog.show();
        dialog.appendError(50, "the newest one");
        QCoreApplication::processEvents();
        QCOMPARE(field->verticalScrollBar()->value(), field->verticalScrollBar()->maximum());
    }

    void errorLogLines()
    {
        KelvoRendererErrorLogDialog dialog(nullptr);
        dialog.appendError(100, "first %1 %2");
        dialog.appendError(4294967295U, "second");
        auto *field = dialog.findChild<QTextEdit *>("m_errorLogField");
        QCOMPARE(field->toPlainText(), QStringLiteral("Code 100, first %1 %2\nCode 4294967295, second"));
        dialog.findChild<QPushButton *>("m_clearButton")->click();
        QCOMPARE(field->toPlainText(), QString());
        QSignalSpy accepted(&dialog, SIGNAL(accepted()));
        dialog.show();
        dialog.findChild<QPushButton *>("m_okButton")->click();
        QCOMPARE(accepted.count(), 1);
    }

    void createPlaylistForm()
    {
        const KelvoPlaylistDialog dialog(nullptr, nullptr);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Create new playlist"));
        QCOMPARE(dialog.size(), QSize(400, 300));
        compareForm(dialog, createForm);
        QCOMPARE(dialog.findChild<QLineEdit *>("m_nameEdit")->minimumSize(), QSize(200, 80));
        QCOMPARE(dialog.findChild<QPushButton *>("m_okButton")->minimumSize(), QSize(80, 80));
        QCOMPARE(dialog.findChild<QPushButton *>("m_cancelButton")->minimumSize(), QSize(80, 80));
        const auto *grid = dialog.findChild<QGridLayout *>("gridLayout");
        QVERIFY(grid->itemAtPosition(3, 1)->spacerItem());
    }

    void createPlaylistTextAndButtons()
    {
        LogRecorder log;
        KelvoPlaylistDialog dialog(nullptr, nullptr);
        dialog.setText("pl1");
        QCOMPARE(dialog.text(), QStringLiteral("pl1"));
        QCOMPARE(log.lines(),
            QStringList({"KelvoPlaylistDialog::KelvoPlaylistDialog", "KelvoPlaylistDialog::setText",
                "KelvoPlaylistDialog::text"}));
        QSignalSpy finished(&dialog, SIGNAL(finished(int)));
        dialog.findChild<QPushButton *>("m_okButton")->click();
        dialog.findChild<QPushButton *>("m_cancelButton")->click();
        QCOMPARE(finished, QList<QVariantList>({{1}, {0}}));
    }

    void createPlaylistAttachesTheInputContext()
    {
        RecordingContext context;
        const KelvoPlaylistDialog dialog(&context, nullptr);
        QCOMPARE(context.attached, QWidgetList({dialog.findChild<QLineEdit *>("m_nameEdit")}));
    }

    void playUriDialogForm()
    {
        const KelvoPlayUriDialog dialog(nullptr);
        QCOMPARE(dialog.objectName(), QStringLiteral("PlayUriDialog"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Play uri"));
        QCOMPARE(dialog.size(), QSize(477, 436));
        compareForm(dialog, playUriForm);
        QCOMPARE(dialog.findChild<QListWidget *>("m_playlistView")->minimumSize(), QSize(300, 287));
        QCOMPARE(dialog.findChild<QListWidget *>("m_playlistView")->spacing(), 5);
        QCOMPARE(dialog.findChild<QCheckBox *>("m_isPlaylistCheckBox")->minimumHeight(), 45);
        const auto *combo = dialog.findChild<QComboBox *>("m_selectUriComboBox");
        QVERIFY(!combo->isEditable());
        QCOMPARE(combo->maximumSize(), QSize(700, 30));
        QVERIFY(dialog.findChild<QGridLayout *>("gridLayout")->itemAtPosition(3, 1)->spacerItem());
    }

    void uriFileMissing()
    {
        LogRecorder log;
        KelvoPlayUriDialog dialog(nullptr);
        QCOMPARE(log.lines(),
            QStringList({"KelvoPlayUriDialog::KelvoPlayUriDialog",
                "bool KelvoPlayUriDialog::loadFile(const QString&)"}));
        QCOMPARE(entries(dialog), QStringList());
        QVERIFY(!dialog.loadFile(uriFile()));
    }

    void uriFileThatIsNone_data()
    {
        QTest::addColumn<std::function<QString(const QTemporaryDir &)>>("make");
        using Folder = const QTemporaryDir &;
        const auto row = [](const char *name, std::function<QString(Folder)> make) {
            QTest::newRow(name) << make;
        };
        row("folder", [](Folder folder) { return folder.path(); });
        row("no name", [](Folder) { return QString(); });
        row("link to itself", [](Folder folder) {
            const QString path = folder.filePath("loop");
            QFile::link(path, path);
            return path;
        });
        row("pipe that nobody writes to", [](Folder folder) {
            const QString path = folder.filePath("pipe");
            ::mkfifo(QFile::encodeName(path).constData(), 0600);
            return path;
        });
        row("device without an end", [](Folder folder) {
            const QString path = folder.filePath("zeros");
            QFile::link("/dev/zero", path);
            return path;
        });
        if (::geteuid() != 0) { // who may read everything
            row("not permitted", [](Folder folder) {
                const QString path = folder.filePath("secret");
                writeFile(path, "file:///a.ogg\n");
                QFile::setPermissions(path, {});
                return path;
            });
        }
    }

    void uriFileThatIsNone()
    {
        QFETCH(std::function<QString(const QTemporaryDir &)>, make);
        const QTemporaryDir folder;
        const QString path = make(folder);
        writeFile(uriFile(), "file:///a.ogg\n");
        KelvoPlayUriDialog dialog(nullptr);
        QVERIFY(!dialog.loadFile(path));
        QCOMPARE(entries(dialog), QStringList("file:///a.ogg")); // the box stays as it is
    }

    void uriFileIsReadFromTheHomeDirectory()
    {
        writeFile(uriFile(), "file:///a.ogg\n");
        const KelvoPlayUriDialog dialog(nullptr);
        QCOMPARE(entries(dialog), QStringList("file:///a.ogg"));
    }

    void uriFileLines_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("empty file") << QByteArray() << QStringList();
        QTest::newRow("empty line kept") << QByteArray("a\n\nb\n") << QStringList({"a", "", "b"});
        QTest::newRow("no last line break") << QByteArray("a\nb") << QStringList({"a", "b"});
        QTest::newRow("blanks kept") << QByteArray("  a \n# b\n") << QStringList({"  a ", "# b"});
        QTest::newRow("twice the same") << QByteArray("a\na\n") << QStringList({"a", "a"});
        QTest::newRow("other line ends") << QByteArray("a\r\nb\r\n") << QStringList({"a", "b"});
        QTest::newRow("UTF-16") << QByteArray("\xff\xfe"
                                              "a\0\n\0b\0",
            8) << QStringList({"a", "b"});
        QTest::newRow("NUL bytes") << QByteArray("a\0b\n\0\nc\n", 8)
                                   << QStringList({QString("a") + QChar(0) + 'b', QString(QChar(0)), "c"});
        QTest::newRow("Latin-1") << QByteArray("file:///\xe4.ogg\nb\n")
                                 << QStringList({QString("file:///") + QChar(0xfffd) + ".ogg", "b"});
        QTest::newRow("not ASCII") << QByteArray("file:///\xc3\xa4\n")
                                   << QStringList(QString::fromUtf8("file:///ä"));
    }

    void uriFileLines()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, lines);
        KelvoPlayUriDialog dialog(nullptr);
        QTemporaryDir folder;
        writeFile(folder.filePath("uris"), content);
        QVERIFY(dialog.loadFile(folder.filePath("uris")));
        QCOMPARE(entries(dialog), lines);
    }

    void longUriFiles_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("count");
        QTest::newRow("10,000 lines") << QByteArray("file:///music/a.ogg\n") << 10'000;
        QTest::newRow("50 MB") << QByteArray("file:///music/somebody/some-album/a-certain-song.ogg\n")
                               << 1'000'000;
        QTest::newRow("one line of 10 MB") << "file:///" + QByteArray(10'000'000, 'x') + '\n' << 1;
    }

    void longUriFiles()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, count);
        writeFile(uriFile(), line.repeated(count));
        KelvoPlayUriDialog dialog(nullptr);
        const auto *combo = dialog.findChild<QComboBox *>("m_selectUriComboBox");
        QCOMPARE(combo->count(), count);
        QCOMPARE(combo->itemText(count - 1), QString::fromLatin1(line.chopped(1)));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        dialog.findChild<QPushButton *>("m_enterUriButton")->click();
        QCoreApplication::processEvents();
        dialog.grab();
        QCOMPARE(dialog.findChild<QListWidget *>("m_playlistView")->item(0)->text(), combo->itemText(0));
    }

    void urisMoveFromTheBoxToTheList()
    {
        writeFile(uriFile(), "\nfile:///a.ogg\n");
        const KelvoPlayUriDialog dialog(nullptr);
        auto *combo = dialog.findChild<QComboBox *>("m_selectUriComboBox");
        const auto *list = dialog.findChild<QListWidget *>("m_playlistView");
        auto *add = dialog.findChild<QPushButton *>("m_enterUriButton");
        add->click(); // the empty line
        QCOMPARE(list->count(), 0);
        combo->setCurrentIndex(1);
        add->click();
        add->click();
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->item(1)->text(), QStringLiteral("file:///a.ogg"));
    }

    void playNeedsAClickedUri()
    {
        KelvoPlayUriDialog dialog(nullptr);
        auto *play = dialog.findChild<QPushButton *>("m_playButton");
        auto *list = dialog.findChild<QListWidget *>("m_playlistView");
        QSignalSpy accepted(&dialog, SIGNAL(accepted()));
        dialog.addUri("file:///a.ogg");
        dialog.show();
        LogRecorder log;
        play->click();
        QCOMPARE(log.lines(), QStringList("KelvoPlayUriDialog::checkIfItemSelected  \"\""));
        QCOMPARE(accepted.count(), 0);
        QVERIFY(dialog.isVisible());
        Q_EMIT list->itemClicked(list->item(0));
        QCOMPARE(dialog.uri(), QStringLiteral("file:///a.ogg"));
        play->click();
        QCOMPARE(accepted.count(), 1);
        QVERIFY(log.contains("KelvoPlayUriDialog::checkIfItemSelected  \"file:///a.ogg\""));
    }

    void lastUriOutlivesTheList()
    {
        KelvoPlayUriDialog dialog(nullptr);
        auto *list = dialog.findChild<QListWidget *>("m_playlistView");
        dialog.addUri("file:///a.ogg");
        Q_EMIT list->itemClicked(list->item(0));
        dialog.clearUris();
        QCOMPARE(list->count(), 0);
        QSignalSpy accepted(&dialog, SIGNAL(accepted()));
        dialog.findChild<QPushButton *>("m_playButton")->click();
        QCOMPARE(accepted.count(), 1);
        QCOMPARE(dialog.uri(), QStringLiteral("file:///a.ogg"));
    }

    void playUriCancelAndCheckBox()
    {
        KelvoPlayUriDialog dialog(nullptr);
        QVERIFY(!dialog.isPlaylist());
        dialog.findChild<QCheckBox *>("m_isPlaylistCheckBox")->click();
        QVERIFY(dialog.isPlaylist());
        QSignalSpy rejected(&dialog, SIGNAL(rejected()));
        dialog.findChild<QPushButton *>("m_cancelButton")->click();
        QCOMPARE(rejected.count(), 1);
    }

private:
    static QString uriFile() { return QDir::homePath() + QStringLiteral("/qkelvo-gui-uris.txt"); }
    static QStringList entries(const KelvoPlayUriDialog &dialog)
    {
        QStringList texts;
        const auto *combo = dialog.findChild<QComboBox *>("m_selectUriComboBox");
        for (int i = 0; i < combo->count(); ++i)
            texts.append(combo->itemText(i));
        return texts;
    }
};

KELVO_WIDGET_TEST(DialogsTest)
#include "DialogsTest.moc"

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoHelpDialog.h"
#include "KelvoMainWindow.h"
#include "KelvoPlayUriDialog.h"
#include "KelvoPlaylistDialog.h"
#include "KelvoQueryPropertiesDialog.h"
#include "KelvoRendererErrorLogDialog.h"
#include "KelvoSearchDialog.h"
#include "KelvoSelectItemsDialog.h"
#include "KelvoSourceDialog.h"
#include "KelvoSourcePropertiesDialog.h"
#include "KelvoVolumeDialog.h"
#include "RecordingSource.h"

#include <QListWidget>
#include <QMessageBox>
#include <QStandardItemModel>
#include <QTest>

#include <functional>
#include <memory>

/// Each tab of the window and each dialog, filled as a tester has it before him, shown and active. What has to outlive
/// one (models, sources) is kept here.
class EveryWindow
{
public:
    EveryWindow()
    {
        for (int row = 0; row < 4; ++row)
            m_rows.appendRow({new QStandardItem, new QStandardItem(QStringLiteral("row %1").arg(row))});
    }

    /// Rows of a data table, in the column "window".
    static void addRows()
    {
        QTest::addColumn<QString>("window");
        for (const char *name : {"music", "video", "images", "browse", "query", "help", "create playlist",
                 "play uri", "error log", "search", "sources", "source properties", "query properties",
                 "volume", "plug-ins", "playback completed"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    std::unique_ptr<QWidget> show(const QString &name)
    {
        std::unique_ptr<QWidget> window = make(name);
        window->show();
        window->activateWindow();
        if (!QTest::qWaitForWindowActive(window.get()))
            qWarning("The window does not become active");
        return window;
    }

private:
    std::unique_ptr<QWidget> make(const QString &name)
    {
        const QStringList tabs = {"music", "video", "images", "browse", "query"};
        if (tabs.contains(name))
            return makeMainWindow(int(tabs.indexOf(name)));
        if (name == QLatin1String("help"))
            return std::make_unique<KelvoHelpDialog>(nullptr);
        if (name == QLatin1String("create playlist"))
            return makePlaylistDialog();
        if (name == QLatin1String("play uri"))
            return makePlayUriDialog();
        if (name == QLatin1String("error log"))
            return makeErrorLog();
        if (name == QLatin1String("search"))
            return makeSearchDialog();
        if (name == QLatin1String("sources"))
            return makeSourceDialog();
        if (name == QLatin1String("source properties"))
            return makeSourcePropertiesDialog();
        if (name == QLatin1String("query properties"))
            return std::make_unique<KelvoQueryPropertiesDialog>(nullptr);
        if (name == QLatin1String("volume"))
            return makeVolumeDialog();
        if (name == QLatin1String("plug-ins"))
            return makePluginsDialog();
        return std::make_unique<QMessageBox>(
            QMessageBox::Information, QString(), QStringLiteral("Playback completed!"));
    }

    std::unique_ptr<QWidget> makeMainWindow(int tab)
    {
        auto window = std::make_unique<KelvoMainWindow>(nullptr, nullptr);
        window->showRendererName("renderer", "r", true);
        window->showPlaylistName("p", "list", true);
        window->showPlaylist(&m_rows);
        window->showQueryResults(&m_rows);
        window->showBrowseResults(&m_rows);
        window->showMetadata("title", "a song");
        window->addBrowseMetadata("title", "a song");
        window->showBrowseResultThumbnail(QStringLiteral("no picture"));
        window->updateQueryErrorLabel("the store is gone");
        window->updateBrowseErrorLabel("the source is gone");
        for (QListView *view : window->findChildren<QListView *>()) {
            if (view->model() == &m_rows)
                view->setCurrentIndex(m_rows.index(1, 1));
        }
        window->findChild<QTabWidget *>("m_tabs")->setCurrentIndex(tab);
        return window;
    }

    static std::unique_ptr<QWidget> makePlaylistDialog()
    {
        auto dialog = std::make_unique<KelvoPlaylistDialog>(nullptr, nullptr);
        dialog->setText("pl1");
        return dialog;
    }

    static std::unique_ptr<QWidget> makePlayUriDialog()
    {
        auto dialog = std::make_unique<KelvoPlayUriDialog>(nullptr);
        dialog->findChild<QComboBox *>()->addItem("file:///a");
        dialog->addUri("file:///a");
        dialog->addUri("file:///b");
        dialog->findChild<QListWidget *>()->setCurrentRow(1);
        return dialog;
    }

    static std::unique_ptr<QWidget> makeErrorLog()
    {
        auto dialog = std::make_unique<KelvoRendererErrorLogDialog>(nullptr);
        dialog->appendError(305, "nothing to play");
        return dialog;
    }

    static std::unique_ptr<QWidget> makeSearchDialog()
    {
        auto dialog = std::make_unique<KelvoSearchDialog>(nullptr, nullptr);
        dialog->clear();
        return dialog;
    }

    std::unique_ptr<QWidget> makeSourceDialog()
    {
        auto dialog = std::make_unique<KelvoSourceDialog>(nullptr);
        dialog->setSources({&m_source, &m_otherSource}, {true, false});
        return dialog;
    }

    std::unique_ptr<QWidget> makeSourcePropertiesDialog()
    {
        auto dialog = std::make_unique<KelvoSourcePropertiesDialog>(nullptr);
        dialog->setSources({&m_source, &m_otherSource});
        dialog->addProperty("modelName", "X");
        return dialog;
    }

    static std::unique_ptr<QWidget> makeVolumeDialog()
    {
        auto dialog = std::make_unique<KelvoVolumeDialog>(nullptr);
        dialog->setVolume(50, nullptr);
        return dialog;
    }

    static std::unique_ptr<QWidget> makePluginsDialog()
    {
        auto dialog = std::make_unique<KelvoSelectItemsDialog>("Load plugins", nullptr);
        for (auto *list : dialog->findChildren<QListWidget *>()) {
            list->addItems({"one", "two"});
            list->setCurrentRow(0);
        }
        return dialog;
    }

    QStandardItemModel m_rows;
    RecordingSource m_source{"s1", "first source"};
    RecordingSource m_otherSource{"s2", "second source"};
};

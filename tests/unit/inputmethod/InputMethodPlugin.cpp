// SPDX-License-Identifier: MIT
#include "platform/QInputContext.h"

#include <QWidget>

namespace {
/// Marks the widgets that it serves.
class MarkingContext : public QInputContext
{
public:
    void attach(QWidget *textEntry) override { textEntry->setProperty("input-context", true); }
};
} // namespace

/// An input method for tests; "Refusing" is a key that it offers and then cannot serve.
class InputMethodPlugin : public QObject, public QInputContextPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QInputContextPlugin_iid FILE "inputmethod.json")
    Q_INTERFACES(QInputContextPlugin)
public:
    QInputContext *create(const QString &key) override
    {
        return key == QLatin1String("Refusing") ? nullptr : new MarkingContext;
    }
};

#include "InputMethodPlugin.moc"

// SPDX-License-Identifier: MIT
#pragma once

#include "ui_SourcePropertiesDialog.h"

#include <QDialog>
#include <QList>

class KelvoSource;

/// Shows the properties of one source at a time, one line each, and lets the user sign in to it and out of it.
class KelvoSourcePropertiesDialog : public QDialog, private Ui::SourcePropertiesDialog
{
    Q_OBJECT
public:
    explicit KelvoSourcePropertiesDialog(QWidget *parent);
    ~KelvoSourcePropertiesDialog() override;

    /// Lists the sources by name, in place of the earlier ones. The first becomes current, which asks for its
    /// properties at once. The sources are not kept.
    void setSources(const QList<KelvoSource *> &sources);
    void addProperty(const QString &key, const QString &value);

Q_SIGNALS:
    void getProperties(const QString &source);
    void signIn();
    void signOut();
};

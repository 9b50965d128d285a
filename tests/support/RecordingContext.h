// SPDX-License-Identifier: MIT
#pragma once

#include "platform/QInputContext.h"

#include <QWidgetList>

/// Remembers the text entries that were attached to it.
class RecordingContext : public QInputContext
{
public:
    void attach(QWidget *textEntry) override { attached.append(textEntry); }
    QWidgetList attached;
};

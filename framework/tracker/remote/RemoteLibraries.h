// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QList>
#include <QStringList>
#include <QUrl>

/// The libraries on other machines that the user named.
struct RemoteLibraries
{
    QList<QUrl> endpoints;
    QStringList errors; ///< what is wrong with the others; fit to be shown

    /// Those of KELVO_TRACKER: addresses of SPARQL endpoints, separated by blanks. The word "bus" there means something
    /// else (see IndexSettings).
    KELVO_TRACKER_EXPORT static RemoteLibraries fromEnvironment();

    bool isEmpty() const { return endpoints.isEmpty() && errors.isEmpty(); }
};

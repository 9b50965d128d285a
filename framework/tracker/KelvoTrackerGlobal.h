// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/qglobal.h>

#ifdef KELVO_TRACKER_BUILD
#define KELVO_TRACKER_EXPORT Q_DECL_EXPORT
#else
#define KELVO_TRACKER_EXPORT Q_DECL_IMPORT
#endif

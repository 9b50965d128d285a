// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/qglobal.h>

#ifdef KELVO_CORE_BUILD
#define KELVO_CORE_EXPORT Q_DECL_EXPORT
#else
#define KELVO_CORE_EXPORT Q_DECL_IMPORT
#endif

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QString>

/// Whether a back end fits by the version of the API that it was built with (see KelvoApiVersion.h).
namespace ApiVersion {

/// Why a library cannot be used whose metadata names this interface ("org.kelvo.Plugin/1.0"; empty: none), in words for
/// people. An empty text: it can be. Any thread.
KELVO_CORE_EXPORT QString defectOf(const QString &interface);

/// The same for a program whose API has another version.
KELVO_CORE_EXPORT QString defectOf(const QString &interface, int major, int minor);

} // namespace ApiVersion

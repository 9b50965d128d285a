// SPDX-License-Identifier: MIT
#include "LibraryOpening.h"

#include <QFile>

#include <gmodule.h>

void openLibrary(const QString &path)
{
    GModule *module = g_module_open(QFile::encodeName(path).constData(), G_MODULE_BIND_LOCAL);
    if (module)
        g_module_make_resident(module);
}

// SPDX-License-Identifier: MIT
// Tells the folders that back ends are looked for in, one in a line.
#include "KelvoPluginLoader.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList folders = KelvoPluginLoader::folders();
    for (const QString &folder : folders)
        std::puts(qPrintable(folder));
    return 0;
}

// SPDX-License-Identifier: MIT
#include "Program.h"
#include "UserFolders.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kelvo-test"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KELVO_TEST_VERSION));
    UserFolders::takeOverOld();
    return Program::complete().run(QCoreApplication::arguments().mid(1));
}

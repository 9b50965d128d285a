// SPDX-License-Identifier: MIT
#include "ResultFile.h"

#include "Output.h"

#include <QSaveFile>

bool ResultFile::save(const QString &path, const std::function<bool(QIODevice *)> &write)
{
    QSaveFile file(path);
    // A device such as a pipe cannot be replaced.
    file.setDirectWriteFallback(true);
    if (file.open(QIODevice::WriteOnly) && write(&file) && file.commit())
        return true;
    Output::complain(QStringLiteral("%1 cannot be written: %2").arg(path, file.errorString()));
    return false;
}

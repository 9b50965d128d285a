// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

/// Something of a back end's inside that belongs into evidence, for as long as it lives: a file of each bundle that is
/// saved meanwhile.
///
/// It is asked on whatever thread saves the bundle, where it may take its time; passwords in addresses and who the user is
/// are taken out of what it says by whoever saves it. Any thread.
class KELVO_CORE_EXPORT KelvoEvidenceSource
{
public:
    /// A file as it goes into the bundle.
    struct File
    {
        QString name; ///< without a folder
        QByteArray contents; ///< a text in UTF-8
    };

    /// @param fileName  "pipeline.dot"
    /// @param read  makes a text in UTF-8; empty: there is nothing to be shown just now
    KelvoEvidenceSource(QString fileName, std::function<QByteArray()> read);
    /// Waits until nobody reads it.
    ~KelvoEvidenceSource();
    Q_DISABLE_COPY_MOVE(KelvoEvidenceSource)

    /// Reads all that there are, in the order in which they came.
    static QList<File> readAll();

private:
    const QString m_fileName;
    const std::function<QByteArray()> m_read;
};

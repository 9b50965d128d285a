// SPDX-License-Identifier: MIT
#include "RemoteUrl.h"

#include <QSet>
#include <QString>

bool RemoteUrl::isWeb(const QUrl &url)
{
    const bool isHttp = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && isHttp && !url.host().isEmpty();
}

bool RemoteUrl::isMedia(const QUrl &url)
{
    // Not those that players may have, because players have schemes of their own for what only they can play.
    static const QSet<QString> unfit
        = {QStringLiteral("about"), QStringLiteral("blob"), QStringLiteral("data"),
            QStringLiteral("javascript"), QStringLiteral("vbscript"), QStringLiteral("view-source")};
    return url.isValid() && !url.isRelative() && !unfit.contains(url.scheme());
}

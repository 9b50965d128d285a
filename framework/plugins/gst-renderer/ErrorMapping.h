// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"

#include <QString>
#include <QUrl>

/// An error as the pipeline reports it, with what is known of where it came from.
struct PipelineFailure
{
    QString domain; ///< the name of the GError's quark, for instance "gst-resource-error-quark"
    int code = 0;
    QString text;
    QUrl uri; ///< what was to be played
    bool fromSource = false; ///< reported by the element that reads the data
    bool fromAudioOutput = false;
    bool fromVideoOutput = false;
    bool noData = false; ///< there was nothing to find a type in
    bool notMedia = false; ///< of a known type, but one of documents
    bool noHandler = false; ///< no element reads this kind of URI
    int httpStatus = 0;
};

namespace ErrorMapping {
/// The code that tells a tester most about the failure.
KelvoError::Code codeOf(const PipelineFailure &failure);
/// True for what is read over a network.
bool isRemote(const QUrl &uri);
} // namespace ErrorMapping

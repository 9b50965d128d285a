// SPDX-License-Identifier: MIT
#include "ErrorMapping.h"

#include <QFileInfo>

#include <gst/gst.h>

namespace {
KelvoError::Code codeOfHttp(int status)
{
    switch (status) {
    case 401:
    case 403:
    case 407:
        return KelvoError::AccessDenied;
    case 404:
    case 410:
        return KelvoError::NotFound;
    default:
        return status >= 500 ? KelvoError::ServerError : KelvoError::ReadFailed;
    }
}

/// The general "could not read" of a source, made exact by looking at the file.
KelvoError::Code codeOfUnreadable(const PipelineFailure &failure)
{
    if (ErrorMapping::isRemote(failure.uri))
        return KelvoError::NetworkFailed;
    const QFileInfo file(failure.uri.toLocalFile());
    if (file.isDir())
        return KelvoError::IsFolder;
    return file.exists() && !file.isReadable() ? KelvoError::AccessDenied : KelvoError::ReadFailed;
}

KelvoError::Code codeOfResource(const PipelineFailure &failure)
{
    switch (failure.code) {
    case GST_RESOURCE_ERROR_NOT_FOUND:
        return KelvoError::NotFound;
    case GST_RESOURCE_ERROR_NOT_AUTHORIZED:
        return KelvoError::AccessDenied;
    case GST_RESOURCE_ERROR_NO_SPACE_LEFT:
    case GST_RESOURCE_ERROR_TOO_LAZY:
    case GST_RESOURCE_ERROR_SETTINGS:
        return KelvoError::EngineFailed;
    default:
        return codeOfUnreadable(failure);
    }
}

KelvoError::Code codeOfStream(const PipelineFailure &failure)
{
    switch (failure.code) {
    case GST_STREAM_ERROR_TYPE_NOT_FOUND:
        return failure.noData ? KelvoError::EmptyMedia : KelvoError::UnsupportedType;
    case GST_STREAM_ERROR_WRONG_TYPE:
        return KelvoError::UnsupportedType;
    case GST_STREAM_ERROR_CODEC_NOT_FOUND:
        return KelvoError::CodecMissing;
    case GST_STREAM_ERROR_DECRYPT:
    case GST_STREAM_ERROR_DECRYPT_NOKEY:
        return KelvoError::AccessDenied;
    default:
        // "Internal data stream error" of the source itself is all that a refused connection or an unknown
        // host leave behind.
        return failure.fromSource ? codeOfUnreadable(failure) : KelvoError::CorruptMedia;
    }
}
} // namespace

bool ErrorMapping::isRemote(const QUrl &uri)
{
    const QString scheme = uri.scheme();
    return scheme != QLatin1String("file") && scheme != QLatin1String("data");
}

KelvoError::Code ErrorMapping::codeOf(const PipelineFailure &failure)
{
    if (failure.fromAudioOutput)
        return KelvoError::AudioOutputFailed;
    if (failure.fromVideoOutput)
        return KelvoError::VideoOutputFailed;
    if (failure.httpStatus >= 400)
        return codeOfHttp(failure.httpStatus);
    if (failure.noHandler)
        return KelvoError::InvalidUrl;
    if (failure.domain == QLatin1String("gst-resource-error-quark"))
        return codeOfResource(failure);
    if (failure.domain == QLatin1String("gst-stream-error-quark"))
        return codeOfStream(failure);
    if (failure.domain == QLatin1String("gst-core-error-quark")
        && failure.code == GST_CORE_ERROR_MISSING_PLUGIN)
        return failure.notMedia ? KelvoError::UnsupportedType : KelvoError::CodecMissing;
    return KelvoError::EngineFailed;
}

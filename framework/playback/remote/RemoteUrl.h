// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

/// Addresses as players and other controllers write them. They go into the console, which may show or open them.
namespace RemoteUrl {

/// An absolute address of the web, with a host.
bool isWeb(const QUrl &url);
/// Whether it can name media: an absolute address, and none that is a program or carries its content within itself
/// ("javascript:", "data:").
bool isMedia(const QUrl &url);

} // namespace RemoteUrl

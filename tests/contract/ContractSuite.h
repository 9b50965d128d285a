// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QObject;
class RendererSubject;

// The parts of the suite, one class each.
std::unique_ptr<QObject> makeStateContract(RendererSubject &subject);
std::unique_ptr<QObject> makeSeekContract(RendererSubject &subject);
std::unique_ptr<QObject> makePauseAtContract(RendererSubject &subject);
std::unique_ptr<QObject> makePlaylistContract(RendererSubject &subject);
std::unique_ptr<QObject> makePlaylistEditContract(RendererSubject &subject);
std::unique_ptr<QObject> makeErrorContract(RendererSubject &subject);
std::unique_ptr<QObject> makePropertyContract(RendererSubject &subject);
std::unique_ptr<QObject> makeLifetimeContract(RendererSubject &subject);
std::unique_ptr<QObject> makeTellingContract(RendererSubject &subject);

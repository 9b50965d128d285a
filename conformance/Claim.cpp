// SPDX-License-Identifier: MIT
#include "Claim.h"

QString nameOf(Ability ability)
{
    switch (ability) {
    case Ability::Pause:
        return QStringLiteral("pause");
    case Ability::Seek:
        return QStringLiteral("seek");
    case Ability::FastForward:
        return QStringLiteral("play fast forward");
    case Ability::Rewind:
        return QStringLiteral("play backwards");
    case Ability::TellUnseekable:
        return QStringLiteral("tell what cannot seek");
    case Ability::PauseAt:
        return QStringLiteral("pause at a second");
    case Ability::Volume:
        return QStringLiteral("volume");
    case Ability::VideoProperties:
        return QStringLiteral("video in a given window");
    case Ability::RefuseValues:
        return QStringLiteral("refuse unusable values");
    case Ability::Metadata:
        return QStringLiteral("tell facts about the item");
    case Ability::FailItems:
        return QStringLiteral("notice what cannot be played");
    }
    return {};
}

bool canBeRefused(Ability ability)
{
    switch (ability) {
    case Ability::Pause:
    case Ability::Seek:
    case Ability::FastForward:
    case Ability::Rewind:
    case Ability::PauseAt:
    case Ability::Volume:
    case Ability::VideoProperties:
        return true;
    case Ability::TellUnseekable:
    case Ability::RefuseValues:
    case Ability::Metadata:
    case Ability::FailItems:
        break;
    }
    return false;
}

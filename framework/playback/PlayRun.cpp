// SPDX-License-Identifier: MIT
#include "PlayRun.h"

void PlayRun::noteEnd(bool progressed)
{
    m_played = true;
    m_failedInRow = 0;
    m_idleInRow = progressed ? 0 : m_idleInRow + 1;
}

void PlayRun::noteFailure(bool progressed)
{
    if (!progressed)
        return;
    m_played = true;
    m_failedInRow = 0;
}

PlayRun::Step PlayRun::afterEnd(const Place &place) const
{
    if (!place.inPlaylist)
        return {Action::Complete};
    if (!place.autoAdvance)
        return {place.index == place.count - 1 ? Action::Complete : Action::Stop};
    if (place.following < 0)
        return {Action::Complete};
    // A round of pictures and the like would go on at full speed for ever.
    if (place.following <= place.index && m_idleInRow >= place.count)
        return {Action::Stop, -1, true};
    return {Action::Play, place.following};
}

PlayRun::Step PlayRun::afterFailure(const Place &place, bool progressed)
{
    if (!place.inPlaylist)
        return {Action::Stop};
    if (!progressed)
        ++m_failedInRow;
    if (!progressed && (m_failedInRow >= place.count || (place.next < 0 && !m_played)))
        return {Action::Stop, -1, true};
    if (!place.autoAdvance)
        return {Action::Stop};
    return place.next < 0 ? Step{Action::Complete} : Step{Action::Play, place.next};
}

// SPDX-License-Identifier: MIT
#pragma once

#include "Mailbox.h"

/// The mailbox of an object of the GUI thread.
using GuiMailbox = Mailbox;

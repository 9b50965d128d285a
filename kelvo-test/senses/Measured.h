// SPDX-License-Identifier: MIT
#pragma once

/// Something measured, and how far off it may be, either way.
struct Measured
{
    double value = 0;
    double error = 0;
};

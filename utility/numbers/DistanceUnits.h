#pragma once

// The units in which distances are shown and entered.

enum DISTANCE_UNITS
{
    DISTANCE_UNITS_MM,
    DISTANCE_UNITS_INCH,
    DISTANCE_UNITS_METRE,
};

#pragma once

// The units in which distances are shown and entered.

/// A unit of lengths.
enum DISTANCE_UNITS
{
    DISTANCE_UNITS_MM,    ///< millimetres, which lengths are stored in
    DISTANCE_UNITS_INCH,  ///< inches of 25.4 mm
    DISTANCE_UNITS_METRE, ///< metres
};

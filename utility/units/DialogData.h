#pragma once

// Numbers and lengths in dialogs: brought between variables and edit controls, and held against bounds.
//
//     DDX_Distance(exchange, 1001, tool.diameter);          // shown and typed in the unit of the process
//     DDV_MinDistanceEx(exchange, tool.diameter, 0.0F);     // greater than 0
//     DDX_Text(exchange, 1002, std::as_const(tool.weight)); // shown only
//
// A number is shown with at most DialogDecimalPlaces() places and the decimal symbol of numbers/FloatFormat.h, without
// zeros at the end. A value that does not pass is refused: the user is told, is brought to the control that was
// prepared last, and CUserException is thrown (framework/DataExchange.h). No value is stored then.
//
// For the thread of the dialog.

#include "utility/framework/DataExchange.h"
#include "utility/platform/Export.h"

/// Shows a number; deliberately also while the dialog is being saved.
UTILITY_API void DDX_Text(CDataExchange* exchange, int id, const float& value);
UTILITY_API void DDX_Text(CDataExchange* exchange, int id, const double& value);

/// Brings a length, which is in millimetres, to the user in the unit of the process and back. What is typed is read by
/// QLMParseDistance (units/Distances.h), of at most 45 characters; what stands behind them is not seen. What it does
/// not read to the end is refused. An empty control is a 0.
UTILITY_API void DDX_Distance(CDataExchange* exchange, int id, float& value);
UTILITY_API void DDX_Distance(CDataExchange* exchange, int id, double& value);
/// The same with a scale of the caller's, in millimetres.
UTILITY_API void DDX_Distance(CDataExchange* exchange, int id, double& value, const double& scale);

/// Shows a length; deliberately also while the dialog is being saved.
UTILITY_API void DDX_Distance(CDataExchange* exchange, int id, const float& value);
UTILITY_API void DDX_Distance(CDataExchange* exchange, int id, const double& value);

/// @{
/// A value passes that is at least the bound (Min), at most the bound (Max), greater (MinEx), less (MaxEx), or another
/// than the bound (Ex). It is tested while it is shown as well. Lengths and their bounds are in millimetres; they are
/// compared, and the bound is told, in the unit of the process. Deliberately the tests do not agree on a NaN: Ex
/// refuses it; Max and MaxEx pass it as a float and as a length, Min and MinEx as another double.
UTILITY_API void DDV_MinFloat(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_MaxFloat(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_MinFloatEx(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_MaxFloatEx(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_FloatEx(CDataExchange* exchange, const float& value, float bound);

UTILITY_API void DDV_MinDouble(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_MaxDouble(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_MinDoubleEx(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_MaxDoubleEx(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_DoubleEx(CDataExchange* exchange, const double& value, double bound);

UTILITY_API void DDV_MinDistance(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_MaxDistance(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_MinDistanceEx(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_MaxDistanceEx(CDataExchange* exchange, const float& value, float bound);
UTILITY_API void DDV_DistanceEx(CDataExchange* exchange, const float& value, float bound);

UTILITY_API void DDV_MinDistance(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_MaxDistance(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_MinDistanceEx(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_MaxDistanceEx(CDataExchange* exchange, const double& value, double bound);
UTILITY_API void DDV_DistanceEx(CDataExchange* exchange, const double& value, double bound);
/// @}

/// Lengths in the unit of the process, held against two bounds by the framework's DDV_MinMaxFloat and DDV_MinMaxDouble.
UTILITY_API void DDV_MinMaxDistance(CDataExchange* exchange, const float& value, float minimum, float maximum);
UTILITY_API void DDV_MinMaxDistance(CDataExchange* exchange, const double& value, double minimum, double maximum);

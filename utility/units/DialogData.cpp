#include "utility/units/DialogData.h"

#include "resources/StringIds.h"
#include "utility/framework/internal/Prompts.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/numbers/FloatFormat.h"
#include "utility/units/Distances.h"

#include <iterator>

namespace resources = utility::resources;

namespace
{

std::wstring DialogText(double value)
{
    return to_wstring(value, DialogDecimalPlaces(), false, GetDecimalSymbol(), true, false);
}

void Show(CDataExchange& exchange, int id, double shown) { exchange.PrepareEditCtrl(id).SetText(DialogText(shown)); }

template <class Float>
void Exchange(CDataExchange& exchange, int id, Float& value, double scale)
{
    if (!exchange.m_bSaveAndValidate)
        return Show(exchange, id, static_cast<double>(value) / scale);
    wchar_t text[46];
    exchange.PrepareEditCtrl(id).Text(text, static_cast<int>(std::size(text)));
    double parsed = 0.0;
    if (!QLMParseDistance(text, parsed, scale))
        exchange.Refuse(std::wstring(utility::framework::FrameworkString(resources::EnterNumber)), 0, -1);
    value = static_cast<Float>(parsed);
}

using Test = bool (*)(double value, double bound);

bool IsAtLeast(double value, double bound) { return value >= bound; }
bool IsAtMost(double value, double bound) { return value <= bound; }
bool IsGreater(double value, double bound) { return value > bound; }
bool IsLess(double value, double bound) { return value < bound; }
bool IsLessOrGreater(double value, double bound) { return value < bound || value > bound; }

/// The other side of a test. A NaN, which is neither less than a bound nor at least the bound, is on both sides.
template <Test test>
bool IsNot(double value, double bound)
{
    return !test(value, bound);
}

struct Rule
{
    Test passesAsFloat; // and as a length
    Test passesAsDouble;
    UINT refusal;
};

// Deliberately a NaN passes on one side as a float and on the other as a double.
constexpr Rule atLeast{IsAtLeast, IsNot<IsLess>, resources::NumberAtLeast};
constexpr Rule atMost{IsNot<IsGreater>, IsAtMost, resources::NumberAtMost};
constexpr Rule above{IsGreater, IsNot<IsAtMost>, resources::NumberGreaterThan};
constexpr Rule below{IsNot<IsAtLeast>, IsLess, resources::NumberLessThan};
constexpr Rule other{IsLessOrGreater, IsLessOrGreater, resources::NumberOtherThan};

void Check(CDataExchange& exchange, Test passes, UINT refusal, double value, double bound)
{
    if (!passes(value, bound))
        utility::framework::RefuseWith(exchange, utility::framework::StringOfChain(refusal), {DialogText(bound)});
}

void Check(CDataExchange& exchange, const Rule& rule, float value, float bound)
{
    Check(exchange, rule.passesAsFloat, rule.refusal, value, bound);
}

void Check(CDataExchange& exchange, const Rule& rule, double value, double bound)
{
    Check(exchange, rule.passesAsDouble, rule.refusal, value, bound);
}

/// What a length in millimetres is multiplied by for the user's eyes.
template <class Float>
Float Factor()
{
    return 1 / static_cast<Float>(GetDistanceScale());
}

template <class Float>
void CheckLength(CDataExchange& exchange, const Rule& rule, Float value, Float bound)
{
    const auto factor = Factor<Float>();
    Check(exchange, rule.passesAsFloat, rule.refusal, value * factor, bound * factor);
}

}

// clang-format off
void DDX_Text(CDataExchange* dx, int id, const float& value) { Show(*dx, id, value); }
void DDX_Text(CDataExchange* dx, int id, const double& value) { Show(*dx, id, value); }

void DDX_Distance(CDataExchange* dx, int id, float& value) { Exchange(*dx, id, value, GetDistanceScale()); }
void DDX_Distance(CDataExchange* dx, int id, double& value) { Exchange(*dx, id, value, GetDistanceScale()); }
void DDX_Distance(CDataExchange* dx, int id, double& value, const double& scale) { Exchange(*dx, id, value, scale); }
void DDX_Distance(CDataExchange* dx, int id, const float& value) { Show(*dx, id, value / GetDistanceScale()); }
void DDX_Distance(CDataExchange* dx, int id, const double& value) { Show(*dx, id, value / double{GetDistanceScale()}); }

void DDV_MinFloat(CDataExchange* dx, const float& value, float bound) { Check(*dx, atLeast, value, bound); }
void DDV_MaxFloat(CDataExchange* dx, const float& value, float bound) { Check(*dx, atMost, value, bound); }
void DDV_MinFloatEx(CDataExchange* dx, const float& value, float bound) { Check(*dx, above, value, bound); }
void DDV_MaxFloatEx(CDataExchange* dx, const float& value, float bound) { Check(*dx, below, value, bound); }
void DDV_FloatEx(CDataExchange* dx, const float& value, float bound) { Check(*dx, other, value, bound); }

void DDV_MinDouble(CDataExchange* dx, const double& value, double bound) { Check(*dx, atLeast, value, bound); }
void DDV_MaxDouble(CDataExchange* dx, const double& value, double bound) { Check(*dx, atMost, value, bound); }
void DDV_MinDoubleEx(CDataExchange* dx, const double& value, double bound) { Check(*dx, above, value, bound); }
void DDV_MaxDoubleEx(CDataExchange* dx, const double& value, double bound) { Check(*dx, below, value, bound); }
void DDV_DoubleEx(CDataExchange* dx, const double& value, double bound) { Check(*dx, other, value, bound); }

void DDV_MinDistance(CDataExchange* dx, const float& value, float bound) { CheckLength(*dx, atLeast, value, bound); }
void DDV_MaxDistance(CDataExchange* dx, const float& value, float bound) { CheckLength(*dx, atMost, value, bound); }
void DDV_MinDistanceEx(CDataExchange* dx, const float& value, float bound) { CheckLength(*dx, above, value, bound); }
void DDV_MaxDistanceEx(CDataExchange* dx, const float& value, float bound) { CheckLength(*dx, below, value, bound); }
void DDV_DistanceEx(CDataExchange* dx, const float& value, float bound) { CheckLength(*dx, other, value, bound); }

void DDV_MinDistance(CDataExchange* dx, const double& value, double bound) { CheckLength(*dx, atLeast, value, bound); }
void DDV_MaxDistance(CDataExchange* dx, const double& value, double bound) { CheckLength(*dx, atMost, value, bound); }
void DDV_MinDistanceEx(CDataExchange* dx, const double& value, double bound) { CheckLength(*dx, above, value, bound); }
void DDV_MaxDistanceEx(CDataExchange* dx, const double& value, double bound) { CheckLength(*dx, below, value, bound); }
void DDV_DistanceEx(CDataExchange* dx, const double& value, double bound) { CheckLength(*dx, other, value, bound); }
// clang-format on

void DDV_MinMaxDistance(CDataExchange* exchange, const float& value, float minimum, float maximum)
{
    const auto factor = Factor<float>();
    DDV_MinMaxFloat(exchange, value * factor, minimum * factor, maximum * factor);
}

void DDV_MinMaxDistance(CDataExchange* exchange, const double& value, double minimum, double maximum)
{
    const auto factor = Factor<double>();
    DDV_MinMaxDouble(exchange, value * factor, minimum * factor, maximum * factor);
}

#include "utility/units/Distances.h"

#include "resources/StringIds.h"
#include "utility/numbers/FloatFormat.h"
#include "utility/numbers/FloatParse.h"
#include "utility/platform/LoadOrder.h"
#include "utility/settings/internal/LibraryResources.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <array>
#include <cwctype>
#include <string_view>

namespace resources = utility::resources;

namespace
{

constexpr float scales[] = {1.0F, 25.4F, 1000.0F};

DISTANCE_UNITS currentUnits = DISTANCE_UNITS_MM;

using Descriptions = std::array<std::wstring, 6>;

using namespace utility::platform;

/// The words for one and for several of each unit, in the language that the library is loaded in.
constinit StaticPlace<Descriptions> descriptions;

void LoadDescriptions()
{
    using utility::detail::LibraryString;
    descriptions.Make(Descriptions{LibraryString(resources::MillimetreSingular),
                                   LibraryString(resources::MillimetrePlural), LibraryString(resources::InchSingular),
                                   LibraryString(resources::InchPlural), LibraryString(resources::MetreSingular),
                                   LibraryString(resources::MetrePlural)});
}

void DestroyDescriptions() { descriptions.Destroy(); }

[[gnu::init_priority(unitNamesAreLoaded)]] LoadStep descriptionsStep(unitNamesAreLoaded, &LoadDescriptions,
                                                                     &DestroyDescriptions);

}

DISTANCE_UNITS GetDistanceUnits() noexcept { return currentUnits; }

void SetDistanceUnits(DISTANCE_UNITS units) noexcept
{
    currentUnits = units;
    SetDialogDecimalPlaces(DialogDecimalPlaces(units));
}

float GetDistanceScale() noexcept { return GetDistanceScale(currentUnits); }

float GetDistanceScale(DISTANCE_UNITS units) noexcept { return scales[units]; }

const std::wstring& GetDistanceDescription(bool plural) noexcept
{
    return (*descriptions)[2 * static_cast<std::size_t>(currentUnits) + (plural ? 1 : 0)];
}

bool QLMParseDistance(const wchar_t* text, double& value, double scale) noexcept
{
    std::wstring_view rest = QLMParseFloat(text, L'\0', value);
    value *= scale;
    if (!rest.empty() && std::iswalpha(static_cast<std::wint_t>(rest.front())) != 0)
    {
        // Deliberately the first that it is not: what is typed counts by its length alone.
        const Descriptions& all = *descriptions;
        const auto other = std::find_if_not(all.begin(), all.end(),
                                            [rest](const std::wstring& description)
                                            { return boost::algorithm::iequals(rest, description); });
        if (other != all.end() && other->size() <= rest.size())
            rest.remove_prefix(other->size());
        const auto isBlank = [](wchar_t c) { return std::iswspace(static_cast<std::wint_t>(c)) != 0; };
        rest.remove_prefix(
            static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), isBlank) - rest.begin()));
    }
    return rest.empty();
}

#pragma once

#include "utility/framework/DataExchange.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace utility::framework
{

/// Refuses a value by a warning with this text, in which %1% and so on stand for the values. Of a text without those
/// places, and of none at all, the user is shown what there is.
[[noreturn]] void RefuseWith(CDataExchange& exchange, std::wstring_view text,
                             std::initializer_list<std::wstring> values);

}

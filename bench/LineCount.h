#pragma once

#include <cstdint>

/// How many line feeds there are from `first` to before `last`.
std::int64_t CountLineFeeds(const char* first, const char* last);

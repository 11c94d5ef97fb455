#pragma once

namespace iges
{

/// What a type of entity is called; empty if it has no name here.
const char* EntityName(int type);

}

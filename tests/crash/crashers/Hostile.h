#pragma once

namespace crasher
{

/// Writes to a place, in a source file whose name is meant to confuse.
int Hostile(int* place);

}

#pragma once

#include <random>
#include <string>

/// As FORTRAN programs write them: a fifth without a point, a quarter with an exponent (by E: the peers do not know D).
/// Without a leading plus, which some peers do not know either.
std::string NextReal(std::mt19937& random);

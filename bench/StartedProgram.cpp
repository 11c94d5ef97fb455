#include "utility/Utility.h"

int main() { InitialiseUtilityDLL(); }

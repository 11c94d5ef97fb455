#include "tests/support/OwnHives.h"

namespace support
{

void UseOwnHives() {}

}

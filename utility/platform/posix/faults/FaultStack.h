#pragma once

#include <cstdint>

namespace utility::platform::posix
{

/// After a stack overflow at this address: makes room on the calling thread's stack, so that what is thrown finds some
/// for the destructors on its way. False if there is none to make. To be called within the fault.
bool MakeRoomOnStack(std::uint64_t address) noexcept;

}

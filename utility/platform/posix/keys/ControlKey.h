#pragma once

namespace utility::platform::posix
{

/// Whether the calling thread's latest question was answered by Control and I.
void SetControlKeyDown(bool isDown) noexcept;

/// What was set, which is forgotten by that.
bool TakeControlKeyDown() noexcept;

}

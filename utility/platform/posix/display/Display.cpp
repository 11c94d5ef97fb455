#include "utility/platform/posix/display/Display.h"

#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/descriptors/Readable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

namespace utility::platform::posix
{

namespace
{

/// A greeting that every server answers, in the bytes of this machine.
using Greeting = std::array<std::uint32_t, 3>;

static_assert(std::endian::native == std::endian::little);

/// A connection by a version of the protocol that there is not. It is refused ahead of all that a connection may be
/// noted for.
constexpr Greeting greetingOfX11 = {'l', 0, 0};

/// The first object, which is the display, is to call back by the second one.
constexpr Greeting greetingOfWayland = {1, sizeof(Greeting) << 16, 2};

std::string Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Whether whoever connects next is told in time that there is a server, or that there is none.
bool Answers(int socket, const sockaddr_un& address, const Greeting& greeting)
{
    for (int tries = 0; ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0; ++tries)
    {
        constexpr int milliseconds = 50;
        // So many are waiting for it that no more are let in.
        if (errno != EAGAIN)
            return true;
        if (tries * milliseconds >= static_cast<int>(displayPatience))
            return false;
        WaitUntilReadable(-1, milliseconds);
    }
    return ::send(socket, greeting.data(), sizeof(greeting), MSG_NOSIGNAL) < 0 ||
           WaitUntilReadable(socket, displayPatience) != false;
}

/// By the path of its socket; one that is nowhere does not hang.
bool Hangs(const std::string& server, const Greeting& greeting)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (server.empty() || server.size() >= sizeof(address.sun_path))
        return false;
    server.copy(address.sun_path, server.size());
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return socket && !Answers(socket.Number(), address, greeting);
}

/// The socket of an X server on this machine, by a text as `:0` or `:0.0`; empty for another one.
std::string SocketOfX11(std::string_view display)
{
    if (!display.starts_with(':'))
        return {};
    const std::string_view number = display.substr(1, display.find('.') - 1);
    const bool isNumber =
        !number.empty() && std::ranges::all_of(number, [](char each) { return each >= '0' && each <= '9'; });
    return isNumber ? "/tmp/.X11-unix/X" + std::string(number) : std::string();
}

std::string SocketOfWayland(const std::string& display)
{
    return display.starts_with('/') ? display : Variable("XDG_RUNTIME_DIR") + '/' + display;
}

}

bool HasX11()
{
    const std::string display = Variable("DISPLAY");
    return !display.empty() && !Hangs(SocketOfX11(display), greetingOfX11);
}

bool HasWayland()
{
    const std::string display = Variable("WAYLAND_DISPLAY");
    return !display.empty() && !Hangs(SocketOfWayland(display), greetingOfWayland);
}

}

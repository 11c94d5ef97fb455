#include "utility/framework/internal/NewHandler.h"

#include <atomic>

namespace utility::framework
{

platform::NewHandler SetNewHandler(platform::NewHandler handler) noexcept
{
    static std::atomic<platform::NewHandler> current;
    return current.exchange(handler);
}

}

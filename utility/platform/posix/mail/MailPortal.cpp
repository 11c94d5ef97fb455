#include "utility/platform/posix/mail/MailPortal.h"

#include "utility/platform/Mail.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"

#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr char portalName[] = "org.freedesktop.portal.Desktop";
constexpr char portalObject[] = "/org/freedesktop/portal/desktop";
constexpr char mailInterface[] = "org.freedesktop.portal.Email";
constexpr char requestInterface[] = "org.freedesktop.portal.Request";
constexpr char busName[] = "org.freedesktop.DBus";
constexpr char busObject[] = "/org/freedesktop/DBus";

/// The library for the bus, as long as this stands.
class BusLibrary
{
public:
    BusLibrary() : m_library(::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL))
    {
        if (m_library == nullptr)
            return;
        isWhole = Find("sd_bus_open_user", openUser) && Find("sd_bus_close_unref", closeUnref) &&
                  Find("sd_bus_set_method_call_timeout", setTimeout) && Find("sd_bus_is_ready", isReady) &&
                  Find("sd_bus_process", process) && Find("sd_bus_wait", wait) && Find("sd_bus_call", call) &&
                  Find("sd_bus_call_method", callMethod) && Find("sd_bus_get_property_trivial", getProperty) &&
                  Find("sd_bus_add_match", addMatch) && Find("sd_bus_message_new_method_call", newCall) &&
                  Find("sd_bus_message_append", append) && Find("sd_bus_message_open_container", openContainer) &&
                  Find("sd_bus_message_close_container", closeContainer) && Find("sd_bus_message_read", read) &&
                  Find("sd_bus_message_get_path", pathOf) && Find("sd_bus_message_unref", unref);
    }
    BusLibrary(const BusLibrary&) = delete;
    BusLibrary& operator=(const BusLibrary&) = delete;
    ~BusLibrary()
    {
        if (m_library != nullptr)
            ::dlclose(m_library);
    }

    decltype(&::sd_bus_open_user) openUser = nullptr;
    decltype(&::sd_bus_close_unref) closeUnref = nullptr;
    decltype(&::sd_bus_set_method_call_timeout) setTimeout = nullptr;
    decltype(&::sd_bus_is_ready) isReady = nullptr;
    decltype(&::sd_bus_process) process = nullptr;
    decltype(&::sd_bus_wait) wait = nullptr;
    decltype(&::sd_bus_call) call = nullptr;
    decltype(&::sd_bus_call_method) callMethod = nullptr;
    decltype(&::sd_bus_get_property_trivial) getProperty = nullptr;
    decltype(&::sd_bus_add_match) addMatch = nullptr;
    decltype(&::sd_bus_message_new_method_call) newCall = nullptr;
    decltype(&::sd_bus_message_append) append = nullptr;
    decltype(&::sd_bus_message_open_container) openContainer = nullptr;
    decltype(&::sd_bus_message_close_container) closeContainer = nullptr;
    decltype(&::sd_bus_message_read) read = nullptr;
    decltype(&::sd_bus_message_get_path) pathOf = nullptr;
    decltype(&::sd_bus_message_unref) unref = nullptr;
    bool isWhole = false;

private:
    template <class Function>
    bool Find(const char* name, Function& function)
    {
        function = reinterpret_cast<Function>(::dlsym(m_library, name));
        return function != nullptr;
    }

    void* const m_library;
};

std::uint64_t MicrosecondsUntil(Clock::time_point end)
{
    const auto left = std::chrono::duration_cast<microseconds>(end - Clock::now()).count();
    return left > 0 ? static_cast<std::uint64_t>(left) : 0;
}

/// What the portal has said of requests.
struct Told
{
    const BusLibrary& library;
    std::map<std::string, std::uint32_t> responses;
    bool isPortalGone = false;
};

int NoteResponse(sd_bus_message* message, void* told, sd_bus_error* /*error*/) noexcept
try
{
    auto& [library, responses, ignored] = *static_cast<Told*>(told);
    std::uint32_t response = 0;
    if (library.read(message, "u", &response) > 0)
        responses.emplace(library.pathOf(message), response);
    return 0;
}
catch (...)
{
    return -ENOMEM;
}

int NoteEnd(sd_bus_message* /*message*/, void* told, sd_bus_error* /*error*/) noexcept
{
    static_cast<Told*>(told)->isPortalGone = true;
    return 0;
}

/// A connection to the session's bus, of one mail.
class Session
{
public:
    explicit Session(const PortalWaits& waits) : m_waits(waits)
    {
        if (!m_library.isWhole || m_library.openUser(&m_bus) < 0)
            return;
        m_library.setTimeout(m_bus, static_cast<std::uint64_t>(microseconds(waits.answer).count()));
        m_isOpen =
            ProcessUntil([&] { return m_library.isReady(m_bus) != 0; }, waits.answer) && m_library.isReady(m_bus) > 0;
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session()
    {
        if (m_bus != nullptr)
            m_library.closeUnref(m_bus);
    }

    bool HasPortal()
    {
        std::uint32_t version = 0;
        return m_isOpen && m_library.getProperty(m_bus, portalName, portalObject, mailInterface, "version", nullptr,
                                                 'u', &version) >= 0;
    }

    /// Whether the portal sees this file, which this descriptor is of, under its path: it may live among other files.
    bool PortalSees(const boost::filesystem::path& path, int file)
    {
        const std::string owner = OwnerOfPortal();
        std::uint32_t process = 0;
        Reply reply(m_library);
        if (owner.empty() ||
            m_library.callMethod(m_bus, busName, busObject, busName, "GetConnectionUnixProcessID", nullptr,
                                 &reply.message, "s", owner.c_str()) < 0 ||
            m_library.read(reply.message, "u", &process) <= 0)
            return false;
        const std::string seen = "/proc/" + std::to_string(process) + "/root" + path.native();
        struct stat ours;
        struct stat theirs;
        return ::fstat(file, &ours) == 0 && ::stat(seen.c_str(), &theirs) == 0 && S_ISREG(ours.st_mode) &&
               ours.st_dev == theirs.st_dev && ours.st_ino == theirs.st_ino;
    }

    std::optional<std::uint32_t> Compose(const MailTexts& texts, int file)
    {
        const std::string owner = OwnerOfPortal();
        if (owner.empty() || !Watch(owner))
            return std::nullopt;
        Reply call(m_library);
        if (m_library.newCall(m_bus, &call.message, owner.c_str(), portalObject, mailInterface, "ComposeEmail") < 0 ||
            !Fill(call.message, texts, file))
            return std::nullopt;
        Reply reply(m_library);
        const int result = m_library.call(m_bus, call.message, 0, nullptr, &reply.message);
        // It may begin yet.
        if (result == -ETIMEDOUT)
            return mailFailed;
        const char* handle = nullptr;
        if (result < 0 || m_library.read(reply.message, "o", &handle) <= 0)
            return std::nullopt;
        return ResponseTo(owner, handle);
    }

private:
    /// A message, given back with the scope.
    struct Reply
    {
        explicit Reply(const BusLibrary& used) : library(used) {}
        Reply(const Reply&) = delete;
        Reply& operator=(const Reply&) = delete;
        ~Reply() { library.unref(message); }

        const BusLibrary& library;
        sd_bus_message* message = nullptr;
    };

    /// Takes what comes until something is so. False if that takes too long, or the bus goes away.
    template <class Condition>
    bool ProcessUntil(Condition condition, milliseconds wait)
    {
        const Clock::time_point end = Clock::now() + wait;
        while (!condition())
        {
            const int done = m_library.process(m_bus, nullptr);
            if (done < 0)
                return false;
            if (done > 0)
                continue;
            const std::uint64_t left = MicrosecondsUntil(end);
            if (left == 0)
                return false;
            const int ready = m_library.wait(m_bus, left);
            if (ready < 0 && ready != -EINTR)
                return false;
        }
        return true;
    }

    /// The portal's own name on the bus: one that takes its place later is another one.
    std::string OwnerOfPortal()
    {
        Reply reply(m_library);
        const char* owner = nullptr;
        if (m_library.callMethod(m_bus, busName, busObject, busName, "GetNameOwner", nullptr, &reply.message, "s",
                                 portalName) < 0 ||
            m_library.read(reply.message, "s", &owner) <= 0)
            return {};
        return owner;
    }

    bool Watch(const std::string& owner)
    {
        const std::string responses =
            "type='signal',sender='" + owner + "',interface='" + requestInterface + "',member='Response'";
        const std::string end =
            "type='signal',sender='" + std::string(busName) + "',member='NameOwnerChanged',arg0='" + owner + '\'';
        return m_library.addMatch(m_bus, nullptr, responses.c_str(), &NoteResponse, &m_told) >= 0 &&
               m_library.addMatch(m_bus, nullptr, end.c_str(), &NoteEnd, &m_told) >= 0;
    }

    bool Fill(sd_bus_message* call, const MailTexts& texts, int file)
    {
        const auto add = [&](const char* option, const std::string& text)
        { return text.empty() || m_library.append(call, "{sv}", option, "s", text.c_str()) >= 0; };
        return m_library.append(call, "s", "") >= 0 && m_library.openContainer(call, SD_BUS_TYPE_ARRAY, "{sv}") >= 0 &&
               add("address", texts.recipient) && add("subject", texts.subject) && add("body", texts.note) &&
               m_library.append(call, "{sv}", "attachment_fds", "ah", 1, file) >= 0 &&
               m_library.closeContainer(call) >= 0;
    }

    std::uint32_t ResponseTo(const std::string& owner, const std::string& handle)
    {
        const auto isDone = [&] { return m_told.isPortalGone || m_told.responses.contains(handle); };
        if (!ProcessUntil(isDone, m_waits.user))
        {
            m_library.callMethod(m_bus, owner.c_str(), handle.c_str(), requestInterface, "Close", nullptr, nullptr,
                                 nullptr);
            return mailFailed;
        }
        const auto response = m_told.responses.find(handle);
        if (response == m_told.responses.end())
            return mailFailed;
        return response->second == 0 ? mailSucceeded : response->second == 1 ? mailCancelled : mailFailed;
    }

    const PortalWaits m_waits;
    const BusLibrary m_library;
    Told m_told = {m_library, {}};
    sd_bus* m_bus = nullptr;
    bool m_isOpen = false;
};

/// As the library for the bus asks for it.
bool IsSet(const char* variable)
{
    const char* const value = ::secure_getenv(variable);
    return value != nullptr && *value != '\0';
}

}

bool HasSessionBus() { return IsSet("DBUS_SESSION_BUS_ADDRESS") || IsSet("XDG_RUNTIME_DIR"); }

bool HasMailPortal(const PortalWaits& waits) { return HasSessionBus() && Session(waits).HasPortal(); }

std::optional<std::uint32_t> SendByPortal(const MailTexts& texts, const boost::filesystem::path& attachment,
                                          const PortalWaits& waits)
{
    // All that a portal may want of it is that it names the file.
    const Descriptor file(Uninterrupted([&] { return ::open(attachment.c_str(), O_PATH | O_CLOEXEC); }));
    if (!file)
        return std::nullopt;
    Session session(waits);
    if (!session.HasPortal() || !session.PortalSees(attachment, file.Number()))
        return std::nullopt;
    return session.Compose(texts, file.Number());
}

}

// Stands in for the desktop's portal on a session bus: MailPortal BEHAVIOUR FILE. What it is asked to send goes to the
// file, a text in a line, once it has all of it; the file is there, empty, as soon as it serves.
// A number is the response to a mail; otherwise:
//   refuses  an error for each mail        silent   no answer to a mail        mute     no answer to anything
//   patient  an answer and no response     dies     an answer, and its end     blind    it sees no temporary file
//   misled   it sees other temporary files under their names

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace
{

constexpr char object[] = "/org/freedesktop/portal/desktop";
constexpr char requestPath[] = "/org/freedesktop/portal/desktop/request/1";

std::string behaviour;
std::string recordPath;

/// As the portal does: the file is known by its path, which has to lead to the same file.
std::string PathOf(int descriptor)
{
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    char path[4096];
    const ssize_t size = ::readlink(link.c_str(), path, sizeof(path));
    struct stat opened;
    struct stat named;
    if (size <= 0 || ::fstat(descriptor, &opened) != 0)
        return "no path";
    const std::string found(path, static_cast<std::size_t>(size));
    if (::stat(found.c_str(), &named) != 0 || opened.st_ino != named.st_ino || opened.st_dev != named.st_dev)
        return "not seen";
    return S_ISREG(opened.st_mode) ? found : "no file";
}

std::string Options(sd_bus_message* message)
{
    std::string texts;
    const char* window = nullptr;
    sd_bus_message_read(message, "s", &window);
    texts += "window=" + std::string(window) + '\n';
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0)
    {
        const char* name = nullptr;
        sd_bus_message_read(message, "s", &name);
        texts += name + std::string("=");
        if (std::strcmp(name, "attachment_fds") == 0)
        {
            sd_bus_message_enter_container(message, 'v', "ah");
            sd_bus_message_enter_container(message, 'a', "h");
            int descriptor = -1;
            while (sd_bus_message_read(message, "h", &descriptor) > 0)
            {
                const int flags = ::fcntl(descriptor, F_GETFL);
                texts += PathOf(descriptor) + ((flags & O_PATH) != 0 ? " by its path" : " opened");
            }
            sd_bus_message_exit_container(message);
            sd_bus_message_exit_container(message);
        }
        else
        {
            const char* value = nullptr;
            sd_bus_message_read(message, "v", "s", &value);
            texts += value;
        }
        texts += '\n';
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return texts;
}

int Compose(sd_bus_message* message)
{
    const std::string texts = Options(message);
    {
        std::ofstream(recordPath + ".half") << texts;
        std::rename((recordPath + ".half").c_str(), recordPath.c_str());
    }
    if (behaviour == "silent")
        return 1;
    if (behaviour == "refuses")
        return sd_bus_reply_method_errorf(message, "org.freedesktop.portal.Error.InvalidArgument", "refused");
    sd_bus_reply_method_return(message, "o", requestPath);
    sd_bus* const bus = sd_bus_message_get_bus(message);
    if (behaviour == "dies")
    {
        sd_bus_flush(bus);
        std::_Exit(0);
    }
    if (behaviour != "patient")
        sd_bus_emit_signal(bus, requestPath, "org.freedesktop.portal.Request", "Response", "ua{sv}",
                           static_cast<std::uint32_t>(std::stoul(behaviour)), 0);
    return 1;
}

int Serve(sd_bus_message* message, void*, sd_bus_error*)
{
    if (behaviour == "mute")
        return 1;
    if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get") > 0)
        return sd_bus_reply_method_return(message, "v", "u", 3);
    if (sd_bus_message_is_method_call(message, "org.freedesktop.portal.Email", "ComposeEmail") > 0)
        return Compose(message);
    if (sd_bus_message_is_method_call(message, "org.freedesktop.portal.Request", "Close") > 0)
    {
        std::ofstream(recordPath, std::ios::app) << "closed\n";
        return sd_bus_reply_method_return(message, "");
    }
    return 0;
}

/// Hides the temporary files of others from this process. If it is misled, there are others of the same names, and on
/// the same disk.
bool BecomeBlind(bool isMisled)
{
    const char* const folder = std::getenv("TMPDIR");
    if (folder == nullptr)
        return false;
    const std::filesystem::path others = folder + std::string(".others");
    std::filesystem::create_directory(others);
    for (const auto& each : std::filesystem::directory_iterator(folder))
    {
        if (isMisled)
            std::ofstream(others / each.path().filename()) << "another";
    }
    return (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount(others.c_str(), folder, nullptr, MS_BIND, nullptr) == 0;
}

}

int main(int count, char** arguments)
{
    if (count != 3)
        return 2;
    behaviour = arguments[1];
    recordPath = arguments[2];
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0 || sd_bus_add_object(bus, nullptr, object, &Serve, nullptr) < 0 ||
        sd_bus_add_object(bus, nullptr, requestPath, &Serve, nullptr) < 0 ||
        sd_bus_request_name(bus, "org.freedesktop.portal.Desktop", 0) < 0)
        return 1;
    std::string ready;
    if (behaviour == "blind" || behaviour == "misled")
    {
        ready = BecomeBlind(behaviour == "misled") ? "" : "sees";
        behaviour = "0";
    }
    std::ofstream(recordPath) << ready;
    for (int done = 0; done >= 0;)
    {
        done = sd_bus_process(bus, nullptr);
        if (done == 0)
            done = sd_bus_wait(bus, UINT64_MAX);
    }
    return 0;
}

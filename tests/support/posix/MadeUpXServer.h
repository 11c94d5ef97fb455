#pragma once

#include <boost/filesystem/operations.hpp>

#include <cstddef>
#include <map>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace support
{

/// Takes connections as an X server of this machine does, and says what it is told to: the first text to who connects,
/// and the second one to what is asked next. With neither it hangs.
class MadeUpXServer
{
public:
    explicit MadeUpXServer(std::vector<std::string> said = {}) : m_said(std::move(said))
    {
        boost::system::error_code ignored;
        if (boost::filesystem::create_directory("/tmp/.X11-unix", ignored))
            boost::filesystem::permissions("/tmp/.X11-unix", boost::filesystem::perms(01777), ignored);
        for (int number = 7000; number < 7100 && m_display.empty(); ++number)
        {
            sockaddr_un address = {AF_UNIX, {}};
            m_path = "/tmp/.X11-unix/X" + std::to_string(number);
            m_path.copy(address.sun_path, sizeof(address.sun_path));
            if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0)
                m_display = ':' + std::to_string(number);
        }
        ::listen(m_socket, 8);
        m_thread = std::thread([this] { Serve(); });
    }
    MadeUpXServer(const MadeUpXServer&) = delete;
    MadeUpXServer& operator=(const MadeUpXServer&) = delete;
    ~MadeUpXServer()
    {
        ::eventfd_write(m_end, 1);
        m_thread.join();
        ::close(m_end);
        ::close(m_socket);
        if (!m_display.empty())
            ::unlink(m_path.c_str());
    }

    /// Empty if there is no place for it.
    const std::string& Display() const { return m_display; }

private:
    void Serve()
    {
        std::map<int, std::size_t> questions; // by connection
        std::vector<pollfd> waited = {{m_end, POLLIN, 0}, {m_socket, POLLIN, 0}};
        while (::poll(waited.data(), waited.size(), -1) > 0 && waited[0].revents == 0)
        {
            if (waited[1].revents != 0)
                waited.push_back({::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC), POLLIN, 0});
            for (std::size_t i = 2; i < waited.size(); ++i)
            {
                if (waited[i].revents != 0 && !Answer(waited[i].fd, questions[waited[i].fd]))
                    ::close(std::exchange(waited[i].fd, -1));
            }
        }
        for (std::size_t i = 2; i < waited.size(); ++i)
            ::close(waited[i].fd);
    }

    /// False at the end of the connection.
    bool Answer(int connection, std::size_t& question) const
    {
        char bytes[4096];
        const ssize_t size = ::recv(connection, bytes, sizeof(bytes), 0);
        if (size <= 0)
        {
            question = 0;
            return false;
        }
        if (question < m_said.size())
            ::send(connection, m_said[question].data(), m_said[question].size(), MSG_NOSIGNAL);
        ++question;
        return true;
    }

    const std::vector<std::string> m_said;
    const int m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int m_end = ::eventfd(0, EFD_CLOEXEC);
    std::string m_path;
    std::string m_display;
    std::thread m_thread;
};

}

// A process is forked while one of its threads makes the application's settings, for the tests of
// startup/CMakeLists.txt: the child has them as well. Its exit code is 0 if all went well.

#include "tests/support/ForwardingRegistry.h"
#include "tests/support/OwnHives.h"
#include "utility/settings/AppSettings.h"

#include <chrono>
#include <cwchar>
#include <future>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

/// Tells when the application's key is being made, and takes its time for that.
class SlowRegistry : public support::ForwardingRegistry
{
public:
    LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        if (std::wcschr(subKey, L'\\') == nullptr)
            return ForwardingRegistry::RegCreateKeyExW(parent, subKey, access, key);
        if (!m_isTold)
            m_begun.set_value();
        m_isTold = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        return ForwardingRegistry::RegCreateKeyExW(parent, subKey, access, key);
    }

    void Await() { m_begun.get_future().wait(); }

private:
    std::promise<void> m_begun;
    bool m_isTold = false;
};

}

int main()
{
    support::UseOwnHives();
    CQLMAppSettings::SetProductName(L"Forked");
    SlowRegistry registry;
    std::thread maker([] { CQLMAppSettings::instance(); });
    registry.Await();
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::alarm(100); // what waits for ever ends by a signal
        ::_exit(CQLMAppSettings::instance().SetValue(L"Child", L"Number", 7) ? 0 : 1);
    }
    maker.join();
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0 &&
                   CQLMAppSettings::instance().GetValue(L"Child", L"Number", 0) == 7
               ? 0
               : 1;
}

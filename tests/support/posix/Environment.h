#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support
{

/// For its lifetime a variable of the environment has another value, or, without one, is not there.
class Environment
{
public:
    Environment(const char* name, const std::optional<std::string>& value) : m_name(name)
    {
        if (const char* const earlier = std::getenv(name))
            m_earlier = earlier;
        Set(value);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() { Set(m_earlier); }

    void Set(const std::optional<std::string>& value) const
    {
        if (value)
            ::setenv(m_name, value->c_str(), 1);
        else
            ::unsetenv(m_name);
    }

private:
    const char* m_name;
    std::optional<std::string> m_earlier;
};

}

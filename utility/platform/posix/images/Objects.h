#pragma once

#include "utility/platform/AtFork.h"

#include <algorithm>
#include <list>
#include <mutex>
#include <utility>

namespace utility::platform::posix
{

/// Objects that users know by handles, which are their addresses.
template <class Object>
class Objects
{
public:
    void* Keep(Object&& object)
    {
        const std::scoped_lock lock(m_lock);
        return &m_objects.emplace_back(std::move(object));
    }

    /// Null if it is none of these.
    Object* Find(const void* handle)
    {
        const std::scoped_lock lock(m_lock);
        const auto found = Place(handle);
        return found == m_objects.end() ? nullptr : &*found;
    }

    /// False if it is none of these.
    bool End(const void* handle)
    {
        const std::scoped_lock lock(m_lock);
        const auto found = Place(handle);
        if (found == m_objects.end())
            return false;
        m_objects.erase(found);
        return true;
    }

private:
    typename std::list<Object>::iterator Place(const void* handle)
    {
        return std::ranges::find_if(m_objects, [&](const Object& each) { return &each == handle; });
    }

    ForkSafeMutex m_lock;
    std::list<Object> m_objects;
};

}

#pragma once

// What the library keeps for as long as it is loaded. Other threads, and static objects of the host, may use it until
// the process is gone: at the end of the process nothing of it is destroyed. When the system unloads the library,
// nobody uses it any more: then all of it is, the latest first, and behind the static objects of the module that the
// library is part of.
//
//     Views& AllViews()
//     {
//         static UntilUnload<Views> views;
//         return *views;
//     }

#include <new>
#include <utility>

namespace utility::platform
{

/// Something to be done when the library is unloaded.
class TearDown
{
protected:
    explicit TearDown(void (*run)(TearDown&)) noexcept : m_run(run) {}

    /// Has it done ahead of all that was added before. Any thread may call.
    void Add() noexcept;

private:
    friend void RunTearDowns();

    void (*m_run)(TearDown&);
    TearDown* m_next = nullptr;
};

/// Does what there is to do at unload. For the system's side of it alone.
void RunTearDowns();

/// The place of a static object that is made by a call, and destroyed by one or not at all.
template <class T>
class StaticPlace
{
public:
    template <class... Arguments>
    T& Make(Arguments&&... arguments)
    {
        return *::new (m_storage) T(std::forward<Arguments>(arguments)...);
    }
    void Destroy() noexcept { (**this).~T(); }

    T& operator*() noexcept { return *std::launder(reinterpret_cast<T*>(m_storage)); }
    T* operator->() noexcept { return &**this; }

private:
    alignas(T) unsigned char m_storage[sizeof(T)] = {};
};

/// A static object of type T.
template <class T>
class UntilUnload : private TearDown
{
public:
    template <class... Arguments>
    explicit UntilUnload(Arguments&&... arguments) : TearDown(&Destroy)
    {
        m_object.Make(std::forward<Arguments>(arguments)...);
        Add();
    }
    UntilUnload(const UntilUnload&) = delete;
    UntilUnload& operator=(const UntilUnload&) = delete;

    T& operator*() noexcept { return *m_object; }

private:
    static void Destroy(TearDown& each) { static_cast<UntilUnload&>(each).m_object.Destroy(); }

    StaticPlace<T> m_object;
};

}

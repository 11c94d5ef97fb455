#pragma once

#include <type_traits>
#include <utility>

namespace support
{

/// For its lifetime a function of the test stands in for an operation of the system, for who calls it from within the
/// program: a test sees with what it is called where nothing else shows that. A program calls the system by pointers
/// that are filled in when it is loaded. To the linker they are the operation's name behind __imp_.
///
///     extern "C" decltype(&::Beep) __imp_Beep;
///     const ImportedCall call(__imp_Beep, [](DWORD, DWORD) { return TRUE; });
template <class Operation>
class ImportedCall
{
public:
    ImportedCall(Operation& pointer, std::type_identity_t<Operation> substitute)
        : m_pointer(pointer), m_system(std::exchange(pointer, substitute))
    {
    }
    ImportedCall(const ImportedCall&) = delete;
    ImportedCall& operator=(const ImportedCall&) = delete;
    ~ImportedCall() { m_pointer = m_system; }

private:
    Operation& m_pointer;
    Operation m_system;
};

}

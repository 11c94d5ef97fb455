// A module with objects of each kind, which tells who loads it when they are destroyed.

#include "utility/platform/UntilUnload.h"

#include <boost/config.hpp>

using utility::platform::UntilUnload;

namespace
{

void (*tellLoader)(char) = nullptr;

class Object
{
public:
    explicit Object(char name) : m_name(name) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object() { tellLoader(m_name); }

private:
    char m_name;
};

}

extern "C" BOOST_SYMBOL_EXPORT void MakeObjects(void (*tell)(char))
{
    tellLoader = tell;
    static const Object ordinary('o');
    static UntilUnload<Object> first('1');
    static UntilUnload<Object> second('2');
}

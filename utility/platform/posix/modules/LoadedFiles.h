#pragma once

#include "utility/platform/AtFork.h"
#include "utility/platform/formats/ResourceFile.h"
#include "utility/platform/posix/files/MappedFile.h"
#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

#include <list>
#include <map>
#include <string>
#include <string_view>

namespace utility::platform::posix
{

/// Files that are loaded for their resources, by the addresses of their records.
class LoadedFiles
{
public:
    HINSTANCE Load(const wchar_t* path);

    /// False if it is none of these.
    bool Free(HINSTANCE module);

    /// Empty if it is none of these.
    std::wstring PathOf(HINSTANCE module);

    std::wstring_view StringOf(HINSTANCE module, UINT id);

    formats::Bytes ResourceOf(HINSTANCE module, UINT type, const formats::ResourceName& name);

private:
    struct File
    {
        explicit File(const boost::filesystem::path& file) : path(file), content(file), resources(content.Content()) {}

        const boost::filesystem::path path;
        const MappedFile content;
        const formats::ResourceFile resources;
        std::map<UINT, std::wstring> strings; ///< those that were asked for
        int references = 0;
    };

    static HINSTANCE HandleOf(File& file) { return reinterpret_cast<HINSTANCE>(&file); }

    std::list<File>::iterator Find(HINSTANCE module);

    ForkSafeMutex m_lock;
    std::list<File> m_files;
};

}

#include "utility/platform/posix/modules/LoadedFiles.h"

#include "utility/platform/Error.h"
#include "utility/platform/Paths.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <mutex>
#include <utility>

namespace utility::platform::posix
{

HINSTANCE LoadedFiles::Load(const wchar_t* path)
{
    boost::system::error_code error;
    const boost::filesystem::path canonical = boost::filesystem::canonical(PathFromWide(path), error);
    if (error)
    {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    const std::scoped_lock lock(m_lock);
    auto file = std::ranges::find(m_files, canonical, &File::path);
    if (file == m_files.end())
    {
        file = m_files.emplace(file, canonical);
        if (!file->resources.HasResources())
        {
            // What could be read is no module; an empty file, which is told by this number, is none either.
            const bool isRead = !file->content.Content().empty() || LastError() == ERROR_INVALID_PARAMETER;
            const DWORD reason = isRead ? ERROR_BAD_EXE_FORMAT : LastError();
            m_files.erase(file);
            SetLastError(reason);
            return nullptr;
        }
    }
    ++file->references;
    return HandleOf(*file);
}

bool LoadedFiles::Free(HINSTANCE module)
{
    const std::scoped_lock lock(m_lock);
    const auto file = Find(module);
    if (file == m_files.end())
        return false;
    if (--file->references == 0)
        m_files.erase(file);
    return true;
}

std::wstring LoadedFiles::PathOf(HINSTANCE module)
{
    const std::scoped_lock lock(m_lock);
    const auto file = Find(module);
    return file == m_files.end() ? std::wstring() : WideFromPath(file->path);
}

std::wstring_view LoadedFiles::StringOf(HINSTANCE module, UINT id)
{
    const std::scoped_lock lock(m_lock);
    const auto file = Find(module);
    if (file == m_files.end())
        return {};
    if (const auto known = file->strings.find(id); known != file->strings.end())
        return known->second;
    std::wstring text = file->resources.String(id);
    return text.empty() ? std::wstring_view() : file->strings.emplace(id, std::move(text)).first->second;
}

formats::Bytes LoadedFiles::ResourceOf(HINSTANCE module, UINT type, const formats::ResourceName& name)
{
    const std::scoped_lock lock(m_lock);
    const auto file = Find(module);
    return file == m_files.end() ? formats::Bytes() : file->resources.Find(type, name);
}

std::list<LoadedFiles::File>::iterator LoadedFiles::Find(HINSTANCE module)
{
    return std::ranges::find(m_files, module, [](File& file) { return HandleOf(file); });
}

}

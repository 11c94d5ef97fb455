// A module of an application, which uses the library on several threads: the library is loaded and unloaded with it.

#include "utility/Utility.h"

#include <boost/config.hpp>
#include <boost/filesystem/operations.hpp>

/// On the thread that has loaded it. `file` is to be read; its folder has room for others.
extern "C" BOOST_SYMBOL_EXPORT bool Use(const char* file)
{
    InitialiseUtilityDLL();
    const boost::filesystem::path path(file);
    const CMemoryMappedFile mapped(path);
    CQLMAppSettings& settings = CQLMAppSettings::instance();
    const bool isStored = settings.SetValue(L"Used", L"Number", 7) && settings.GetValue(L"Used", L"Number", 0) == 7;
    const CResourceCounter resources(nullptr);
    const CSETranslator translator;
    const boost::filesystem::path scenePath = path.parent_path() / "Used.wrl.gz";
    {
        CVRMLFile scene;
        scene.Open(scenePath, true, 1);
        scene << "Shape";
        scene.CommitAndClose();
    }
    boost::filesystem::remove(scenePath);
    CVersion().Initialise(nullptr);
    return mapped.IsValid() && isStored && !resource_string(8304).empty() && GetThreadAllocator() != nullptr;
}

/// On any other thread.
extern "C" BOOST_SYMBOL_EXPORT bool UseInThread(void* owner)
{
    const CThreadAllocatorManager allocator;
    const CSETranslator translator;
    SetThreadDatabase(static_cast<CEntityDatabase*>(owner));
    LogFile(LogSeverityError, owner) << L"Number " << 0.5;
    ThreadTimer timer;
    CQLMAppSettings::instance().GetValue(L"Used", L"Number", 0);
    return GetThreadAllocator() != nullptr && GetThreadDatabase() == owner && from_utf(L"x", 1252) == "x";
}

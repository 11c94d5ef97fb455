#include "utility/Utility.h"

#include <iostream>

/// Writes a file anew. Whatever happens on the way, the file is the old one or the new one, whole.
template <class Write>
void Save(const boost::filesystem::path& path, Write write)
{
    CBackupFile backup(path);
    CTextFile file;
    file.Open(backup.GetTempFilename());
    write(file);
    file.CommitAndClose(); // throws if the disk has not taken all of it, which Close does not
    backup.SetReplaceFile(true);
}

int main(int argumentCount, char** arguments)
try
{
    InitialiseUtilityDLL();
    Save(argumentCount > 1 ? arguments[1] : "moves.nc",
         [](CTextFile& file)
         {
             file << "N" << 10 << " G01 X";
             file.WriteFixed(12.5, 3) << '\n'; // three places
         });
    return 0;
}
catch (CFileException* failure) // of the new version
{
    std::cerr << "cannot write " << from_utf(failure->m_strFileName, 65001) << '\n';
    failure->Delete();
    return 1;
}
catch (const boost::filesystem::filesystem_error& failure) // of the swap
{
    std::cerr << failure.what() << '\n';
    return 1;
}

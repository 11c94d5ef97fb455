#pragma once

// A text file written piece by piece.
//
//     CTextFile file;
//     file.Open(L"moves.nc");
//     file << "N" << 10 << " G01 X";
//     file.WriteFixed(10.5, 3) << "\n"; // X10.500
//     file.Close(0);
//
// Each insertion is one write to the system: nothing is gathered, and no line end is added or changed. Wide text is
// written in the system's narrow encoding (the ANSI code page on Windows, UTF-8 on Linux), and what that lacks becomes
// its substitute character: a reader has to be told. The close ends the file behind what was written, and does not
// report what it could not bring to the disk: where that counts, CommitAndClose does.
//
// What cannot be opened or written throws a CFileException (as a pointer, see framework/Exception.h) with the path. An
// object belongs to one thread at a time; copies are aliases of the same open file.

#include "utility/files/TextInputOutputFile.h"

#include <string_view>

class UTILITY_API CTextFile : public CTextInputOutputFile
{
public:
    /// Closed.
    CTextFile();
    /// An alias of the same open file, like every copy of a file object.
    CTextFile(const CTextFile&) = default;
    CTextFile& operator=(const CTextFile&) = default;
    ~CTextFile() override;

    /// Opens a file to write, created if absent, its bytes kept until they are written over or the close cuts them off.
    /// Always true.
    bool Open(const wchar_t* path);
    bool Open(const std::wstring& path);
    bool Open(const boost::filesystem::path& path);

    /// The byte as it is.
    CTextFile& operator<<(char value);
    /// Null is not allowed.
    CTextFile& operator<<(const char* text);
    /// Null is the empty text.
    CTextFile& operator<<(const wchar_t* text);

    /// In decimal, without anything else but the sign of what is negative.
    CTextFile& operator<<(int value);
    CTextFile& operator<<(unsigned int value);
    CTextFile& operator<<(long value);
    CTextFile& operator<<(unsigned long value);
    CTextFile& operator<<(long long value);
    CTextFile& operator<<(unsigned long long value);
    /// It would be a number.
    CTextFile& operator<<(wchar_t value) = delete;

    /// The number as FormatFixed has it, of the same arguments (numbers/FloatFormat.h). It allocates nothing for a text
    /// of up to 64 bytes.
    CTextFile& WriteFixed(double value, int decimals, bool showPlus = false, std::string_view decimalSymbol = ".",
                          bool trimZeros = false, bool keepSymbol = false);

protected:
    /// Only the low 32 bits of `size` count.
    void Write(const void* data, std::uint64_t size);

private:
    template <class Integer>
    CTextFile& WriteNumber(Integer value);
};

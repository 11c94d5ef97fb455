#include "utility/records/InputRecordPtr.h"

#include <algorithm>
#include <cstddef>

CInputRecordPtr::CInputRecordPtr(CInputOutputFile* file) : m_pFile(file), m_pCurrent(nullptr) {}

CInputRecordPtr::CInputRecordPtr(const CInputRecordPtr& other) : CInputRecord(other), m_pFile(other.m_pFile)
{
    Reset();
}

CInputRecordPtr::~CInputRecordPtr() = default;

CInputOutputFile* CInputRecordPtr::InputFile() const noexcept { return m_pFile; }

void CInputRecordPtr::Add(const unsigned char* first, const unsigned char* last)
{
    CInputRecord::Add(first, last);
    Reset();
}

void CInputRecordPtr::Reset() noexcept
{
    m_itLine = Lines().begin();
    m_pCurrent = Lines().empty() ? nullptr : m_itLine->First();
}

bool CInputRecordPtr::IsEndOfRecord() const noexcept { return m_pCurrent == nullptr; }

char CInputRecordPtr::GetCurrentByte() const { return static_cast<char>(*m_pCurrent); }

void CInputRecordPtr::AdvancePtr() noexcept { AdvancePtr(1); }

void CInputRecordPtr::AdvancePtr(int count) noexcept
{
    auto left = static_cast<std::uint32_t>(count);
    while (m_pCurrent != nullptr)
    {
        const std::ptrdiff_t toLineEnd = m_itLine->Last() - m_pCurrent;
        // A cursor that is not in front of the line's end, as in an empty line, deliberately runs on past it.
        if (toLineEnd <= 0 || toLineEnd > left)
        {
            m_pCurrent += left;
            return;
        }
        left -= static_cast<std::uint32_t>(toLineEnd);
        NextLine();
    }
}

bool CInputRecordPtr::Read(void* destination, int count)
{
    if (m_pCurrent == nullptr)
        return false;
    // Deliberately one byte wider than the steps: a value may end on the byte at the last pointer.
    const std::ptrdiff_t lastByte = std::ptrdiff_t{count} - 1;
    if (lastByte > m_itLine->Last() - m_pCurrent)
        return false;
    std::copy_n(m_pCurrent, count, static_cast<unsigned char*>(destination));
    AdvancePtr(count);
    return true;
}

bool CInputRecordPtr::ReadChar(char& value) { return Read(&value, sizeof(value)); }

bool CInputRecordPtr::ReadInt(int& value) { return Read(&value, sizeof(value)); }

bool CInputRecordPtr::ReadFloat(float& value) { return Read(&value, sizeof(value)); }

bool CInputRecordPtr::ReadReal(double& value) { return Read(&value, sizeof(value)); }

void CInputRecordPtr::NextLine() noexcept
{
    ++m_itLine;
    m_pCurrent = m_itLine == Lines().end() ? nullptr : m_itLine->First();
}

#include "utility/records/TextRecordPtr.h"

#include "utility/files/TextInputOutputFile.h"

#include "resources/StringIds.h"

#include <cstring>

static_assert(int{utility::detail::endOfFileInInteger} == int{utility::resources::EndOfFileInInteger});
static_assert(int{utility::detail::endOfFileInReal} == int{utility::resources::EndOfFileInReal});
static_assert(int{utility::detail::badCharacterInInteger} == int{utility::resources::BadCharacterInInteger});
static_assert(int{utility::detail::badCharacterInReal} == int{utility::resources::BadCharacterInReal});

namespace
{

/// The text of a file without a view has no first character either.
bool HasNoCharacter(const TextLine& line) { return line.First() == nullptr || line.Last() < line.First(); }

}

const char CTextRecordPtr::m_cNULL = '\0';

CTextRecordPtr::CTextRecordPtr(CTextInputOutputFile* file) : m_pFile(file), m_pCurrent(&m_cNULL), m_pLast(&m_cNULL) {}

CTextRecordPtr::~CTextRecordPtr() = default;

void CTextRecordPtr::Add(const char* first, const char* last)
{
    CTextRecord::Add(first, last);
    Reset();
}

void CTextRecordPtr::Reset()
{
    m_itLine = Lines().begin();
    EnterLine();
}

bool CTextRecordPtr::ReadChar(char& c)
{
    SkipBlanks();
    if (IsEndOfRecord() || IsTerminator(*m_pCurrent))
        return false;
    c = *m_pCurrent;
    AdvancePtr();
    return true;
}

void CTextRecordPtr::SkipField()
{
    while (!IsEndOfRecord() && !IsTerminator(*m_pCurrent))
        AdvancePtr();
}

TextPosition CTextRecordPtr::Position() const
{
    if (m_pFile == nullptr || Lines().empty())
        return {};
    return m_pFile->PositionOf(m_pCurrent == &m_cNULL ? Lines().back().Last() + 1 : m_pCurrent);
}

void CTextRecordPtr::SkipLine()
{
    // Deliberately without a test for the end of the record: a caller knows that a line end follows.
    while (*m_pCurrent != '\n' && *m_pCurrent != '\r')
        AdvancePtr();
    while (*m_pCurrent == '\n' || *m_pCurrent == '\r')
        AdvancePtr();
}

void CTextRecordPtr::NextLine()
{
    if (IsEndOfRecord())
        return;
    ++m_itLine;
    EnterLine();
}

void CTextRecordPtr::EnterLine()
{
    while (m_itLine != Lines().end() && HasNoCharacter(*m_itLine))
        ++m_itLine;
    const bool atEnd = m_itLine == Lines().end();
    m_pCurrent = atEnd ? &m_cNULL : m_itLine->First();
    m_pLast = atEnd ? &m_cNULL : m_itLine->Last();
}

/// Copies characters from the cursor on, which stays. Whether those are all that there are.
std::size_t CTextRecordPtr::CopyAhead(char* to, std::size_t most, bool& isAll) const
{
    std::size_t copied = 0;
    const char* first = m_pCurrent;
    for (auto line = m_itLine; line != Lines().end();)
    {
        const auto size = static_cast<std::size_t>(line->Last() + 1 - first);
        if (size > most - copied)
        {
            std::memcpy(to + copied, first, most - copied);
            isAll = false;
            return most;
        }
        // The usual continuation line, without a call.
        if (size == 64)
            std::memcpy(to + copied, first, 64);
        else
            std::memcpy(to + copied, first, size);
        copied += size;
        ++line;
        while (line != Lines().end() && HasNoCharacter(*line))
            ++line;
        first = line == Lines().end() ? nullptr : line->First();
    }
    isAll = true;
    return copied;
}

/// As so many steps, of which there are no more than to the end of the record.
void CTextRecordPtr::AdvanceBy(std::size_t count)
{
    while (count != 0 && count >= static_cast<std::size_t>(m_pLast + 1 - m_pCurrent))
    {
        count -= static_cast<std::size_t>(m_pLast + 1 - m_pCurrent);
        NextLine();
    }
    m_pCurrent += count;
}

void CTextRecordPtr::IssueAtCursor(int messageId) const
{
    if (m_pFile == nullptr)
        return;
    // From a signed char, so that characters above 127 are negative.
    m_pFile->IssueError(m_pCurrent, messageId, static_cast<int>(static_cast<signed char>(*m_pCurrent)));
}

#include "utility/records/TextRecordPtr.h"

#include "utility/files/TextInputOutputFile.h"
#include "utility/records/TextRecordReader.h"

#include "resources/StringIds.h"

static_assert(int{utility::detail::endOfFileInInteger} == int{utility::resources::EndOfFileInInteger});
static_assert(int{utility::detail::endOfFileInReal} == int{utility::resources::EndOfFileInReal});
static_assert(int{utility::detail::badCharacterInInteger} == int{utility::resources::BadCharacterInInteger});
static_assert(int{utility::detail::badCharacterInReal} == int{utility::resources::BadCharacterInReal});

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
    m_pCurrent = Lines().empty() ? &m_cNULL : m_itLine->First();
    m_pLast = Lines().empty() ? &m_cNULL : m_itLine->Last();
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
    const bool atEnd = m_itLine == Lines().end();
    m_pCurrent = atEnd ? &m_cNULL : m_itLine->First();
    m_pLast = atEnd ? &m_cNULL : m_itLine->Last();
}

void CTextRecordPtr::IssueAtCursor(int messageId) const
{
    // From a signed char, so that characters above 127 are negative.
    m_pFile->IssueError(m_pCurrent, messageId, static_cast<int>(static_cast<signed char>(*m_pCurrent)));
}

namespace utility::detail
{

double RoundedChain(std::uint64_t digits)
{
    std::uint64_t exact = digits;
    std::size_t left = 0;
    for (; exact > std::uint64_t{1} << 53; ++left)
        exact /= 10;
    auto value = static_cast<double>(exact);
    while (left != 0)
        value = value * 10.0 + static_cast<double>(digits / integerPowers[--left] % 10);
    return value;
}

void LongMantissa::Add(char c)
{
    const MantissaCharacter& character = ToMantissa(c);
    m_state &= character.next;
    if (IsWhole())
    {
        m_whole = m_whole * 10.0 + character.digit;
    }
    else if (character.kind == mayBeDigit)
    {
        m_fraction = m_fraction * 10.0 + character.digit;
        ++m_fractionDigits;
    }
}

double LongMantissa::Value() const
{
    // A quotient, not a product with the inverse, which would round otherwise.
    const double fraction = m_fraction / pow10(static_cast<int>(std::min<std::int64_t>(m_fractionDigits, INT32_MAX)));
    return (m_state & isPositive) != 0 ? fraction + m_whole : -fraction + -m_whole;
}

}
